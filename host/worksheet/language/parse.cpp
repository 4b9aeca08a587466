#include "host/worksheet/language/parse.hpp"

#include "fmt/format.h"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"

namespace worksheet {

namespace {

using Kind = SyntaxTree::Kind;
using Index = SyntaxTree::Index;

constexpr const char* kNoOperand = "expected an operand";
constexpr const char* kNoExpression = "expected an expression";

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
// All characters beyond ASCII are letters.
bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c & 0x80) != 0;
}
bool is_name_character(char c) {
  return is_letter(c) || is_digit(c);
}
bool is_keyword(std::string_view name) {
  return name == "in" || name == "if" || name == "help";
}

// The operators, from those that bind least on.
enum Level { kComparison, kSum, kProduct, kOperand };

class Parser {
 public:
  explicit Parser(std::string_view text) {
    tree_.text = text;
    tree_.pieces.emplace_back();
  }

  SyntaxTree statement();
  std::vector<std::string> names_on_the_left();

 private:
  // The children of a piece under construction.
  struct List {
    Index first = 0;
    Index last = 0;
  };

  // One bracket more is open.
  class Nesting {
   public:
    explicit Nesting(Parser& parser) : parser_(parser) {
      if (parser.depth_ == kNestingLimit.most || stack_is_low())
        throw SyntaxError(parser.at_, kNestingLimit.message);
      ++parser.depth_;
    }
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Parser& parser_;
  };

  char look(std::size_t ahead = 0) const {
    return at_ + ahead < tree_.text.size() ? tree_.text[at_ + ahead] : '\0';
  }
  void advance(std::size_t length);
  bool take(char c);
  void expect(char c, const char* message);
  [[noreturn]] void fail(const char* message) const { throw SyntaxError(at_, message); }

  Index make(Kind kind, std::size_t begin, std::size_t end, Index child = 0);
  void add(List& list, Index piece);

  std::size_t reserved_target_length() const;
  bool left_side(Kind& kind, List& names);
  bool add_name(List& names);
  std::size_t name_length() const;

  // `expected` is said where the expression does not even begin.
  Index expression(const char* expected);
  Index chain(Level level, const char* expected);
  std::size_t operator_length(Level level) const;
  Index signed_power(const char* expected);
  bool take_signs();
  Index postfix(std::size_t begin, const char* expected);
  Index operand(std::size_t begin, const char* expected);
  Index number();
  void digits(const char* expected);
  Index text();
  Index unit();
  Index matrix();
  Index index();
  Index parenthesized();
  Index call(std::size_t name_length);
  void add_expressions(List& list, const char* expected);

  SyntaxTree tree_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;  // Of what was taken last, without the blanks behind it.
  std::size_t depth_ = 0;
};

// Takes so many bytes and the blanks behind them.
void Parser::advance(std::size_t length) {
  at_ += length;
  end_ = at_;
  while (is_blank(look())) ++at_;
}

bool Parser::take(char c) {
  if (look() != c) return false;
  advance(1);
  return true;
}

void Parser::expect(char c, const char* message) {
  if (!take(c)) fail(message);
}

