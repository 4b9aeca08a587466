// What came of a statement: data that every output shows in its own way.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/efiutils/store.hpp"
#include "host/text/number_format.hpp"
#include "host/worksheet/engine/drawn.hpp"
#include "host/worksheet/engine/trust.hpp"
#include "host/worksheet/help/help.hpp"
#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

// Its values, pages and places live until the next statement is run.
struct Outcome {
  const Source* source = nullptr;
  int line = 0;                       // Of the statement, or of what is wrong with its form.
  std::vector<std::string> names;     // That it assigns or defines.
  Value value = {};                   // A function value for a definition.
  const efi::Store* store = nullptr;  // Of the value: it knows the parts of a joined one.
  bool is_definition = false;
  bool is_quiet = false;           // Whether the value is not to be shown to people.
  Place place;                     // Of an error value; without a source where that is not known.
  std::vector<Drawn> pictures;     // In the order in which they were drawn.
  std::vector<std::string> notes;  // That its author should know, in text of one line.
  std::vector<Trust> trust;        // How far the results of its calls can be trusted.
  std::optional<HelpPage> help;    // Of a statement that asks for help.
  // The variables there are, by name, of a statement that asks for them.
  std::optional<std::vector<const Variable*>> variables;
  std::string syntax_message;          // Empty unless the text is no statement...
  std::size_t column = 0;              // ... and then the place,
  std::size_t offset = 0;              // also as an offset in the statement's text.
  std::optional<NumberFormat> format;  // In which its numbers are shown.
  double seconds = 0.0;                // That it took.

  // Of a statement that has done something and has nothing to show.
  bool is_done = false;

  bool is_silent() const { return is_done && !failed(); }
  bool is_syntax_error() const { return !syntax_message.empty(); }
  bool failed() const { return is_syntax_error() || is_error(value); }
  // The line of the statement because of whose failure this one failed; 0 if it failed by itself.
  int failed_line() const { return is_place_known() ? place.cause.line : 0; }
  bool is_place_known() const { return place.error == value.object && place.source != nullptr; }
};

}  // namespace worksheet
