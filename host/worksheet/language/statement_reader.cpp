#include "host/worksheet/language/statement_reader.hpp"

#include <algorithm>

#include "host/text/utf8.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/language/words.hpp"

namespace worksheet {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n";

constexpr const char* kNotText = "this is not text in UTF-8";

// What is shown of a statement that is too long.
constexpr std::size_t kShownBytes = 80;

// No place and no line.
constexpr auto kNone = static_cast<std::size_t>(-1);

// Fills the comment of a line with blanks.
void blank_comment(std::string& line) {
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '"' || line[at] == '{') at = end_of_quoted(line, at);
    if (at < line.size() && line[at] == '#')
      return std::fill(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(), ' ');
  }
}

bool is_opening(char c) {
  return c == '(' || c == '[';
}
bool is_closing(char c) {
  return c == ')' || c == ']';
}

}  // namespace

// Whether a line within an open bracket is a new statement, because a bracket was forgotten before
// it. Only a parenthesis holds a single '=', and there it begins the line behind "(" or ";".
bool StatementReader::begins_statement(std::string_view line) const {
  const bool in_sequence = brackets_.back() == '(' && (last_ == '(' || last_ == ';');
  const std::size_t start = skip_blanks(line, 0);
  const std::string_view word = line.substr(start, name_length(line, start));
  const std::size_t behind = skip_blanks(line, start + word.size());
  if (word == "for" || word == "while") return true;
  if (word == "end" && blocks_ > 0 && behind == line.size()) return true;
  std::size_t open = 0;
  for (std::size_t at = start; at < line.size() && !in_sequence; ++at) {
    const char c = line[at];
    if (c == '"' || c == '{') at = end_of_quoted(line, at);
    if (is_opening(c)) ++open;
    if (is_closing(c) && open-- == 0) return false;
    if (open == 0 && is_assignment_sign(line, at)) return true;
  }
  return false;
}

// Follows brackets and blocks from `at` to the end of the statement or of the line; gives that
// place.
std::size_t StatementReader::follow(std::string_view line, std::size_t at, Piece& piece) {
  while (at < line.size()) {
    const char c = line[at];
    if (is_blank(c)) {
      ++at;
      continue;
    }
    if (c == '#') break;  // A comment that is shown.
    last_ = c;
    std::size_t length = 1;
    if (c == '"' || c == '{') {
      length = std::min(end_of_quoted(line, at) + 1, line.size()) - at;
    } else if (is_name_character(c)) {
      while (at + length < line.size() && is_name_character(line[at + length])) ++length;
      if (brackets_.empty()) follow_word(line, at, length);
    } else if (is_opening(c) || is_closing(c)) {
      follow_bracket(c, piece);
    } else if (c == ',' && brackets_.size() == 1) {
      undecided_ = false;
    }
    at += length;
    if (!is_name_character(c)) at_start_ = c == ';' && brackets_.empty();
    if (at_start_ && c == ';' && blocks_ == 0) return at;
  }
  at_start_ = brackets_.empty();
  return line.size();
}

// A word outside of brackets: it may begin a block, or end one.
void StatementReader::follow_word(std::string_view line, std::size_t at, std::size_t length) {
  const std::string_view word = line.substr(at, length);
  const std::size_t behind = skip_blanks(line, at + length);
  const bool begins = at_start_ && !is_assignment_sign(line, behind);
  at_start_ = begins && word == "else";
  if (word == "end" && blocks_ > 0) --blocks_;
  if (!begins) return;
  const bool is_if = word == "if";
  undecided_ = is_if && behind < line.size() && line[behind] == '(';
  if (word == "for" || word == "while" || (is_if && !undecided_)) ++blocks_;
}

void StatementReader::follow_bracket(char c, Piece& piece) {
  if (is_opening(c)) {
    ++piece.opens;
    brackets_.push_back(c);
    return;
  }
  piece.opens > 0 ? --piece.opens : ++piece.closes;
  if (brackets_.empty()) return;
  brackets_.pop_back();
  if (brackets_.empty() && undecided_) ++blocks_;
  if (brackets_.empty()) undecided_ = false;
}

