// augment and stack: two arrays side by side, or one above the other.
#include <algorithm>
#include <cstdint>

#include "pack/checks.hpp"
#include "pack/elements.hpp"
#include "pack/frame/evaluator_frame.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

// Copies one part of A to the block of `target` (leading dimension ld) that starts at `target`;
// an absent part is zero.
void copy_block(const aMatrix* a, const double* part, double* target, std::int64_t ld) {
  if (a->rows == 0) return;  // Of which there may be very many columns.
  for (int j = 0; j < a->cols; ++j) {
    double* column = target + j * ld;
    if (part == nullptr)
      std::fill_n(column, a->rows, 0.0);
    else
      std::copy_n(part + element_index(a->leading_dimension, 0, j), a->rows, column);
  }
}

// The rows x cols matrix with A at its start and B's block `offset` elements behind it. The result
// has an imaginary array when one of the two has.
Anyval* join(EfiCallContext* context, const aMatrix* a, const aMatrix* b, std::int64_t rows,
             std::int64_t cols, std::int64_t offset) {
  if (!has_extents(a)) return argument_error(context, 1, kInvalidDimension);
  if (!has_extents(b)) return argument_error(context, 2, kInvalidDimension);
  Doubles re = new_part(rows, cols);
  if (!re) return sError_OutOfMemory;
  copy_block(a, a->re, re.get(), rows);
  copy_block(b, b->re, re.get() + offset, rows);
  Doubles im;
  if (is_complex(a) || is_complex(b)) {
    im = new_part(rows, cols);
    if (!im) return sError_OutOfMemory;
    copy_block(a, a->im, im.get(), rows);
    copy_block(b, b->im, im.get() + offset, rows);
  }
  return matrix_result(new_matrix(context, static_cast<int>(rows), static_cast<int>(cols),
                                  std::move(re), std::move(im)));
}

Anyval* augment_worker(EfiCallContext* context, aMatrix* a, aMatrix* b) {
  const ArgumentFrame frame(context, b);
  if (a->rows != b->rows) return argument_error(context, 2, kSizeMismatch);
  return join(context, a, b, a->rows, std::int64_t{a->cols} + b->cols,
              std::int64_t{a->rows} * a->cols);
}

Anyval* stack_worker(EfiCallContext* context, aMatrix* a, aMatrix* b) {
  const ArgumentFrame frame(context, b);
  if (a->cols != b->cols) return argument_error(context, 2, kSizeMismatch);
  return join(context, a, b, std::int64_t{a->rows} + b->rows, a->cols, a->rows);
}

// Both arguments are arrays before any shape is looked at.
Anyval* join_arrays(EfiCallContext* context, Anyval* a, Anyval* b,
                    Anyval* (*worker)(EfiCallContext*, aMatrix*, aMatrix*)) {
  return contained(context, [=] {
    if (!is_matrix(a)) return argument_error(context, 1, kMustBeArray);
    if (!is_matrix(b)) return argument_error(context, 2, kMustBeArray);
    return worker(context, as_matrix(a), as_matrix(b));
  });
}

}  // namespace

Anyval* augment(EfiCallContext* context, Anyval* a, Anyval* b) {
  return join_arrays(context, a, b, augment_worker);
}

Anyval* stack(EfiCallContext* context, Anyval* a, Anyval* b) {
  return join_arrays(context, a, b, stack_worker);
}

}  // namespace matrix_pack
