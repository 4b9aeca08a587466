// A compiled expression: a tree of nodes in which every name is resolved.
#pragma once

#include <memory>

#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

class Machine;

class Node {
 public:
  explicit Node(Span where) : span(where) {}
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  // The value, or an error value.
  virtual Value evaluate(Machine& machine) const = 0;

  const Span span;
};

using NodePtr = std::unique_ptr<Node>;

}  // namespace worksheet
