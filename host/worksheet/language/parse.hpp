// Reading the text of a statement.
//
//   text        statement [";"]
//   statement   block | "break" | "continue" | [left] expression
//   left        names "=" | name "(" names ")" "=" | name [index] ("=" | "+=" | "-=" | "*=" | "/=")
//   block       "for" name "=" expression body "end" | "while" expression body "end"
//               | "if" expression body ("elseif" expression body)* ["else" body] "end"
//   body        statements, each on lines of its own or behind ";"
//   expression  either ("in" unit)*
//   either      both ("||" both)*
//   both        comparison ("&&" comparison)*
//   comparison  range (("<" | "<=" | ">" | ">=" | "==" | "!=") range)*
//   range       sum [":" sum [":" sum]]
//   sum         product (("+" | "-") product)*
//   product     signed (("*" | "/" | "\" | ".*" | "./") signed)*
//   signed      ("+" | "-" | "!")* postfix (("^" | ".^") ("+" | "-")* postfix)*
//   postfix     operand (index | "'" | unit)*
//   operand     number | text | matrix | "(" sequence ")" | name "(" [list] ")" | name | "end"
//   sequence    (names "=" expression ";")* expression
//   matrix      "[" list (";" list)* "]"
//   index       "[" subscript ("," subscript)* "]"
//   subscript   ":" | expression
//   list        expression ("," expression)*
//   unit        "{" ... "}"
//
// "end" as an operand stands within an index only; `if(` with a "," in its brackets is a call.
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

// The names that a statement assigns or defines, also within a block, whether it can be read to its
// end or not.
std::vector<std::string> assigned_names(const Source& source);

}  // namespace worksheet
