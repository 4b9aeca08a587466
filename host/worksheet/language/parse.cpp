// Statements and blocks.
#include "host/worksheet/language/parse.hpp"

#include <algorithm>
#include <utility>

#include "fmt/format.h"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"
#include "host/worksheet/language/foreign_signs.hpp"
#include "host/worksheet/language/parser.hpp"

namespace worksheet {

// --- Text ---

// Takes so many bytes and the blanks behind them. A line ends a statement outside of brackets.
void Parser::advance(std::size_t length) {
  at_ += length;
  end_ = at_;
  while (is_blank(look()) && (depth_ > 0 || look() != '\n')) ++at_;
}

bool Parser::take(char c) {
  if (look() != c) return false;
  advance(1);
  return true;
}

void Parser::expect(char c, const char* message) {
  if (!take(c)) fail(message);
}

bool Parser::take_word(std::string_view expected) {
  if (word() != expected) return false;
  advance(expected.size());
  return true;
}

void Parser::open() {
  if (depth_ == kNestingLimit.most || stack_is_low()) fail(kNestingLimit.message);
  ++depth_;
  advance(1);
}

void Parser::close(char c, const char* message) {
  // What is missing is missing on the line before.
  const bool on_new_line = tree_.text.substr(end_, at_ - end_).find('\n') != std::string_view::npos;
  if (look() != c) throw SyntaxError(on_new_line && blocks_ > 0 ? end_ : at_, message);
  --depth_;
  advance(1);
}

Parser::Index Parser::make(Kind kind, std::size_t begin, std::size_t end, Index child) {
  tree_.pieces.push_back(
      {kind, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end), child, 0});
  return static_cast<Index>(tree_.pieces.size() - 1);
}

void Parser::add(List& list, Index piece) {
  if (list.first == 0)
    list.first = piece;
  else
    tree_.pieces[list.last].next = piece;
  list.last = piece;
}

Parser::Index Parser::name(const char* expected) {
  const std::string_view taken = word();
  if (taken.empty()) fail(expected);
  if (is_keyword(taken)) fail(fmt::format("{} is a reserved word", taken));
  const Index made = make(Kind::name, at_, at_ + taken.size());
  advance(taken.size());
  return made;
}

// --- Statements ---

SyntaxTree Parser::whole_text() {
  advance(0);
  statement();
  tree_.quiet = take(';');
  if (at_ != tree_.text.size()) fail("unexpected text");
  return std::move(tree_);
}

bool is_if_block(std::string_view text, std::size_t at) {
  at = skip_blanks(text, at + 2);
  if (at >= text.size() || text[at] != '(') return true;
  std::size_t depth = 0;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '"' || c == '{') at = end_of_quoted(text, at);
    if (c == '(' || c == '[') ++depth;
    if (c == ')' || c == ']') --depth;
    if (depth == 0) return true;
    if (c == ',' && depth == 1) return false;
  }
  return true;
}

bool Parser::is_block_word(std::string_view word) const {
  return word == "for" || word == "while" || (word == "if" && is_if_block(tree_.text, at_));
}

Parser::Index Parser::statement() {
  const std::string_view first = word();
  const std::size_t behind = skip_blanks(tree_.text, at_ + first.size());
  if (is_keyword(first) && is_assignment_sign(tree_.text, behind))
    fail(fmt::format("{} is a reserved word", first));
  if (is_block_word(first)) return block(first);
  if (first == "end" || first == "else" || first == "elseif")
    fail(fmt::format("{} without a block", first));
  if (first != "break" && first != "continue") return simple_statement();
  if (blocks_ == 0) fail(fmt::format("{} stands in a loop only", first));
  const std::size_t begin = at_;
  advance(first.size());
  return make(first == "break" ? Kind::leave : Kind::again, begin, end_);
}

Parser::Index Parser::simple_statement() {
  const std::size_t begin = at_;
  const std::size_t size = tree_.pieces.size();
  Kind kind = Kind::display;
  List parts;
  if (!left_side(kind, parts)) {
    kind = Kind::display;
    parts = {};
    at_ = begin;
    depth_ = 0;
    tree_.pieces.resize(size);
  }
  add(parts, expression(kNoExpression));
  return make(kind, begin, end_, parts.first);
}

// The length of "=" or of an operator with it that stands here; 0 if none does.
std::size_t Parser::assignment_length() const {
  if (is_assignment_sign(tree_.text, at_)) return 1;
  const bool is_operator = look() == '+' || look() == '-' || look() == '*' || look() == '/';
  return is_operator && is_assignment_sign(tree_.text, at_ + 1) ? 2 : 0;
}

