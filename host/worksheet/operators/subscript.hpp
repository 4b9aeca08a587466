// Which rows, columns or elements of a matrix an index means.
#pragma once

#include <vector>

#include "host/worksheet/operators/range.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// Positions counted from 0: a list, or where that is empty `count` of them from `first` on.
struct Subscript {
  std::ptrdiff_t count = 0;
  std::ptrdiff_t first = 0;
  std::ptrdiff_t step = 1;
  std::vector<std::ptrdiff_t> list = {};
  bool is_single = false;  // A number: the result has no such extent.

  std::ptrdiff_t operator[](std::ptrdiff_t k) const {
    return list.empty() ? first + k * step : list[static_cast<std::size_t>(k)];
  }
};

// What an index of a matrix is for: how many rows, columns or elements it has, and the index of the
// first of them.
struct Extent {
  std::ptrdiff_t size;
  double origin;

  double last() const { return origin + static_cast<double>(size) - 1.0; }
};

// Each gives an error value in *error where an index is no integer or outside of the extent. An
// index is a number or a vector of them.
Subscript subscript_of(Machine& machine, const Value& index, const Extent& extent, Span span,
                       Value* error);
Subscript subscript_of(Machine& machine, const Range& range, const Extent& extent, Span span,
                       Value* error);

// Where a part of a matrix is.
struct Block {
  Subscript rows;
  Subscript cols;
  bool is_everything = false;  // The matrix as a whole, by the one index ":".

  std::ptrdiff_t count() const { return rows.count * cols.count; }
  bool is_element() const { return rows.is_single && cols.is_single; }
};

// The element at a place in the order of storage: a number, or the nested value. Without a unit.
Value element_of(const aMatrix* m, std::ptrdiff_t k);

// The part of a matrix: a number or nested value where it is an element, else a matrix. Without a
// unit. Throws std::bad_alloc.
Value part_of(Machine& machine, const aMatrix* m, const Block& block);
// All elements as a column, in the order of columns.
Value all_elements(Machine& machine, const aMatrix* m);

}  // namespace worksheet
