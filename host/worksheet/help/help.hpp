// The statement `help`: what it asks about, and what there is to say.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/help/reference.hpp"

namespace worksheet {

// What there is to say about a topic, before it is laid out.
struct HelpPage {
  enum class Kind {
    overview,  // All `entries` in short.
    entry,     // The entries of one name, and the packs' rows of the first one's names.
    function,  // A function that the worksheet defines: its text in `definition`.
  };

  Kind kind = Kind::overview;
  std::vector<ReferenceEntry> entries;
  std::vector<const Row*> rows;
  std::string definition;
  std::string where;  // It begins: "line 3".
};

// The topic of a statement "help", "help TOPIC" or "?TOPIC", empty for the first; nothing for other
// text.
std::optional<std::string> help_topic(std::string_view statement);

// Of a function of the worksheet or any other, or with an empty topic of everything; nothing for an
// unknown topic.
std::optional<HelpPage> help_page(const Machine& machine, const std::string& topic);

}  // namespace worksheet