std::vector<Source> StatementReader::add_line(std::string_view given) {
  std::vector<Source> done;
  std::string line(given);
  std::replace(line.begin(), line.end(), '\r', ' ');
  const std::size_t unsound = sound_length(line);
  const bool is_sound = unsound == line.size();
  // A line that is no UTF-8 is mended and stays whole: it is going to be shown.
  is_sound ? blank_comment(line) : static_cast<void>(line = mended(line));
  if (!brackets_.empty() && begins_statement(line)) {
    if (blocks_ == 0) give(false, &done);
    brackets_.clear();
    undecided_ = false;
    at_start_ = true;
  }
  for (std::size_t at = 0;;) {
    Piece piece;
    piece.line = next_line_;
    piece.column = at;
    piece.unsound = is_sound ? kNone : unsound;
    std::size_t end = follow(line, at, piece);
    const bool is_last = !is_sound || skip_blanks(line, end) == line.size();
    while (!is_sound && end < line.size()) end = follow(line, end, piece);
    if (is_last) end = line.size();
    hold(piece, std::string_view(line).substr(at, end - at));
    if (is_last && !too_long_) text_ += '\n';
    // Nobody knows how a line ends that is too long.
    if (is_complete() || line.size() > kStatementLimit.most) give(true, &done);
    if (is_last) break;
    at = end;
  }
  ++next_line_;
  return done;
}

std::vector<Source> StatementReader::finish() {
  std::vector<Source> done;
  // A block without an end is one statement: it says so.
  if (pending()) give(blocks_ > 0, &done);
  return done;
}

void StatementReader::hold(Piece piece, std::string_view text) {
  if (too_long_) return;
  piece.begin = text_.size();
  pieces_.push_back(piece);
  text_.append(text);
  too_long_ = text_.size() > kStatementLimit.most;
  if (!too_long_) return;
  pieces_.resize(1);
  text_.resize(sound_length(std::string_view(text_).substr(0, kShownBytes)));
}

// Gives what is held: one statement if it is complete; else the first line, whose bracket is never
// closed, is one of its own, and so is every other line of that kind.
void StatementReader::give(bool complete, std::vector<Source>* done) {
  const std::size_t last = pieces_.size() - 1;
  if (complete || too_long_) {
    add(0, last, done);
  } else {
    const std::vector<std::size_t> ends = ends_of(pieces_);
    for (std::size_t k = 0; k <= last; ++k) {
      const std::size_t end = ends[k] == kNone ? k : ends[k];
      add(k, end, done);
      k = end;
    }
  }
  text_.clear();
  pieces_.clear();
  brackets_.clear();
  blocks_ = 0;
  at_start_ = true;
  undecided_ = false;
  too_long_ = false;
}

// The last line of the statement that begins with each line; kNone where a bracket of it is never
// closed.
std::vector<std::size_t> StatementReader::ends_of(const std::vector<Piece>& pieces) {
  std::vector<std::size_t> ends(pieces.size());
  std::vector<std::size_t> closing;  // The lines of closing brackets, the nearest one last.
  for (std::size_t k = pieces.size(); k-- > 0;) {
    const Piece& line = pieces[k];
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

// Adds the statement of these pieces, unless they are blank.
void StatementReader::add(std::size_t first, std::size_t last, std::vector<Source>* done) const {
  const std::size_t begin = pieces_[first].begin;
  const std::size_t end = last + 1 < pieces_.size() ? pieces_[last + 1].begin : text_.size();
  const std::string_view text = std::string_view(text_).substr(begin, end - begin);
  const std::size_t indent = text.find_first_not_of(kWhiteSpace);
  if (indent == std::string_view::npos) return;
  Source source;
  source.text = text.substr(indent, text.find_last_not_of(kWhiteSpace) + 1 - indent);
  if (source.text == ";") return;
  source.line = pieces_[first].line;
  source.indent = pieces_[first].column + indent;
  for (std::size_t k = last + 1; k-- > first;) {
    if (pieces_[k].unsound == kNone) continue;
    source.objection = kNotText;
    source.objection_offset = pieces_[k].begin + pieces_[k].unsound - begin - indent;
  }
  if (too_long_) {
    source.objection = kStatementLimit.message;
    source.objection_offset = 0;
  }
  done->push_back(std::move(source));
}

}  // namespace worksheet