// Whether "a, b =", "f(x, y) =", "a +=" or "A[i, j] =" begins the statement.
bool Parser::left_side(Kind& kind, List& parts) {
  if (!add_name(parts)) return false;
  if (look() == '[' || assignment_length() == 2) {
    kind = Kind::update;
    if (look() == '[') add(parts, index());
    const std::size_t length = assignment_length();
    if (length == 0) return false;
    add(parts, make(Kind::operation, at_, at_ + length));
    advance(length);
    return true;
  }
  const bool definition = look() == '(';
  if (definition) open();
  kind = definition ? Kind::definition : Kind::assignment;
  if (definition && !add_name(parts)) return false;
  while (take(','))
    if (!add_name(parts)) return false;
  if (definition && look() != ')') return false;
  if (definition) close(')', "");
  return look(1) != '=' && take('=');
}

std::vector<std::string> Parser::names_on_the_left() {
  advance(0);
  Kind kind = Kind::display;
  List parts;
  std::vector<std::string> names;
  try {
    if (!left_side(kind, parts)) return names;
  } catch (const SyntaxError&) {
    return names;  // In an index.
  }
  for (Syntax at(tree_, parts.first); at; at = at.next()) names.emplace_back(at.text());
  if (kind != Kind::assignment) names.resize(1);
  return names;
}

bool Parser::add_name(List& names) {
  const std::string_view taken = word();
  if (taken.empty() || is_keyword(taken)) return false;
  add(names, name(""));
  return true;
}

// --- Blocks ---

Parser::Index Parser::block(std::string_view word) {
  if (blocks_ == kBlockLimit.most || stack_is_low()) fail(kBlockLimit.message);
  const std::size_t begin = at_;
  ++blocks_;
  advance(word.size());
  const Index made = word == "for"     ? for_loop(begin)
                     : word == "while" ? while_loop(begin)
                                       : branches(begin);
  --blocks_;
  return made;
}

Parser::Index Parser::for_loop(std::size_t begin) {
  List parts;
  add(parts, name("expected a name"));
  expect('=', "expected '=' and what the name runs through");
  add(parts, expression(kNoExpression));
  add(parts, body(begin, "for"));
  end_of_block(begin, "for");
  return make(Kind::for_loop, begin, end_, parts.first);
}

Parser::Index Parser::while_loop(std::size_t begin) {
  List parts;
  add(parts, expression("expected a condition"));
  add(parts, body(begin, "while"));
  end_of_block(begin, "while");
  return make(Kind::while_loop, begin, end_, parts.first);
}

Parser::Index Parser::branches(std::size_t begin) {
  List parts;
  do {
    add(parts, expression("expected a condition"));
    add(parts, body(begin, "if"));
  } while (take_word("elseif"));
  if (take_word("else")) {
    add(parts, body(begin, "if", true));
  }
  end_of_block(begin, "if");
  return make(Kind::branches, begin, end_, parts.first);
}

// The statements up to the word that ends them.
Parser::Index Parser::body(std::size_t begin, std::string_view word_of_block, bool apart) {
  const std::size_t start = end_;
  List statements;
  for (;; apart = false) {
    for (; look() == '\n' || look() == ';'; apart = true) advance(1);
    const std::string_view next = word();
    if (at_ == tree_.text.size()) end_of_block(begin, word_of_block);
    if (next == "end" || next == "else" || next == "elseif") break;
    if (!apart) fail("unexpected text");
    add(statements, statement());
  }
  return make(Kind::body, start, end_, statements.first);
}

void Parser::end_of_block(std::size_t begin, std::string_view word_of_block) {
  if (take_word("end")) return;
  if (at_ == tree_.text.size())
    throw SyntaxError(begin, fmt::format("this {} has no end", word_of_block));
  fail("expected end");
}

SyntaxTree parse(const Source& source) try {
  return Parser(source.text).whole_text();
} catch (const SyntaxError& error) {
  throw SyntaxError(error.offset, error.what() + suggested_sign(source.text, error.offset));
}

// Of a block those of its statements, also of those behind a mistake: they are found by their
// beginnings alone.
std::vector<std::string> assigned_names(const Source& source) {
  const std::string_view text = source.text;
  if (!is_keyword(text.substr(0, name_length(text, 0)))) return Parser(text).names_on_the_left();
  std::vector<std::string> names;
  for (std::size_t at = 0; at < text.size(); ++at) {
    at = skip_blanks(text, at);
    const std::string_view first = text.substr(at, name_length(text, at));
    if (first == "for" || first == "else") at = skip_blanks(text, at + first.size());
    const std::size_t begin = at;
    while (at < text.size() && text[at] != '\n' && text[at] != ';')
      at = (text[at] == '"' || text[at] == '{' ? end_of_quoted(text, at) : at) + 1;
    at = std::min(at, text.size());
    for (std::string& name : Parser(text.substr(begin, at - begin)).names_on_the_left())
      names.push_back(std::move(name));
  }
  return names;
}

}  // namespace worksheet
