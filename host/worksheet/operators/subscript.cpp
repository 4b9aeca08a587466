#include "host/worksheet/operators/subscript.hpp"

#include <cmath>

#include "fmt/format.h"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

namespace {

// The position that an index means.
std::ptrdiff_t position(Machine& machine, double index, const Extent& extent, Span span,
                        Value* error) {
  if (std::floor(index) != index)
    *error = machine.fail(span, "an index must be an integer");
  else if (!(index >= extent.origin && index <= extent.last()))
    *error =
        machine.fail(span, extent.size == 0 ? fmt::format("index {}: there are no elements", index)
                                            : fmt::format("index {} is outside of {} to {}", index,
                                                          extent.origin, extent.last()));
  else
    return static_cast<std::ptrdiff_t>(index - extent.origin);
  return 0;
}

bool is_index_vector(const Value& v) {
  return is_matrix(v) && v.unit == nullptr && matrix(v)->im == nullptr &&
         (matrix(v)->rows == 1 || matrix(v)->cols == 1) && !contains_ptrs(matrix(v));
}

}  // namespace

Subscript subscript_of(Machine& machine, const Value& index, const Extent& extent, Span span,
                       Value* error) {
  if (is_error(index)) {
    *error = index;
  } else if (is_plain_real(index)) {
    return {1, position(machine, index.re, extent, span, error), 1, {}, true};
  } else if (!is_index_vector(index)) {
    *error = machine.fail(span, "an index must be an integer");
  } else {
    const aMatrix* const m = matrix(index);
    Subscript result;
    result.count = element_count(m);
    result.list.reserve(static_cast<std::size_t>(result.count));
    for (std::ptrdiff_t k = 0; k < result.count && error->object == nullptr; ++k)
      result.list.push_back(position(machine, re_at(m, k), extent, span, error));
    return result;
  }
  return {};
}

Subscript subscript_of(Machine& machine, const Range& range, const Extent& extent, Span span,
                       Value* error) {
  if (range.unit != nullptr || std::floor(range.step) != range.step)
    *error = machine.fail(span, "an index must be an integer");
  if (range.count == 0 || error->object != nullptr) return {};
  Subscript result;
  result.count = range.count;
  result.first = position(machine, range.from, extent, span, error);
  result.step = static_cast<std::ptrdiff_t>(range.step);
  if (error->object == nullptr) position(machine, range.at(range.count - 1), extent, span, error);
  return result;
}

Value element_of(const aMatrix* m, std::ptrdiff_t k) {
  const double re = re_at(m, k);
  if (efi::is_nested_element(re)) return nested(re);
  return number_value(re, im_at(m, k));
}

namespace {

// A matrix of the elements at the places that `place(k)` gives.
template <class Place>
Value gathered(Machine& machine, const aMatrix* m, std::ptrdiff_t rows, std::ptrdiff_t cols,
               Place place) {
  MatrixBuilder result(rows, cols);
  bool holds_nested = false;
  for (std::ptrdiff_t j = 0, k = 0; j < cols; ++j)
    for (std::ptrdiff_t i = 0; i < rows; ++i, ++k) {
      const std::ptrdiff_t at = place(i, j);
      const double re = re_at(m, at);
      holds_nested = holds_nested || efi::is_nested_element(re);
      result.set(k, re, im_at(m, at));
    }
  aMatrix* const made = result.finish(machine.store);
  if (holds_nested) made->flags |= kHoldsNested;
  return object_value(made);
}

}  // namespace

Value part_of(Machine& machine, const aMatrix* m, const Block& block) {
  const Subscript& rows = block.rows;
  const Subscript& cols = block.cols;
  const std::ptrdiff_t ld = m->leading_dimension;
  if (block.is_element()) return element_of(m, cols.first * ld + rows.first);
  return gathered(machine, m, rows.count, cols.count,
                  [&, ld](std::ptrdiff_t i, std::ptrdiff_t j) { return cols[j] * ld + rows[i]; });
}

Value all_elements(Machine& machine, const aMatrix* m) {
  return gathered(machine, m, element_count(m), 1, [m](std::ptrdiff_t i, std::ptrdiff_t) {
    return i / m->rows * m->leading_dimension + i % m->rows;
  });
}

}  // namespace worksheet