Index Parser::make(Kind kind, std::size_t begin, std::size_t end, Index child) {
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

// --- Statements ---

SyntaxTree Parser::statement() {
  advance(0);
  const std::size_t begin = at_;
  if (const std::size_t length = reserved_target_length())
    fail(fmt::format("{} is a reserved word", tree_.text.substr(at_, length)).c_str());
  Kind kind = Kind::display;
  List parts;
  if (!left_side(kind, parts)) {
    kind = Kind::display;
    parts = {};
    at_ = begin;
    tree_.pieces.resize(1);
  }
  add(parts, expression(kNoExpression));
  if (at_ != tree_.text.size()) fail("unexpected text");
  make(kind, begin, end_, parts.first);
  return std::move(tree_);
}

// The length of a word that is no name but stands where one is assigned; else 0.
std::size_t Parser::reserved_target_length() const {
  const std::size_t length = name_length();
  std::size_t behind = length;
  while (is_blank(look(behind))) ++behind;
  const bool assigned = look(behind) == '=' && look(behind + 1) != '=';
  return assigned && is_keyword(tree_.text.substr(at_, length)) ? length : 0;
}

// Whether "a, b =" or "f(x, y) =" begins the statement.
bool Parser::left_side(Kind& kind, List& names) {
  if (!add_name(names)) return false;
  const bool definition = take('(');
  kind = definition ? Kind::definition : Kind::assignment;
  if (definition && !add_name(names)) return false;
  while (take(','))
    if (!add_name(names)) return false;
  if (definition && !take(')')) return false;
  return look(1) != '=' && take('=');
}

std::vector<std::string> Parser::names_on_the_left() {
  advance(0);
  Kind kind = Kind::display;
  List parts;
  std::vector<std::string> names;
  if (!left_side(kind, parts)) return names;
  for (Syntax at(tree_, parts.first); at; at = at.next()) names.emplace_back(at.text());
  if (kind == Kind::definition) names.resize(1);
  return names;
}

std::size_t Parser::name_length() const {
  std::size_t length = 0;
  if (is_letter(look()))
    while (is_name_character(look(length))) ++length;
  return length;
}

bool Parser::add_name(List& names) {
  const std::size_t length = name_length();
  if (length == 0 || is_keyword(tree_.text.substr(at_, length))) return false;
  add(names, make(Kind::name, at_, at_ + length));
  advance(length);
  return true;
}

// --- Expressions ---

Index Parser::expression(const char* expected) {
  const std::size_t begin = at_;
  Index value = chain(kComparison, expected);
  while (look() == 'i' && look(1) == 'n' && !is_name_character(look(2))) {
    advance(2);
    if (look() != '{') fail("expected a unit in braces");
    List parts;
    add(parts, value);
    add(parts, unit());
    value = make(Kind::conversion, begin, end_, parts.first);
  }
  return value;
}

// The length of the operator of that level that stands here; 0 if none does.
std::size_t Parser::operator_length(Level level) const {
  const char c = look();
  if (level == kSum) return c == '+' || c == '-' ? 1 : 0;
  if (level == kProduct) return c == '*' || c == '/' ? 1 : 0;
  if (look(1) == '=' && (c == '<' || c == '>' || c == '=' || c == '!')) return 2;
  return c == '<' || c == '>' ? 1 : 0;
}

Index Parser::chain(Level level, const char* expected) {
  if (level == kOperand) return signed_power(expected);
  const auto tighter = static_cast<Level>(level + 1);
  const std::size_t begin = at_;
  const Index first = chain(tighter, expected);
  if (operator_length(level) == 0) return first;
  List parts;
  add(parts, first);
  while (const std::size_t length = operator_length(level)) {
    add(parts, make(Kind::operation, at_, at_ + length));
    advance(length);
    add(parts, chain(tighter, kNoOperand));
  }
  return make(Kind::chain, begin, end_, parts.first);
}

// Takes plus and minus signs; gives whether they change the sign.
bool Parser::take_signs() {
  bool minus = false;
  for (; look() == '+' || look() == '-'; advance(1)) minus ^= look() == '-';
  return minus;
}

// A sign before the base applies to the whole power; the exponent may have one of its own.
Index Parser::signed_power(const char* expected) {
  const std::size_t begin = at_;
  const bool minus = take_signs();
  const std::size_t base = at_;
  Index result = postfix(begin, expected);
  if (look() == '^') {
    List parts;
    add(parts, result);
    while (take('^')) {
      const std::size_t start = at_;
      const bool negative = take_signs();
      const Index exponent = postfix(at_, "expected an exponent");
      add(parts, negative ? make(Kind::negation, start, end_, exponent) : exponent);
    }
    result = make(Kind::power, base, end_, parts.first);
  }
  return minus ? make(Kind::negation, begin, end_, result) : result;
}

// What is missing is missing at `begin`.
Index Parser::postfix(std::size_t begin, const char* expected) {
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

Index Parser::operand(std::size_t begin, const char* expected) {
  const char c = look();
  if (is_digit(c) || (c == '.' && is_digit(look(1)))) return number();
  if (c == '"') return text();
  if (c == '[') return matrix();
  if (c == '(') return parenthesized();
  const std::size_t length = name_length();
  std::size_t behind = length;
  while (is_blank(look(behind))) ++behind;
  if (length > 0 && look(behind) == '(') return call(length);
  if (length == 0 || is_keyword(tree_.text.substr(at_, length))) throw SyntaxError(begin, expected);
  const Index made = make(Kind::variable, at_, at_ + length);
  advance(length);
  return made;
}

// --- Operands ---

void Parser::digits(const char* expected) {
  if (!is_digit(look())) fail(expected);
  while (is_digit(look())) ++at_;
}

Index Parser::number() {
  const std::size_t begin = at_;
  while (is_digit(look())) ++at_;
  if (look() == '.') ++at_;
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

Index Parser::text() {
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

Index Parser::unit() {
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

Index Parser::matrix() {
  const Nesting nesting(*this);
  const std::size_t begin = at_;
  List rows;
  do {
    advance(1);
    const std::size_t start = at_;
    List elements;
    add_expressions(elements, "expected an element");
    add(rows, make(Kind::row, start, end_, elements.first));
  } while (look() == ';');
  expect(']', "expected ']'");
  return make(Kind::matrix, begin, end_, rows.first);
}

Index Parser::index() {
  const Nesting nesting(*this);
  const std::size_t begin = at_;
  advance(1);
  List subscripts;
  add_expressions(subscripts, "expected an index");
  expect(']', "expected ']'");
  return make(Kind::index, begin, end_, subscripts.first);
}

Index Parser::parenthesized() {
  const Nesting nesting(*this);
  advance(1);
  const Index inside = expression(kNoExpression);
  expect(')', "expected ')'");
  return inside;
}

Index Parser::call(std::size_t name_length) {
  const std::size_t begin = at_;
  List parts;
  add(parts, make(Kind::name, begin, begin + name_length));
  advance(name_length);
  const Nesting nesting(*this);
  advance(1);
  constexpr const char* kNoEnd = "expected ')'";
  if (look() != ')') add_expressions(parts, kNoEnd);
  expect(')', kNoEnd);
  return make(Kind::call, begin, end_, parts.first);
}

}  // namespace

SyntaxTree parse(const Source& source) {
  return Parser(source.text).statement();
}

std::vector<std::string> assigned_names(const Source& source) {
  return Parser(source.text).names_on_the_left();
}

}  // namespace worksheet
