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

// --- Real vectors. x[0..i] holds the right-hand side, negated, for the components not yet known;
// x[i+1..en] the components. ---

// Component i is known: its part goes to the right-hand sides above row `above`.
void settle(const Problem& t, int en, int i, int above, double* x) {
  if (std::fabs(x[i]) > kGrown) vector_kernels().scale(en + 1, kShrink, x);
  vector_kernels().axpy(above, x[i], t.h.column(i), x);
}

// Components i and i+1, of the rows of a 2x2 block.
void solve_block(const Problem& t, double p, int i, double* x) {
  const double w = t.h(i, i) - p;
  const double zz = t.h(i + 1, i + 1) - p;
  const double b = t.h(i, i + 1);
  const double c = t.h(i + 1, i);
  const double r = x[i];
  const double s = x[i + 1];
  const double q = (t.wr[i] - p) * (t.wr[i] - p) + t.wi[i] * t.wi[i];
  x[i] = (b * s - zz * r) / q;
  x[i + 1] = std::fabs(b) > std::fabs(zz) ? (-r - w * x[i]) / b : (-s - c * x[i]) / zz;
}

void real_vector(const Problem& t, int en) {
  double* const x = t.h.column(en);
  const double p = t.wr[en];
  x[en] = 1.0;
  for (int i = en - 1; i >= 0; --i) {
    if (ends_pair(t, i)) {
      --i;
      solve_block(t, p, i, x);
      settle(t, en, i + 1, i, x);
    } else {
      const double w = t.h(i, i) - p;
      x[i] = -x[i] / (w == 0.0 ? t.tiny : w);
    }
    settle(t, en, i, i, x);
  }
}

// --- Complex vectors, in two columns. ---

Complex negative(Complex z) {
  return {-z.re, -z.im};
}

Complex scaled(double a, Complex z) {
  return {a * z.re, a * z.im};
}

void settle(const Problem& t, int en, int i, int above, const ComplexView& x) {
  if (std::fabs(x.re[i]) > kGrown || std::fabs(x.im[i]) > kGrown) {
    vector_kernels().scale(en + 1, kShrink, x.re);
    vector_kernels().scale(en + 1, kShrink, x.im);
  }
  vector_kernels().axpy(above, x.re[i], t.h.column(i), x.re);
  vector_kernels().axpy(above, x.im[i], t.h.column(i), x.im);
}

// Components i and i+1, of the rows of a 2x2 block, for the eigenvalue p + iq.
void solve_block(const Problem& t, double p, double q, int i, const ComplexView& x) {
  const Complex w = {t.h(i, i) - p, -q};
  const Complex zz = {t.h(i + 1, i + 1) - p, -q};
  const double b = t.h(i, i + 1);
  const double c = t.h(i + 1, i);
  const Complex r = x[i];
  const Complex s = x[i + 1];
  // The block's determinant, from its eigenvalues.
  const double distance = t.wr[i] - p;
  Complex det = {distance * distance + t.wi[i] * t.wi[i] - q * q, -2.0 * distance * q};
  if (is_zero(det))
    det.re =
        t.tiny * (std::fabs(w.re) + std::fabs(q) + std::fabs(b) + std::fabs(c) + std::fabs(zz.re));
  const Complex xi = divide(subtract(scaled(b, s), multiply(zz, r)), det);
  x.set(i, xi);
  if (std::fabs(b) > std::fabs(zz.re) + std::fabs(q)) {
    const Complex rest = negative(add(r, multiply(w, xi)));
    x.set(i + 1, {rest.re / b, rest.im / b});
  } else {
    x.set(i + 1, divide(negative(add(s, scaled(c, xi))), zz));
  }
}

// The components of the vector's own block, rows en-1 and en: the last is i, which no rounding
// touches.
void start_complex_vector(const Problem& t, double p, double q, int en, const ComplexView& x) {
  const int na = en - 1;
  const double b = t.h(na, en);
  const double c = t.h(en, na);
  const Complex first = std::fabs(c) > std::fabs(b)
                            ? Complex{-q / c, -(t.h(en, en) - p) / c}
                            : divide(Complex{0.0, -b}, Complex{t.h(na, na) - p, -q});
  vector_kernels().axpy(na, first.im, x.re, x.im);
  vector_kernels().scale(na, first.re, x.re);
  x.set(na, first);
  x.set(en, {0.0, 1.0});
}

void complex_vector(const Problem& t, int en) {
  const ComplexView x = {t.h.column(en - 1), t.h.column(en)};
  const double p = t.wr[en - 1];
  const double q = t.wi[en - 1];
  start_complex_vector(t, p, q, en, x);
  for (int i = en - 2; i >= 0; --i) {
    if (ends_pair(t, i)) {
      --i;
      solve_block(t, p, q, i, x);
      settle(t, en, i + 1, i, x);
    } else {
      x.set(i, divide(negative(x[i]), {t.h(i, i) - p, -q}));
    }
    settle(t, en, i, i, x);
  }
}

}  // namespace

void quasi_triangular_vectors(int n, RealView h, const double* wr, const double* wi, double tiny,
                              Index* last) {
  const Problem t = {h, wr, wi, tiny};
  for (int en = n - 1; en >= 0; --en) {
    last[en] = en;
    if (ends_pair(t, en)) {
      complex_vector(t, en);
      last[en - 1] = en;
      --en;
    } else {
      real_vector(t, en);
    }
  }
}

}  // namespace matrix_pack
