// Reading the text of a statement.
//
//   statement   [names "=" | name "(" names ")" "="] expression
//   expression  comparison ("in" unit)*
//   comparison  sum (("<" | "<=" | ">" | ">=" | "==" | "!=") sum)*
//   sum         product (("+" | "-") product)*
//   product     signed (("*" | "/") signed)*
//   signed      ("+" | "-")* postfix ("^" ("+" | "-")* postfix)*
//   postfix     operand (index | "'" | unit)*
//   operand     number | text | matrix | "(" expression ")" | name "(" [list] ")" | name
//   matrix      "[" list (";" list)* "]"
//   index       "[" list "]"
//   list        expression ("," expression)*
//   unit        "{" ... "}"
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/worksheet/language/syntax.hpp"

namespace worksheet {

// Text that is no statement; `offset` is the place in it.
struct SyntaxError : std::runtime_error {
  SyntaxError(std::size_t at, const std::string& what) : std::runtime_error(what), offset(at) {}
  std::size_t offset;
};

// The text of the source must outlive the tree. Throws SyntaxError.
SyntaxTree parse(const Source& source);

// The names that a statement assigns or defines, whether it can be read to its end or not.
std::vector<std::string> assigned_names(const Source& source);

}  // namespace worksheet
