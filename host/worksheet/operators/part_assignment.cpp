#include "host/worksheet/operators/part_assignment.hpp"

#include <algorithm>
#include <optional>

#include "fmt/format.h"
#include "host/units/unit.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/engine/matrices.hpp"

namespace worksheet {

namespace {

// Whether a vector stands for the block: column after column where that is everything.
bool takes_vector(const Block& block) {
  return block.is_everything || block.rows.count == 1 || block.cols.count == 1;
}

// Whether the elements of x are as many as the block's, and lie like them.
bool fits(const Block& block, const aMatrix* x) {
  if (x->rows == block.rows.count && x->cols == block.cols.count) return true;
  return takes_vector(block) && (x->rows == 1 || x->cols == 1) && element_count(x) == block.count();
}

// The factor that brings x to the unit of the variable, which may adopt that of x.
std::optional<double> unit_factor(Variable& variable, const Value& x) {
  Value& held = variable.value;
  if (x.unit == held.unit || needs_no_unit(x)) return 1.0;
  if (!needs_no_unit(held)) return common_conversion(x.unit, held.unit);
  held.unit = x.unit;
  return 1.0;
}

void need_imaginary_part(aMatrix* m) {
  if (m->im != nullptr) return;
  Part part(static_cast<double*>(::operator new(m->byte_size)));
  std::fill_n(part.get(), element_count(m), 0.0);
  m->im = part.release();
}

// f(k, l) for the place k in the matrix of each element of the block, the l-th in the order of
// columns.
template <class F>
void for_each(const Block& block, std::ptrdiff_t ld, F f) {
  for (std::ptrdiff_t j = 0, l = 0; j < block.cols.count; ++j)
    for (std::ptrdiff_t i = 0; i < block.rows.count; ++i, ++l)
      f(block.cols[j] * ld + block.rows[i], l);
}

void write_numbers(Variable& variable, aMatrix* m, const Block& block, const Value& x,
                   double factor) {
  const aMatrix* const from = is_matrix(x) ? matrix(x) : nullptr;
  const bool complex = from != nullptr ? from->im != nullptr : x.im != 0.0;
  if (complex) need_imaginary_part(m);
  for_each(block, m->rows, [&](std::ptrdiff_t k, std::ptrdiff_t l) {
    m->re[k] = (from != nullptr ? re_at(from, l) : x.re) * factor;
    if (m->im != nullptr) m->im[k] = (from != nullptr ? im_at(from, l) : x.im) * factor;
  });
  variable.may_be_real = m->im != nullptr;
}

// Nested values refer to others: the array is made anew.
Value assign_nested(Machine& machine, Variable& variable, const Block& block, const Value& x,
                    Span span) {
  if (x.unit != nullptr) return machine.fail(span, "the elements of a nested array have no units");
  const bool is_array = is_matrix(x) && !block.is_element();
  const double one = is_number(x) || is_array ? x.re : efi::nested_element(nested_copy(machine, x));
  const aMatrix* const old = matrix(variable.value);
  MatrixBuilder result(old->rows, old->cols);
  for (std::ptrdiff_t k = 0; k < element_count(old); ++k)
    result.set(k, re_at(old, k), im_at(old, k));
  for_each(block, old->rows, [&](std::ptrdiff_t k, std::ptrdiff_t l) {
    result.set(k, is_array ? re_at(matrix(x), l) : one,
               is_array       ? im_at(matrix(x), l)
               : is_number(x) ? x.im
                              : 0.0);
  });
  aMatrix* const made = result.finish(machine.store);
  made->flags |= kHoldsNested;
  machine.assign(variable, object_value(made));
  return x;
}

bool holds_numbers(const Value& v) {
  return is_number(v) || (is_matrix(v) && !contains_ptrs(matrix(v)));
}

}  // namespace

Value assign_block(Machine& machine, Variable& variable, const Block& block, const Value& x,
                   Span span) {
  const bool is_nested = variable.written == nullptr && !holds_numbers(variable.value);
  if (is_matrix(x) && !(is_nested && block.is_element()) && !fits(block, matrix(x))) {
    const Value number = as_number(x);
    if (is_number(number)) return assign_block(machine, variable, block, number, span);
    return machine.fail(span,
                        fmt::format("a {} x {} part does not take a {} matrix", block.rows.count,
                                    block.cols.count, shape_text(matrix(x))));
  }
  if (is_nested) return assign_nested(machine, variable, block, x, span);
  if (!holds_numbers(x))
    return machine.fail(span, fmt::format("{} holds numbers, not {}", variable.name,
                                          is_matrix(x) ? "nested arrays" : kind_name(x)));
  const Value from = x.object != nullptr && x.object == variable.value.object
                         ? object_value(plain_copy(machine, matrix(x)), x.unit)
                         : x;
  aMatrix* const m = machine.writable(variable);
  const auto factor = unit_factor(variable, x);
  if (!factor)
    return machine.fail(
        span,
        fmt::format("{} {}, not {}{}", variable.name,
                    variable.value.unit == nullptr ? "holds plain numbers"
                                                   : "is in " + unit_text(variable.value.unit),
                    unit_text(x.unit), conversion_hint(x.unit, variable.value.unit)));
  write_numbers(variable, m, block, from, *factor);
  return x;
}

}  // namespace worksheet
