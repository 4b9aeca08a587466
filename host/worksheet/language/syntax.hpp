// The text of a statement as a tree.
//
// Its pieces stand in one array: a tree of any size is made and dropped without recursion.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/worksheet/values/source.hpp"

namespace worksheet {

class Syntax;

struct SyntaxTree {
  enum class Kind : std::uint8_t {
    // Statements: the names on the left, then the expression.
    definition,  // Of the function named first; its parameters follow.
    assignment,
    display,
    update,      // name, index or nothing, operation, expression
    for_loop,    // name, expression, body
    while_loop,  // expression, body
    branches,    // (expression, body)+, body or nothing
    leave,       // break
    again,       // continue
    // Expressions.
    conversion,  // operand, unit
    chain,       // operand (operation operand)*, from left to right
    logic,       // the same, with operations that may leave the rest alone
    range,       // operand operand, or operand operand operand: from, step, to
    power,       // operand (operation operand)*, from right to left
    negation,    // operand
    prefix,      // operation* operand, from right to left
    postfix,     // operand (index | transpose | unit)*
    number,
    imaginary,  // A number with its mark.
    text,       // With its quotes.
    matrix,     // rows
    call,       // name, arguments
    sequence,   // assignments, expression
    variable,
    last_index,
    everything,  // The subscript ":".
    // Parts of these.
    name,
    operation,
    index,  // subscripts
    transpose,
    unit,  // What stands in the braces.
    row,   // elements
    body,  // statements
  };
  using Index = std::uint32_t;

  // Offsets in the text; the first child and the next one of the same parent, 0 for none.
  struct Piece {
    Kind kind;
    std::uint32_t begin;
    std::uint32_t end;
    Index child;
    Index next;
  };

  // The statement: the last piece made. The tree must outlive it.
  Syntax root() const;

  std::string_view text;      // Of the source, which lives longer.
  std::vector<Piece> pieces;  // The first one is not used.
  bool quiet = false;         // Whether the value is not to be shown.
};

// A piece and the pieces that it is made of.
class Syntax {
 public:
  using Kind = SyntaxTree::Kind;

  Syntax(const SyntaxTree& tree, SyntaxTree::Index index) : tree_(&tree), index_(index) {}

  Kind kind() const { return piece().kind; }
  Span span() const { return {piece().begin, piece().end}; }
  std::string_view text() const {
    return tree_->text.substr(piece().begin, piece().end - piece().begin);
  }

  // Whether this is a piece: there is none behind the last child, and none inside a leaf.
  explicit operator bool() const { return index_ != 0; }
  Syntax child() const { return {*tree_, piece().child}; }
  Syntax next() const { return {*tree_, piece().next}; }
  std::size_t child_count() const {
    std::size_t count = 0;
    for (Syntax at = child(); at; at = at.next()) ++count;
    return count;
  }

 private:
  const SyntaxTree::Piece& piece() const { return tree_->pieces[index_]; }

  const SyntaxTree* tree_;
  SyntaxTree::Index index_;
};

inline Syntax SyntaxTree::root() const {
  return {*this, static_cast<Index>(pieces.size() - 1)};
}

}  // namespace worksheet
