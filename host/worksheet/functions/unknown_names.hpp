// What is said of a name that has no value.
#pragma once

#include <string_view>

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;
struct Variable;

// The error of using `name` as a value, at `span`: a statement that failed should have given it
// one, it is a function and wants arguments, or it is unknown; then the error says which name is
// near, or what does here what a function of that name does in other systems. `variable` is that of
// the name, or null.
Value no_value_error(Machine& machine, Span span, std::string_view name, const Variable* variable);

// The same for calling it as a function.
Value no_function_error(Machine& machine, Span span, std::string_view name,
                        const Variable* variable);

}  // namespace worksheet
