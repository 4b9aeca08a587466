#include "eigen/general/quasi_triangular_vectors.hpp"

#include <cmath>

#include "eigen/shared/scale_columns.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// The quasi-triangular matrix and its eigenvalues.
struct Problem {
  RealView h;
  const double* wr;
  const double* wi;
  double tiny;
};

bool ends_pair(const Problem& t, int i) {
  return t.wi[i] < 0.0;
}

// A vector x ends with row `last`. While it is computed, x[i+1..last] holds the components that are
// known, and x[0..i] what they add up to in the rows above: the right-hand sides, negated.
//
// Rows i and i + 1 may form a block [a b; c d], less the eigenvalue on its diagonal.

// --- Real vectors ---

// Component i is known: its part goes to the right-hand sides above row `above`.
void settle(const Problem& t, int last, int i, int above, double* x) {
  if (std::fabs(x[i]) > kGrown) vector_kernels().scale(last + 1, kShrink, x);
  vector_kernels().axpy(above, x[i], t.h.column(i), x);
}

// Components i and i+1 from the rows of a block: the upper one by Cramer's rule with the
// determinant from the block's eigenvalues, the lower one from the row with the larger coefficient.
void solve_block(const Problem& t, double value, int i, double* x) {
  const double a = t.h(i, i) - value;
  const double d = t.h(i + 1, i + 1) - value;
  const double b = t.h(i, i + 1);
  const double c = t.h(i + 1, i);
  const double upper = x[i];
  const double lower = x[i + 1];
  const double distance = t.wr[i] - value;
  const double determinant = distance * distance + t.wi[i] * t.wi[i];
  x[i] = (b * lower - d * upper) / determinant;
  x[i + 1] = std::fabs(b) > std::fabs(d) ? (-upper - a * x[i]) / b : (-lower - c * x[i]) / d;
}

void real_vector(const Problem& t, int last) {
  double* const x = t.h.column(last);
  const double value = t.wr[last];
  x[last] = 1.0;
  for (int i = last - 1; i >= 0; --i) {
    if (ends_pair(t, i)) {
      --i;
      solve_block(t, value, i, x);
      settle(t, last, i + 1, i, x);
    } else {
      const double divisor = t.h(i, i) - value;
      x[i] = -x[i] / (divisor == 0.0 ? t.tiny : divisor);
    }
    settle(t, last, i, i, x);
  }
}

// --- Complex vectors, in two columns ---

Complex negative(Complex z) {
  return {-z.re, -z.im};
}

Complex scaled(double a, Complex z) {
  return {a * z.re, a * z.im};
}

void settle(const Problem& t, int last, int i, int above, const ComplexView& x) {
  if (std::fabs(x.re[i]) > kGrown || std::fabs(x.im[i]) > kGrown) {
    vector_kernels().scale(last + 1, kShrink, x.re);
    vector_kernels().scale(last + 1, kShrink, x.im);
  }
  vector_kernels().axpy(above, x.re[i], t.h.column(i), x.re);
  vector_kernels().axpy(above, x.im[i], t.h.column(i), x.im);
}

void solve_block(const Problem& t, Complex value, int i, const ComplexView& x) {
  const Complex a = {t.h(i, i) - value.re, -value.im};
  const Complex d = {t.h(i + 1, i + 1) - value.re, -value.im};
  const double b = t.h(i, i + 1);
  const double c = t.h(i + 1, i);
  const Complex upper = x[i];
  const Complex lower = x[i + 1];
  const double distance = t.wr[i] - value.re;
  Complex determinant = {distance * distance + t.wi[i] * t.wi[i] - value.im * value.im,
                         -2.0 * distance * value.im};
  if (is_zero(determinant))
    determinant.re = t.tiny * (std::fabs(a.re) + std::fabs(value.im) + std::fabs(b) + std::fabs(c) +
                               std::fabs(d.re));
  const Complex from_lower = scaled(b, lower);
  const Complex xi = divide(subtract(from_lower, multiply(d, upper)), determinant);
  x.set(i, xi);
  if (std::fabs(b) > std::fabs(d.re) + std::fabs(value.im)) {
    const Complex rest = negative(add(upper, multiply(a, xi)));
    x.set(i + 1, {rest.re / b, rest.im / b});
  } else {
    x.set(i + 1, divide(negative(add(lower, scaled(c, xi))), d));
  }
}

// The components of the vector's own block: the lower one is i, so that no rounding touches it.
void start_complex_vector(const Problem& t, Complex value, int last, const ComplexView& x) {
  const int upper = last - 1;
  const double b = t.h(upper, last);
  const double c = t.h(last, upper);
  const Complex first = std::fabs(c) > std::fabs(b)
                            ? Complex{-value.im / c, -(t.h(last, last) - value.re) / c}
                            : divide({0.0, -b}, {t.h(upper, upper) - value.re, -value.im});
  vector_kernels().axpy(upper, first.im, x.re, x.im);
  vector_kernels().scale(upper, first.re, x.re);
  x.set(upper, first);
  x.set(last, {0.0, 1.0});
}

void complex_vector(const Problem& t, int last) {
  const ComplexView x = {t.h.column(last - 1), t.h.column(last)};
  const Complex value = {t.wr[last - 1], t.wi[last - 1]};
  start_complex_vector(t, value, last, x);
  for (int i = last - 2; i >= 0; --i) {
    if (ends_pair(t, i)) {
      --i;
      solve_block(t, value, i, x);
      settle(t, last, i + 1, i, x);
    } else {
      x.set(i, divide(negative(x[i]), {t.h(i, i) - value.re, -value.im}));
    }
    settle(t, last, i, i, x);
  }
}

}  // namespace

void quasi_triangular_vectors(int n, RealView h, const double* wr, const double* wi, double tiny,
                              Index* last) {
  const Problem t = {h, wr, wi, tiny};
  for (int j = n - 1; j >= 0; --j) {
    last[j] = j;
    if (ends_pair(t, j)) {
      complex_vector(t, j);
      last[j - 1] = j;
      --j;
    } else {
      real_vector(t, j);
    }
  }
}

}  // namespace matrix_pack
