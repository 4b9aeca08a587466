#include "host/worksheet/language/statement_reader.hpp"

#include <algorithm>

namespace worksheet {

namespace {

constexpr std::string_view kBlanks = " \t\r";

// The bracket depth behind a line, and whether the line has an assignment inside of a bracket.
struct LineScan {
  int depth;
  bool assigns_in_bracket = false;
};

// Skips a string or a unit that begins at `at`; neither goes beyond its line.
std::size_t skip_quoted(std::string_view line, std::size_t at) {
  const char closing = line[at] == '{' ? '}' : '"';
  for (++at; at < line.size() && line[at] != closing; ++at)
    if (line[at] == '\\' && closing == '"') ++at;
  return std::min(at, line.size());
}

// A single '=', which is no operator.
bool is_assignment_sign(std::string_view line, std::size_t at) {
  const bool doubled = at + 1 < line.size() && line[at + 1] == '=';
  const bool ends_operator =
      at > 0 && std::string_view("<>=!").find(line[at - 1]) != std::string_view::npos;
  return line[at] == '=' && !doubled && !ends_operator;
}

// Follows the brackets of a line from `depth`, and blanks its comment.
LineScan scan_line(std::string& line, int depth) {
  LineScan result = {depth};
  for (std::size_t at = 0; at < line.size(); ++at) {
    switch (line[at]) {
      case '#':
        std::fill(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(), ' ');
        return result;
      case '"':
      case '{':
        at = skip_quoted(line, at);
        break;
      case '(':
      case '[':
        ++result.depth;
        break;
      case ')':
      case ']':
        result.depth = std::max(0, result.depth - 1);
        break;
      case '=':
        if (result.depth > 0 && is_assignment_sign(line, at)) result.assigns_in_bracket = true;
        break;
      default:
        break;
    }
  }
  return result;
}

}  // namespace

std::vector<Source> StatementReader::add_line(std::string_view line) {
  std::vector<Source> done;
  if (line.ends_with('\r')) line.remove_suffix(1);
  scan({std::string(line), next_line_++}, &done);
  return done;
}

std::vector<Source> StatementReader::finish() {
  std::vector<Source> done;
  while (pending()) give_up(&done);
  return done;
}

void StatementReader::scan(Line line, std::vector<Source>* done) {
  const LineScan seen = scan_line(line.text, depth_);
  // No expression holds a single '=': the bracket was forgotten and this line is a new statement.
  if (pending() && seen.assigns_in_bracket) {
    while (pending()) give_up(done);
    return scan(std::move(line), done);
  }
  depth_ = seen.depth;
  held_.push_back(std::move(line));
  if (depth_ > 0) return;

  Source source;
  source.line = held_.front().number;
  for (const Line& part : held_) source.text += (&part == &held_.front() ? "" : "\n") + part.text;
  held_.clear();
  const std::size_t first = source.text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return;
  source.text.erase(source.text.find_last_not_of(kBlanks) + 1);
  source.text.erase(0, first);
  source.indent = first;
  done->push_back(std::move(source));
}

// Lets the first held line be a statement of its own, with its bracket open, and reads the others
// anew.
void StatementReader::give_up(std::vector<Source>* done) {
  std::vector<Line> lines = std::move(held_);
  held_.clear();
  depth_ = 0;
  std::string& text = lines.front().text;
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  const std::size_t end = text.find_last_not_of(kBlanks) + 1;
  done->push_back({text.substr(first, end - first), lines.front().number, first});
  for (std::size_t k = 1; k < lines.size(); ++k) scan(std::move(lines[k]), done);
}

}  // namespace worksheet
