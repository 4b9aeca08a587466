// What a worksheet defines: variables and functions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/worksheet/values/node.hpp"
#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// A variable. Its address stays: compiled expressions refer to it.
struct Variable {
  std::string name;
  Value value = {};
  bool defined = false;
  bool is_assigned = false;  // By the worksheet, not only from the start.
  bool is_origin = false;    // Of the indices.
  bool is_listed = false;    // Among those that the statement has given an object.
  // Whether elements that were written may have left an imaginary array of zeros.
  bool may_be_real = false;
  // Its matrix, if that holds numbers and no one else holds it: then elements are written in place.
  const Anyval* written = nullptr;
  // The statement that should have defined it, while it is not; or the one because of which that
  // one failed.
  Failure failure = {};
};

// A function; the body of the host's function values.
struct Function {
  std::string name;
  std::vector<std::string> parameters;
  std::size_t local_count = 0;  // Of the names that its body gives values.
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
