#include "eigen/inverse/scaled_lu.hpp"

#include <cmath>
#include <utility>

#include "pack/memory.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Stands in for a pivot that is zero.
constexpr double kTinyPivot = 1e-20;

// Unscaled: the elements are known to be in range.
double modulus(Complex z) {
  return std::sqrt(z.re * z.re + z.im * z.im);
}

// scale[i] = 1 / (the largest modulus in row i); false when that is zero.
bool scale_rows(int n, const ComplexView& a, double* scale) {
  for (int i = 0; i < n; ++i) scale[i] = 0.0;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      const double size = modulus(a(i, j));
      if (size > scale[i]) scale[i] = size;
    }
  }
  for (int i = 0; i < n; ++i) {
    if (scale[i] == 0.0) return false;
    scale[i] = 1.0 / scale[i];
  }
  return true;
}

// The row at or below j with the largest scaled element in column j; the last of equal ones.
int find_pivot(int n, const ComplexView& a, int j, const double* scale) {
  double largest = 0.0;
  int pivot = j;
  for (int i = j; i < n; ++i) {
    const double size = scale[i] * modulus(a(i, j));
    if (size >= largest) {
      largest = size;
      pivot = i;
    }
  }
  return pivot;
}

void exchange_rows(int n, const ComplexView& a, int i, int k) {
  for (double* part : {a.re, a.im})
    for (int j = 0; j < n; ++j) std::swap(part[j * a.ld + i], part[j * a.ld + k]);
}

// x[first..end-1] -= f a(first..end-1, j)
void subtract_column(const ComplexView& a, int j, int first, int end, Complex f,
                     const ComplexView& x) {
  complex_vector_kernels().subtract_multiple(end - first, f, a.from(first, j), x + first);
}

}  // namespace

Status factor_scaled(int n, const ComplexView& a, int* pivots) {
  const Doubles scale = new_doubles(n);
  if (!scale) return Status::no_memory;
  if (!scale_rows(n, a, scale.get())) return Status::singular;
  for (int j = 0; j < n; ++j) {
    const ComplexView x = a.column(j);
    for (int k = 0; k < j; ++k) subtract_column(a, k, k + 1, n, x[k], x);
    const int pivot = find_pivot(n, a, j, scale.get());
    if (pivot != j) {
      exchange_rows(n, a, pivot, j);
      scale[static_cast<std::size_t>(pivot)] = scale[static_cast<std::size_t>(j)];
    }
    pivots[j] = pivot;
    if (is_zero(x[j])) x.re[j] = kTinyPivot;
    const Complex diagonal = x[j];
    for (int i = j + 1; i < n; ++i) x.set(i, divide(x[i], diagonal));
  }
  return Status::done;
}

Status solve_factored(int n, const ComplexView& a, const int* pivots, const ComplexView& b) {
  for (int i = 0; i < n; ++i) {
    std::swap(b.re[i], b.re[pivots[i]]);
    std::swap(b.im[i], b.im[pivots[i]]);
  }
  for (int k = 0; k < n; ++k) subtract_column(a, k, k + 1, n, b[k], b);
  for (int k = n - 1; k >= 0; --k) {
    if (is_zero(a(k, k))) return Status::not_converging;
    const Complex x = divide(b[k], a(k, k));
    b.set(k, x);
    subtract_column(a, k, 0, k, x, b);
  }
  return Status::done;
}

}  // namespace matrix_pack
