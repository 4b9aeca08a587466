// A worksheet as one standalone HTML page: its comments as text, its statements with their values
// as MathML, pictures in place, errors marked. The markup is HTML and XML alike; nothing is loaded
// from elsewhere.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

class Report {
 public:
  // `name` is the worksheet's.
  Report(std::string name, const DisplayOptions& options)
      : name_(std::move(name)), options_(options) {}

  // The text whose statements follow: what stands between them becomes text of the report.
  void begin_text(const std::string& text);
  // Ends it: what stands behind the last statement follows.
  void end_text();

  // A statement and what came of it, while its value lives.
  void add(const Outcome& outcome);

  // The page, as far as it has come.
  std::string page(bool interrupted) const;

 private:
  void add_prose(std::size_t end);
  std::string source_markup(const Source& source, Span marked) const;
  std::string error_markup(const Outcome& outcome) const;
  std::string pictures_markup(const std::vector<Drawn>& pictures);

  std::string name_;
  DisplayOptions options_;
  std::string title_;               // The worksheet's own; empty: its name.
  std::vector<std::string> lines_;  // Of the text...
  std::size_t next_line_ = 0;       // ... and the first one that is not in the report.
  std::string body_;
  int statements_ = 0;
  int pictures_ = 0;
  std::size_t checked_ = 0;          // Results that were checked,
  std::size_t remarked_ = 0;         // and places with a note or a warning.
  std::vector<std::string> errors_;  // Links to them.
};

// Why no report can be written to `path` after the worksheet `sheet` was evaluated; empty if one
// can.
std::string report_objection(const std::string& path, const std::string& sheet);

// The frame of a page around its body. `notes` are lines below the title, in markup.
std::string page_markup(const std::string& title, std::span<const std::string> notes,
                        const std::string& body);

}  // namespace worksheet
