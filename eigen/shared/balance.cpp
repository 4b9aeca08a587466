#include "eigen/shared/balance.hpp"

#include <cmath>
#include <limits>
#include <utility>

#include "eigen/shared/balance_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// A scaling must lower the norms at least this much to be worth its while.
constexpr double kWorthwhile = 0.95;

bool is_zero_at(const ComplexView& a, int i, int j) {
  const Index k = j * a.ld + i;
  return a.re[k] == 0.0 && (a.im == nullptr || a.im[k] == 0.0);
}

bool row_is_isolated(const ComplexView& a, int j, int high) {
  for (int i = 0; i <= high; ++i)
    if (i != j && !is_zero_at(a, j, i)) return false;
  return true;
}

bool column_is_isolated(const ComplexView& a, int j, int low, int high) {
  for (int i = low; i <= high; ++i)
    if (i != j && !is_zero_at(a, i, j)) return false;
  return true;
}

// Exchanges columns j and m over rows 0..high and rows j and m over columns low..n-1.
void exchange(const ComplexView& a, int j, int m, const Balance& b) {
  if (j == m) return;
  for (double* part : {a.re, a.im}) {
    if (part == nullptr) continue;
    for (int i = 0; i <= b.high; ++i) std::swap(part[j * a.ld + i], part[m * a.ld + i]);
    for (int i = b.low; i < b.n; ++i) std::swap(part[i * a.ld + j], part[i * a.ld + m]);
  }
}

// Moves isolated rows to the bottom; true when that ended at `stop_at`.
bool isolate_rows(const ComplexView& a, int stop_at, Balance& b) {
  for (int j = b.high; j >= 0;) {
    if (!row_is_isolated(a, j, b.high)) {
      --j;
      continue;
    }
    b.scale[b.high] = j;
    exchange(a, j, b.high, b);
    if (b.high == stop_at) return true;
    j = --b.high;
  }
  return false;
}

// Moves isolated columns to the left.
void isolate_columns(const ComplexView& a, Balance& b) {
  for (int j = b.low; j <= b.high;) {
    if (!column_is_isolated(a, j, b.low, b.high)) {
      ++j;
      continue;
    }
    b.scale[b.low] = j;
    exchange(a, j, b.low, b);
    j = ++b.low;
  }
}

// The power of two f for which c f^2 comes near r, and (c f^2 + r) / f. An infinite sum has no such
// power: the loops end on it, also where rounding down keeps c finite, and f changes nothing.
struct Scaling {
  double f;
  double sum;
};

Scaling choose_scaling(double c, double r) {
  constexpr double kLargest = std::numeric_limits<double>::max();
  double f = 1.0;
  double before = 0.0;
  for (double g = r / 2.0; c < g && c != before; c *= 4.0) {
    before = c;
    f *= 2.0;
  }
  for (double g = r * 2.0; c >= g && c <= kLargest; c /= 4.0) f /= 2.0;
  return {f, (c + r) / f};
}

void scale_row_and_column(const ComplexView& a, int j, double f, const Balance& b) {
  const double inverse = 1.0 / f;
  for (double* part : {a.re, a.im}) {
    if (part == nullptr) continue;
    for (int i = b.low; i < b.n; ++i) part[i * a.ld + j] *= inverse;
    vector_kernels().scale(b.high + 1, f, part + j * a.ld);
  }
}

// The sum of the off-diagonal magnitudes of column j in rows low..high (stride 1), or of row j in
// columns low..high (stride ld).
double off_diagonal_sum(const ComplexView& a, const Balance& b, int j, bool column) {
  const Index start = column ? j * a.ld + b.low : b.low * a.ld + j;
  return balance_kernels().sum_magnitudes(a.re + start, a.im == nullptr ? nullptr : a.im + start,
                                          column ? 1 : a.ld, b.high - b.low + 1, j - b.low);
}

bool scaling_pass(const ComplexView& a, Balance& b) {
  bool changed = false;
  for (int j = b.low; j <= b.high; ++j) {
    const double c = off_diagonal_sum(a, b, j, true);
    const double r = off_diagonal_sum(a, b, j, false);
    if (c == 0.0 || r == 0.0) continue;
    const Scaling scaling = choose_scaling(c, r);
    if (!(scaling.sum < kWorthwhile * (c + r))) continue;
    b.scale[j] *= scaling.f;
    changed = true;
    scale_row_and_column(a, j, scaling.f, b);
  }
  return changed;
}

}  // namespace

Balance balance(int n, const ComplexView& a, int stop_at, double* scale) {
  Balance b = {n, 0, n - 1, 0, scale};
  if (isolate_rows(a, stop_at, b)) {
    // Row high, though it stays among low..high, was exchanged: its entry is no factor.
    b.scaled_end = b.high;
    for (int j = b.low; j < b.scaled_end; ++j) scale[j] = 1.0;
    return b;
  }
  isolate_columns(a, b);
  b.scaled_end = b.high + 1;
  for (int j = b.low; j < b.scaled_end; ++j) scale[j] = 1.0;
  // Ends: powers of two scale exactly, and every scaling lowers the sum of all magnitudes. (Among
  // subnormal numbers a scaling may round, but each rounding leaves one bit less to round.)
  while (scaling_pass(a, b)) {
  }
  return b;
}

void undo_balance(const Balance& b, const ComplexView& v) {
  for (double* part : {v.re, v.im}) {
    if (part == nullptr) continue;
    auto exchange_rows = [&](int i) {
      const int k = static_cast<int>(b.scale[i]);
      if (k == i) return;
      for (int j = 0; j < b.n; ++j) std::swap(part[j * v.ld + i], part[j * v.ld + k]);
    };
    for (int j = 0; j < b.n; ++j)
      for (int i = b.low; i < b.scaled_end; ++i) part[j * v.ld + i] *= b.scale[i];
    for (int i = b.low - 1; i >= 0; --i) exchange_rows(i);
    for (int i = b.scaled_end; i < b.n; ++i) exchange_rows(i);
  }
}

}  // namespace matrix_pack
