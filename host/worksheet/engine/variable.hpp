// What a worksheet defines: variables and functions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/worksheet/engine/node.hpp"
#include "host/worksheet/engine/source.hpp"
#include "host/worksheet/engine/value.hpp"

namespace worksheet {

// A variable. Its address stays: compiled expressions refer to it.
struct Variable {
  std::string name;
  Value value = {};
  bool defined = false;
  // The statement that should have defined it, while it is not; or the one because of which that
  // one failed.
  Failure failure = {};
};

// A function; the body of the host's function values.
struct Function {
  std::string name;
  std::vector<std::string> parameters;
  std::unique_ptr<Node> body;
  std::unique_ptr<const Source> source;
};

// What a function value of the worksheet stands for.
inline const Function& function_of(const Value& v) {
  return *static_cast<const Function*>(static_cast<const efi::aFunction*>(v.object)->body);
}

// "f(x, y)".
std::string signature_text(const Function& function);

}  // namespace worksheet
