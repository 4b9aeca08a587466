// Operands, and what stands behind them.
#include "fmt/format.h"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/language/parser.hpp"

namespace worksheet {

// What is missing is missing at `begin`.
Parser::Index Parser::postfix(std::size_t begin, const char* expected) {
  const std::size_t start = at_;
  const Index first = operand(begin, expected);
  List parts;
  add(parts, first);
  for (;;) {
    if (look() == '[') {
      add(parts, index());
    } else if (look() == '{') {
      add(parts, unit());
    } else if (look() == '\'') {
      add(parts, make(Kind::transpose, at_, at_ + 1));
      advance(1);
    } else {
      break;
    }
  }
  return parts.last == first ? first : make(Kind::postfix, start, end_, parts.first);
}

Parser::Index Parser::operand(std::size_t begin, const char* expected) {
  const char c = look();
  if (is_digit(c) || (c == '.' && is_digit(look(1)))) return number();
  if (c == '"') return text();
  if (c == '[') return matrix();
  if (c == '(') return parenthesized();
  const std::string_view taken = word();
  const std::size_t behind = skip_blanks(tree_.text, at_ + taken.size());
  const bool called = behind < tree_.text.size() && tree_.text[behind] == '(';
  if (!taken.empty() && called && (taken == "if" || !is_keyword(taken))) return call(taken.size());
  const bool last_index = taken == "end" && indices_ > 0;
  if (taken == "end" && depth_ > 0 && !last_index) fail("end as a number stands in an index only");
  if (taken.empty() || (is_keyword(taken) && !last_index)) throw SyntaxError(begin, expected);
  const Index made = make(last_index ? Kind::last_index : Kind::variable, at_, at_ + taken.size());
  advance(taken.size());
  return made;
}

void Parser::digits(const char* expected) {
  if (!is_digit(look())) fail(expected);
  while (is_digit(look())) ++at_;
}

Parser::Index Parser::number() {
  const std::size_t begin = at_;
  while (is_digit(look())) ++at_;
  // "2.*x" is an operator on 2.
  const bool is_point = look() == '.' && std::string_view("*/^").find(look(1)) == std::string::npos;
  if (is_point) ++at_;
  while (is_digit(look())) ++at_;
  if (look() == 'e' || look() == 'E') {
    ++at_;
    if (look() == '+' || look() == '-') ++at_;
    digits("expected the digits of an exponent");
  }
  const bool imaginary = look() == 'i' || look() == 'j';
  if (imaginary) ++at_;
  if (is_name_character(look())) fail("a number ends in a letter");
  advance(0);
  return make(imaginary ? Kind::imaginary : Kind::number, begin, end_);
}

Parser::Index Parser::text() {
  const std::size_t begin = at_++;
  for (; look() != '"'; ++at_) {
    if (at_ >= tree_.text.size() || look() == '\n') fail("expected '\"' at the end of the text");
    if (look() != '\\') continue;
    ++at_;
    if (at_ >= tree_.text.size() || std::string_view("\"\\nt").find(look()) == std::string::npos)
      fail("expected one of \\\" \\\\ \\n \\t");
  }
  advance(1);
  return make(Kind::text, begin, end_);
}

Parser::Index Parser::unit() {
  const std::size_t begin = ++at_;
  for (; look() != '}'; ++at_)
    if (at_ >= tree_.text.size() || look() == '\n') fail("expected '}'");
  const std::size_t end = at_;
  if (end - begin > kUnitLimit.most) throw SyntaxError(begin, kUnitLimit.message);
  advance(1);
  return make(Kind::unit, begin, end);
}

void Parser::add_expressions(List& list, const char* expected) {
  add(list, expression(expected));
  while (take(',')) add(list, expression(kNoExpression));
}

Parser::Index Parser::matrix() {
  const std::size_t begin = at_;
  List rows;
  open();
  do {
    const std::size_t start = at_;
    List elements;
    add_expressions(elements, "expected an element");
    add(rows, make(Kind::row, start, end_, elements.first));
  } while (take(';'));
  const std::string_view blanks = tree_.text.substr(end_, at_ - end_);
  const bool begins_element = is_name_character(look()) || look() == '"' || look() == '[';
  const bool no_comma = begins_element && blanks.find('\n') == std::string_view::npos;
  close(']', no_comma ? "expected ',' between elements" : "expected ']'");
  return make(Kind::matrix, begin, end_, rows.first);
}

Parser::Index Parser::index() {
  const std::size_t begin = at_;
  open();
  ++indices_;
  List subscripts;
  add(subscripts, subscript("expected an index"));
  while (take(',')) add(subscripts, subscript(kNoExpression));
  --indices_;
  close(']', "expected ']'");
  return make(Kind::index, begin, end_, subscripts.first);
}

Parser::Index Parser::subscript(const char* expected) {
  if (look() != ':') return expression(expected);
  const std::size_t begin = at_;
  advance(1);
  return make(Kind::everything, begin, end_);
}

// Whether "a =" or "a, b =" stands here.
bool Parser::assignment_ahead() const {
  const std::string_view text = tree_.text;
  for (std::size_t at = at_;;) {
    const std::size_t length = name_length(text, at);
    if (length == 0) return false;
    at = skip_blanks(text, at + length);
    if (at >= text.size() || text[at] != ',') return is_assignment_sign(text, at);
    at = skip_blanks(text, at + 1);
  }
}

// An expression, or a sequence of names that are given values and an expression of them.
Parser::Index Parser::parenthesized() {
  const std::size_t begin = at_;
  open();
  List parts;
  while (assignment_ahead()) {
    List assigned;
    const std::size_t start = at_;
    do add(assigned, name("expected a name"));
    while (take(','));
    advance(1);
    add(assigned, expression(kNoExpression));
    add(parts, make(Kind::assignment, start, end_, assigned.first));
    expect(';', "expected ';' and an expression");
  }
  const Index inside = expression(kNoExpression);
  close(')', "expected ')'");
  if (parts.first == 0) return inside;
  add(parts, inside);
  return make(Kind::sequence, begin, end_, parts.first);
}

Parser::Index Parser::call(std::size_t name_length) {
  const std::size_t begin = at_;
  List parts;
  add(parts, make(Kind::name, begin, begin + name_length));
  advance(name_length);
  open();
  constexpr const char* kNoEnd = "expected ')'";
  if (look() != ')') add_expressions(parts, kNoEnd);
  close(')', kNoEnd);
  return make(Kind::call, begin, end_, parts.first);
}

}  // namespace worksheet
