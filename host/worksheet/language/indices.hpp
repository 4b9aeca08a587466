// Indices: A[i, j], v[i], and the parts of matrices that ranges and vectors of indices mean.
#pragma once

#include <vector>

#include "host/worksheet/language/expressions.hpp"
#include "host/worksheet/operators/subscript.hpp"

namespace worksheet {

// The last index of the extent under evaluation: `end`.
struct LastIndexNode : Node {
  explicit LastIndexNode(Span where) : Node(where) {}
  Value evaluate(Machine& machine) const override { return number_value(machine.last_index()); }
};

// What stands in the brackets.
struct IndexList {
  struct Index {
    NodePtr node;                      // Null for ":".
    const RangeNode* range = nullptr;  // The node, if it is a range.
  };

  // The part of `m` that is meant; an error value in *error otherwise.
  Block block_of(Machine& machine, const aMatrix* m, Value* error) const;
  // Whether this is [:].
  bool is_everything() const { return indices.size() == 1 && indices[0].node == nullptr; }

  Span span;
  std::vector<Index> indices;
  const Variable* origin;

 private:
  Subscript subscript(Machine& machine, const Index& index, const Extent& extent,
                      Value* error) const;
};

struct IndexSuffix : Suffix {
  explicit IndexSuffix(IndexList l) : Suffix(l.span), list(std::move(l)) {}
  Value apply(Machine& machine, const Value& a, Span place) const override;
  IndexList list;
};

}  // namespace worksheet
