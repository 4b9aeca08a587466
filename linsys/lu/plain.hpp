// LU factorization and substitution in plain form: the definition of what the cores compute. The
// tests compare with it bit for bit, and where the fast path fails, it tells the failure.
#pragma once

#include <cmath>
#include <utility>

#include "pack/messages.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

// An n x n array of real or complex numbers, element by element: (i, j) stands at i down + j
// across.
struct RealArray {
  static constexpr double kEpsilon = kEps;
  static constexpr bool kLastOfEqualsWins = true;
  Index n = 0;
  double* a;
  Index across = n;
  Index down = 1;
  double get(Index i, Index j) const { return a[i * down + j * across]; }
  void set(Index i, Index j, double x) const { a[i * down + j * across] = x; }
};

struct ComplexArray {
  static constexpr double kEpsilon = kEps * kEps;
  static constexpr bool kLastOfEqualsWins = false;
  Index n = 0;
  ComplexView a;
  Index across = n;
  Index down = 1;
  Complex get(Index i, Index j) const { return a[i * down + j * across]; }
  void set(Index i, Index j, Complex x) const { a.set(i * down + j * across, x); }
};

inline double modulus(double x) {
  return std::fabs(x);
}
inline double modulus(Complex z) {
  return cmodulus(z);
}
inline double minus_product(double s, double x, double y) {
  return s - x * y;
}
inline Complex minus_product(Complex s, Complex x, Complex y) {
  return subtract(s, multiply(x, y));
}
inline double quotient(double x, double y) {
  return x / y;
}
inline Complex quotient(Complex x, Complex y) {
  return divide(x, y);
}
inline bool nonzero(double x) {
  return x != 0.0;
}
inline bool nonzero(Complex z) {
  return z.re != 0.0 || z.im != 0.0;
}

// Whether row i, whose largest modulus is `big`, is zero. That of a complex number that is not zero
// may be: its squares underflow.
inline bool row_is_zero(const RealArray&, Index, double big) {
  return big == 0.0;
}
inline bool row_is_zero(const ComplexArray& a, Index i, double big) {
  bool zero = big == 0.0;
  for (Index j = 0; zero && j < a.n; ++j) zero = !nonzero(a.get(i, j));
  return zero;
}

// Pivots are counted from 0. Null or "singular matrix".
template <class Array>
const char* decompose(Array a, double* scale, double* pivots, bool relative_test) {
  const Index n = a.n;
  for (Index i = 0; i < n; ++i) {
    double big = 0.0;
    for (Index j = 0; j < n; ++j)
      if (modulus(a.get(i, j)) > big) big = modulus(a.get(i, j));
    if (row_is_zero(a, i, big)) return kSingularMatrix;
    scale[i] = 1.0 / big;
  }
  double growth = 0.0;
  for (Index k = 0; k < n; ++k) {
    Index m = k;
    double best = Array::kLastOfEqualsWins ? modulus(a.get(k, k)) * scale[k] : -1.0;
    for (Index i = k; i < n; ++i) {
      const double t = modulus(a.get(i, k)) * scale[i];
      if (Array::kLastOfEqualsWins ? t >= best : t > best) {
        best = t;
        m = i;
      }
    }
    if (m != k) {
      for (Index j = 0; j < n; ++j) {
        const auto t = a.get(m, j);
        a.set(m, j, a.get(k, j));
        a.set(k, j, t);
      }
      scale[m] = scale[k];
    }
    pivots[k] = static_cast<double>(m);
    if (!nonzero(a.get(k, k))) return kSingularMatrix;
    if (k > 0)
      for (Index j = k - 1; j < n; ++j)
        if (modulus(a.get(k - 1, j)) * scale[k - 1] > growth)
          growth = modulus(a.get(k - 1, j)) * scale[k - 1];
    for (Index d = 0; relative_test && d <= k; ++d)
      if (modulus(a.get(d, d)) < growth * Array::kEpsilon) return kSingularMatrix;
    scale[k] = 1.0;
    for (Index i = k + 1; i < n; ++i) {
      const auto l = quotient(a.get(i, k), a.get(k, k));
      a.set(i, k, l);
      if (modulus(l) > scale[k]) scale[k] = modulus(l);
      for (Index j = k + 1; j < n; ++j) a.set(i, j, minus_product(a.get(i, j), a.get(k, j), l));
    }
  }
  return nullptr;
}

// b := (L U)^-1 P b, one row after the other; b is an array of n rows, of which this is column 0.
template <class Array>
void substitute(Array lu, const double* pivots, Array b) {
  const Index n = lu.n;
  Index first = -1;
  for (Index i = 0; i < n; ++i) {
    const auto p = static_cast<Index>(pivots[i]);
    auto s = b.get(p, 0);
    b.set(p, 0, b.get(i, 0));
    if (first >= 0) {
      for (Index j = first; j < i; ++j) s = minus_product(s, lu.get(i, j), b.get(j, 0));
    } else if (nonzero(s)) {
      first = i;
    }
    b.set(i, 0, s);
  }
  for (Index i = n - 1; i >= 0; --i) {
    auto s = b.get(i, 0);
    for (Index j = i + 1; j < n; ++j) s = minus_product(s, lu.get(i, j), b.get(j, 0));
    b.set(i, 0, quotient(s, lu.get(i, i)));
  }
}

}  // namespace matrix_pack::plain
