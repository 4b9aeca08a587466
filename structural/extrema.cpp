// max and min: the extreme real part and, apart from it, the extreme imaginary part.
//
// Elements are taken row by row. max replaces its candidate unless it is at least the element: a
// NaN is always taken, and always displaced by the next element. min replaces its candidate only
// when it is greater than the element: a NaN is never taken, and a NaN candidate stays.
//
// To run down columns, a block of rows is folded at once, each row to its own candidate; the rows
// are then joined in order. The outcome is that of the plain loop, the sign of a zero included.
#include <algorithm>
#include <cmath>
#include <limits>

#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"
#include "structural/structural.hpp"

namespace matrix_pack {

namespace {

constexpr int kBlockRows = 128;

struct RowMaxima {
  double value[kBlockRows];
  bool has_nan[kBlockRows];

  void start(int count, const double* first_column) {
    std::copy_n(first_column, count, value);
    for (int i = 0; i < count; ++i) has_nan[i] = std::isnan(first_column[i]);
  }
  void fold(int count, const double* column) {
    for (int i = 0; i < count; ++i) {
      if (!(value[i] >= column[i])) value[i] = column[i];
      has_nan[i] |= std::isnan(column[i]);
    }
  }
  // What is left of a candidate that has met row i: nothing, when the row had a NaN.
  double join(double candidate, int i) const {
    return !has_nan[i] && candidate >= value[i] ? candidate : value[i];
  }
};

struct RowMinima {
  double value[kBlockRows];

  void start(int count, const double* first_column) {
    // A row of NaNs leaves infinity, which displaces nothing.
    std::fill_n(value, count, std::numeric_limits<double>::infinity());
    fold(count, first_column);
  }
  void fold(int count, const double* column) {
    for (int i = 0; i < count; ++i)
      if (value[i] > column[i]) value[i] = column[i];
  }
  double join(double candidate, int i) const { return candidate > value[i] ? value[i] : candidate; }
};

template <class RowExtrema>
double extreme_part(const aMatrix* a, const double* part) {
  if (part == nullptr || a->rows < 1 || a->cols < 1) return 0.0;
  double candidate = part[0];
  RowExtrema block;
  for (int first = 0; first < a->rows; first += kBlockRows) {
    const int count = std::min(kBlockRows, a->rows - first);
    block.start(count, part + first);
    for (int j = 1; j < a->cols; ++j)
      block.fold(count, part + element_index(a->leading_dimension, first, j));
    for (int i = 0; i < count; ++i) candidate = block.join(candidate, i);
  }
  return candidate;
}

template <class RowExtrema>
Anyval* extreme(EfiCallContext* context, Anyval* v) {
  if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
  aMatrix* a = as_matrix(v);
  if (contains_ptrs(a)) return argument_error(context, 1, kMayNotBeNested);
  return scalar_result(context, extreme_part<RowExtrema>(a, a->re),
                       extreme_part<RowExtrema>(a, a->im));
}

}  // namespace

Anyval* max(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] { return extreme<RowMaxima>(context, a); });
}

Anyval* min(EfiCallContext* context, Anyval* a) {
  return contained(context, [=] { return extreme<RowMinima>(context, a); });
}

}  // namespace matrix_pack
