// Turning the text of a statement into something to evaluate.
#pragma once

#include <memory>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/language/parse.hpp"

namespace worksheet {

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
