// The reader of a statement, by recursive descent; see parse.hpp for the grammar.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/language/parse.hpp"
#include "host/worksheet/language/words.hpp"

namespace worksheet {

class Parser {
 public:
  using Kind = SyntaxTree::Kind;
  using Index = SyntaxTree::Index;

  explicit Parser(std::string_view text) {
    tree_.text = text;
    tree_.pieces.emplace_back();
  }

  SyntaxTree whole_text();
  std::vector<std::string> names_on_the_left();

 private:
  // The children of a piece under construction.
  struct List {
    Index first = 0;
    Index last = 0;
  };

  // The operators, from those that bind least on.
  enum Level { kEither, kBoth, kComparison, kRange, kSum, kProduct, kOperand };

  static constexpr const char* kNoOperand = "expected an operand";
  static constexpr const char* kNoExpression = "expected an expression";

  // --- Text ---

  char look(std::size_t ahead = 0) const {
    return at_ + ahead < tree_.text.size() ? tree_.text[at_ + ahead] : '\0';
  }
  std::string_view word() const { return tree_.text.substr(at_, name_length(tree_.text, at_)); }
  void advance(std::size_t length);
  bool take(char c);
  void expect(char c, const char* message);
  bool take_word(std::string_view expected);
  // Of a bracket, which lines do not end.
  void open();
  void close(char c, const char* message);
  [[noreturn]] void fail(const std::string& message) const { throw SyntaxError(at_, message); }

  Index make(Kind kind, std::size_t begin, std::size_t end, Index child = 0);
  void add(List& list, Index piece);
  Index name(const char* expected);

  // --- Statements: parse.cpp ---

  Index statement();
  Index simple_statement();
  bool left_side(Kind& kind, List& parts);
  std::size_t assignment_length() const;
  bool add_name(List& names);
  bool is_block_word(std::string_view word) const;
  Index block(std::string_view word);
  Index for_loop(std::size_t begin);
  Index while_loop(std::size_t begin);
  Index branches(std::size_t begin);
  // `apart`: whether the first statement may follow at once.
  Index body(std::size_t begin, std::string_view word, bool apart = false);
  void end_of_block(std::size_t begin, std::string_view word);

  // --- Expressions: parse_expressions.cpp; `expected` is said where one does not even begin ---

  Index expression(const char* expected);
  Index chain(Level level, const char* expected);
  Index range(const char* expected);
  std::size_t operator_length(Level level) const;
  Index signed_power(const char* expected);

  std::size_t power_length() const;
  bool take_signs();
  void take_prefixes(List& list);

  // --- Operands: parse_operands.cpp ---

  Index postfix(std::size_t begin, const char* expected);
  Index operand(std::size_t begin, const char* expected);
  Index number();
  void digits(const char* expected);
  Index text();
  Index unit();
  Index matrix();
  Index index();
  Index subscript(const char* expected);
  Index parenthesized();
  bool assignment_ahead() const;
  Index call(std::size_t name_length);
  void add_expressions(List& list, const char* expected);

  SyntaxTree tree_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;      // Of what was taken last, without the blanks behind it.
  std::size_t depth_ = 0;    // Brackets that are open,
  std::size_t indices_ = 0;  // those of indices among them,
  std::size_t blocks_ = 0;   // and blocks.
};

// Whether the statement that begins with the word `if` at `at` is a block: `if(c, a, b)` is a
// function.
bool is_if_block(std::string_view text, std::size_t at);

}  // namespace worksheet
