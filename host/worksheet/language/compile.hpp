// Turning the text of a statement into something to evaluate.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/node.hpp"
#include "host/worksheet/engine/source.hpp"

namespace worksheet {

// Text that is no statement; `offset` is the place in it.
struct SyntaxError : std::runtime_error {
  SyntaxError(std::size_t at, const std::string& what) : std::runtime_error(what), offset(at) {}
  std::size_t offset;
};

struct Statement {
  enum class Form { display, assignment, definition };

  Form form = Form::display;
  std::vector<Variable*> targets;
  NodePtr expression;  // Of a display or an assignment.
  std::unique_ptr<Function> function;
};

// Names are resolved in `machine`. Throws SyntaxError.
Statement compile(const Source& source, Machine& machine);

}  // namespace worksheet
