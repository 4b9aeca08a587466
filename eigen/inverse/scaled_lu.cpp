#include "eigen/inverse/scaled_lu.hpp"

#include <cmath>
#include <utility>

#include "pack/memory.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Stands in for a pivot that is zero.
constexpr double kTinyPivot = 1e-20;

double modulus(const Parts& a, int i, int j) {
  const std::ptrdiff_t k = j * a.ld + i;
  return std::sqrt(a.re[k] * a.re[k] + a.im[k] * a.im[k]);
}

// scale[i] = 1 / (the largest modulus in row i); false when that is zero.
bool scale_rows(const Parts& a, double* scale) {
  for (int i = 0; i < a.n; ++i) scale[i] = 0.0;
  for (int j = 0; j < a.n; ++j) {
    for (int i = 0; i < a.n; ++i) {
      const double size = modulus(a, i, j);
      if (size > scale[i]) scale[i] = size;
    }
  }
  for (int i = 0; i < a.n; ++i) {
    if (scale[i] == 0.0) return false;
    scale[i] = 1.0 / scale[i];
  }
  return true;
}

// The row at or below j with the largest scaled element in column j; the last of equal ones.
int find_pivot(const Parts& a, int j, const double* scale) {
  double largest = 0.0;
  int pivot = j;
  for (int i = j; i < a.n; ++i) {
    const double size = scale[i] * modulus(a, i, j);
    if (size >= largest) {
      largest = size;
      pivot = i;
    }
  }
  return pivot;
}

void exchange_rows(const Parts& a, int i, int k) {
  for (double* part : {a.re, a.im})
    for (int j = 0; j < a.n; ++j) std::swap(part[j * a.ld + i], part[j * a.ld + k]);
}

// x[first..n-1] -= f a(first..n-1, j)
void subtract_column(const Parts& a, int j, int first, int end, Complex f, double* re, double* im) {
  const std::ptrdiff_t at = j * a.ld + first;
  complex_vector_kernels().subtract_multiple(end - first, f, a.re + at, a.im + at, re + first,
                                             im + first);
}

}  // namespace

Status factor_scaled(const Parts& a, int* pivots) {
  const Doubles scale = new_doubles(a.n);
  if (!scale) return Status::no_memory;
  if (!scale_rows(a, scale.get())) return Status::singular;
  for (int j = 0; j < a.n; ++j) {
    double* const re = a.re + j * a.ld;
    double* const im = a.im + j * a.ld;
    for (int k = 0; k < j; ++k) subtract_column(a, k, k + 1, a.n, {re[k], im[k]}, re, im);
    const int pivot = find_pivot(a, j, scale.get());
    if (pivot != j) {
      exchange_rows(a, pivot, j);
      scale[static_cast<std::size_t>(pivot)] = scale[static_cast<std::size_t>(j)];
    }
    pivots[j] = pivot;
    if (re[j] == 0.0 && im[j] == 0.0) re[j] = kTinyPivot;
    const Complex diagonal = {re[j], im[j]};
    for (int i = j + 1; i < a.n; ++i) {
      const Complex l = divide({re[i], im[i]}, diagonal);
      re[i] = l.re;
      im[i] = l.im;
    }
  }
  return Status::done;
}

Status solve_factored(const Parts& a, const int* pivots, double* re, double* im) {
  for (int i = 0; i < a.n; ++i) {
    std::swap(re[i], re[pivots[i]]);
    std::swap(im[i], im[pivots[i]]);
  }
  for (int k = 0; k < a.n; ++k) subtract_column(a, k, k + 1, a.n, {re[k], im[k]}, re, im);
  for (int k = a.n - 1; k >= 0; --k) {
    const Complex diagonal = {a.re[k * a.ld + k], a.im[k * a.ld + k]};
    if (is_zero(diagonal)) return Status::not_converging;
    const Complex x = divide({re[k], im[k]}, diagonal);
    re[k] = x.re;
    im[k] = x.im;
    subtract_column(a, k, 0, k, x, re, im);
  }
  return Status::done;
}

}  // namespace matrix_pack
