// submatrix: a block of an array between two rows and two columns, counted from ORIGIN.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

constexpr double kLargestBound = 2147483647.0;

// Rows r1 to r2 and columns c1 to c2, inclusive, counted from 0. Each pair may descend.
struct Bounds {
  double r1, r2, c1, c2;
};

// The nested value that an element's bit pattern stands for; null for a number.
Anyval* nested_value(double element) {
  std::uint64_t pattern;
  std::memcpy(&pattern, &element, sizeof pattern);
  if (pattern >> 32 != kNestedMark) return nullptr;
  return reinterpret_cast<Anyval*>(static_cast<std::uintptr_t>(pattern & 0xFFFFFFFFu));
}

// Null, or what is wrong with a bound on an axis of `size` elements counted from `origin`.
const char* bound_message(const aComplex* bound, int size, double origin) {
  if (bound->im != 0.0) return kMustBeReal;
  if (bound->re > kLargestBound) return "integer too large";
  const double k = std::trunc(bound->re);
  // Also false when k or the origin is a NaN.
  return k >= origin && k < size + origin ? nullptr : kInvalidDimension;
}

// The 1 x 1 result for a nested element: a nested scalar's number, or the nested value itself.
Anyval* single_nested(EfiCallContext* context, double element, Anyval* nested) {
  Doubles re = new_zero_part(1, 1);
  if (!re) return sError_OutOfMemory;
  aMatrix* result = new_matrix(context, 1, 1, std::move(re));
  if (result == nullptr) return sError_OutOfMemory;
  if (is_scalar(nested)) {
    set_elem(result, 0, 0, as_scalar(nested)->re, as_scalar(nested)->im);
    return result;
  }
  set_flag(result, kHoldsNested, true);
  if (is_matrix(nested)) set_flag(as_matrix(nested), kIsNestedValue, true);
  set_elem(result, 0, 0, element, 0.0);
  return result;
}

// One part of the block; the rows run from r1 in steps of row_step, the columns likewise.
void copy_block(const double* part, int ld, int rows, int cols, int r1, int row_step, int c1,
                int col_step, double* block) {
  for (int j = 0; j < cols; ++j) {
    const double* column = part + element_index(ld, 0, c1 + j * col_step);
    double* target = block + element_index(rows, 0, j);
    for (int i = 0; i < rows; ++i) target[i] = column[r1 + i * row_step];
  }
}

Anyval* extract(EfiCallContext* context, const aMatrix* a, const Bounds& bounds) {
  // The bounds have been tested against ORIGIN; these tests see them counted from 0. The bounds
  // that the messages do not speak of can only fail with an ORIGIN that is no integer.
  const auto [r1, r2, c1, c2] = bounds;
  if (r1 < 0 || c1 < 0 || r2 < 0 || c2 < 0) return call_error(context, "invalid index");
  if (r2 >= a->rows || c2 >= a->cols || r1 >= a->rows || c1 >= a->cols)
    return call_error(context, "upper index out of bounds");

  const int rows = static_cast<int>(std::fabs(r2 - r1)) + 1;
  const int cols = static_cast<int>(std::fabs(c2 - c1)) + 1;
  const int first_row = static_cast<int>(r1);
  const int first_col = static_cast<int>(c1);
  const int row_step = r1 > r2 ? -1 : 1;
  const int col_step = c1 > c2 ? -1 : 1;
  const auto part_of_block = [&](const double* part) {
    Doubles block = new_part(rows, cols);
    if (block)
      copy_block(part, a->leading_dimension, rows, cols, first_row, row_step, first_col, col_step,
                 block.get());
    return block;
  };
  Doubles re;
  if (a->re != nullptr && !(re = part_of_block(a->re))) return sError_OutOfMemory;
  Doubles im;
  if (a->im != nullptr && !(im = part_of_block(a->im))) return sError_OutOfMemory;
  // Null when the host has no record for it: kept, hosts rely on it.
  return new_matrix(context, rows, cols, std::move(re), std::move(im));
}

Anyval* submatrix_worker(EfiCallContext* context, const aMatrix* a, const aComplex* ir,
                         const aComplex* jr, const aComplex* ic, const aComplex* jc,
                         double origin) {
  const aComplex* const bounds[] = {ir, jr, ic, jc};
  for (int k = 0; k < 4; ++k)
    if (const char* message = bound_message(bounds[k], k < 2 ? a->rows : a->cols, origin))
      return argument_error(context, k + 2, message);

  // A single element is looked up without subtracting ORIGIN: kept, hosts rely on it. Where the
  // position so counted lies beside the matrix there is no element, and none is nested.
  if (ir->re == jr->re && ic->re == jc->re) {
    const double i = std::trunc(ir->re);
    const double j = std::trunc(ic->re);
    if (i >= 0 && i < a->rows && j >= 0 && j < a->cols) {
      const double element = elem_re(a, static_cast<int>(i), static_cast<int>(j));
      if (Anyval* nested = nested_value(element)) return single_nested(context, element, nested);
    }
  }
  return extract(context, a,
                 {std::trunc(ir->re - origin), std::trunc(jr->re - origin),
                  std::trunc(ic->re - origin), std::trunc(jc->re - origin)});
}

}  // namespace

Anyval* submatrix(EfiCallContext* context, Anyval* a, Anyval* ir, Anyval* jr, Anyval* ic,
                  Anyval* jc, Anyval* origin) {
  if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
  Anyval* const bounds[] = {ir, jr, ic, jc};
  for (int k = 0; k < 4; ++k)
    if (!is_scalar(bounds[k])) return argument_error(context, k + 2, kNonScalar);
  return guarded(context, [=] {
    return submatrix_worker(context, as_matrix(a), as_scalar(ir), as_scalar(jr), as_scalar(ic),
                            as_scalar(jc), context_value(origin));
  });
}

}  // namespace matrix_pack
