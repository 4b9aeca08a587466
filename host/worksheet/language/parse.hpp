// The text of a statement, parsed by the grammar.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/source.hpp"

namespace worksheet {

// Text that is no statement; `offset` is the place in it.
struct SyntaxError : std::runtime_error {
  SyntaxError(std::size_t at, const std::string& what) : std::runtime_error(what), offset(at) {}
  std::size_t offset;
};

// A piece of a statement and the pieces that it is made of. Those of the grammar's rules that only
// hold together what is inside of them are left out.
struct Syntax {
  enum class Kind {
    none,
    // Statements.
    definition,
    assignment,
    display,
    target,
    defined_name,
    parameter,
    // Operators around operands; left out around a single operand.
    conversion,
    wanted_unit,
    comparison,
    sum,
    product,
    signed_power,
    power,
    exponent_operand,
    comparison_operator,
    sum_operator,
    product_operator,
    minus,
    // Operands, and what stands behind them.
    postfix,
    index,
    transpose,
    unit_content,
    number,
    imaginary_mark,
    text,
    matrix,
    row,
    call,
    call_name,
    arguments,
    variable,
  };

  Kind kind = Kind::none;
  Span span;
  std::string_view text;  // Of the source, which lives longer.
  std::vector<Syntax> children;
};

// A definition, an assignment or a display. Throws SyntaxError.
Syntax parse(const Source& source);

}  // namespace worksheet
