#include "host/worksheet/language/statement_reader.hpp"

#include <algorithm>

#include "host/text/utf8.hpp"
#include "host/worksheet/engine/limits.hpp"

namespace worksheet {

namespace {

constexpr std::string_view kBlanks = " \t\n";

constexpr const char* kNotText = "this is not text in UTF-8";

// What is shown of a statement that is too long.
constexpr std::size_t kShownBytes = 80;

// No place and no line.
constexpr auto kNone = static_cast<std::size_t>(-1);

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

}  // namespace

// Follows the brackets of a line, and blanks its comment. A line that is no UTF-8 is mended and
// stays whole: it is going to be shown.
StatementReader::Line StatementReader::scan(std::string& text) {
  std::replace(text.begin(), text.end(), '\r', ' ');
  Line line;
  line.unsound = sound_length(text);
  if (line.unsound == text.size())
    line.unsound = kNone;
  else
    text = mended(text);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '#') {
      const auto comment = text.begin() + static_cast<std::ptrdiff_t>(at);
      if (line.unsound == kNone) std::fill(comment, text.end(), ' ');
      break;
    }
    if (c == '"' || c == '{') at = skip_quoted(text, at);
    if (c == '(' || c == '[') ++line.opens;
    if (c == ')' || c == ']') line.opens > 0 ? --line.opens : ++line.closes;
    if (c == '=' && line.opens + line.closes == 0 && is_assignment_sign(text, at))
      line.begins_statement = true;
  }
  return line;
}

std::vector<Source> StatementReader::add_line(std::string_view given) {
  std::vector<Source> done;
  std::string text(given);
  const Line line = scan(text);
  // No expression holds a single '=': a bracket was forgotten and this line is a new statement.
  if (pending() && line.begins_statement) give(false, &done);
  hold(line, text);
  ++next_line_;
  depth_ = depth_ - std::min(depth_, line.closes) + line.opens;
  // Nobody knows how a line ends that is too long.
  if (depth_ == 0 || text.size() > kStatementLimit.most) give(true, &done);
  return done;
}

std::vector<Source> StatementReader::finish() {
  std::vector<Source> done;
  if (pending()) give(false, &done);
  return done;
}

void StatementReader::hold(Line line, std::string_view text) {
  if (lines_.empty()) first_line_ = next_line_;
  if (too_long_) return;
  line.begin = text_.size();
  lines_.push_back(line);
  text_.append(text).append("\n");
  too_long_ = text_.size() > kStatementLimit.most + 1;
  if (!too_long_) return;
  lines_.resize(1);
  text_.resize(sound_length(std::string_view(text_).substr(0, kShownBytes)));
}

// Gives what is held: one statement if it is complete; else the first line, whose bracket is never
// closed, is one of its own, and so is every other line of that kind.
void StatementReader::give(bool complete, std::vector<Source>* done) {
  const std::size_t last = lines_.size() - 1;
  if (complete || too_long_) {
    add(0, last, done);
  } else {
    const std::vector<std::size_t> ends = ends_of(lines_);
    for (std::size_t k = 0; k <= last; ++k) {
      const std::size_t end = ends[k] == kNone ? k : ends[k];
      add(k, end, done);
      k = end;
    }
  }
  text_.clear();
  lines_.clear();
  depth_ = 0;
  too_long_ = false;
}

// The last line of the statement that begins with each line; kNone where a bracket of it is never
// closed.
std::vector<std::size_t> StatementReader::ends_of(const std::vector<Line>& lines) {
  std::vector<std::size_t> ends(lines.size());
  std::vector<std::size_t> closing;  // The lines of closing brackets, the nearest one last.
  for (std::size_t k = lines.size(); k-- > 0;) {
    const Line& line = lines[k];
    if (line.opens == 0) {
      ends[k] = k;
    } else if (line.opens > closing.size()) {
      ends[k] = kNone;
      closing.clear();
    } else {
      // The line that closes the outermost bracket may open others.
      ends[k] = ends[closing[closing.size() - line.opens]];
      closing.resize(closing.size() - line.opens);
    }
    closing.insert(closing.end(), line.closes, k);
  }
  return ends;
}

// Adds the statement of these lines, unless they are blank.
void StatementReader::add(std::size_t first, std::size_t last, std::vector<Source>* done) const {
  const std::size_t begin = lines_[first].begin;
  const std::size_t end = last + 1 < lines_.size() ? lines_[last + 1].begin : text_.size();
  const std::string_view text = std::string_view(text_).substr(begin, end - begin);
  const std::size_t indent = text.find_first_not_of(kBlanks);
  if (indent == std::string_view::npos) return;
  Source source;
  source.text = text.substr(indent, text.find_last_not_of(kBlanks) + 1 - indent);
  source.line = first_line_ + static_cast<int>(first);
  source.indent = indent;
  for (std::size_t k = last + 1; k-- > first;) {
    if (lines_[k].unsound == kNone) continue;
    source.objection = kNotText;
    source.objection_offset = lines_[k].begin + lines_[k].unsound - begin - indent;
  }
  if (too_long_) {
    source.objection = kStatementLimit.message;
    source.objection_offset = 0;
  }
  done->push_back(std::move(source));
}

}  // namespace worksheet
