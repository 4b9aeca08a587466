// Turning the text of a statement into something to evaluate.
#pragma once

#include <memory>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/language/parse.hpp"

namespace worksheet {

struct Statement {
  enum class Form {
    display,
    assignment,
    update,  // Of the variable in `targets`; its value is that of the statement.
    block,   // Has no value.
    definition
  };

  Form form = Form::display;
  std::vector<Variable*> targets;
  NodePtr expression;     // Of all but a definition.
  bool is_quiet = false;  // Whether nothing is to be shown.
  std::unique_ptr<Function> function;
};

// Names are resolved in `machine`. Throws SyntaxError.
Statement compile(const Source& source, Machine& machine);

}  // namespace worksheet
