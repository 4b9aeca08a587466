// The symmetric eigenproblem in plain loops, every step applied at once: the definition of what the
// reduction and the rotations compute, to the bit.
#pragma once

#include <cmath>

#include "eigen/shared/plain.hpp"

namespace matrix_pack::plain {

// The product of row j of the symmetric matrix whose lower triangle is A, of order l+1, with v: the
// terms of the lower triangle in ascending order, plus those of the upper one in eight partial sums
// by k mod 8.
inline double symmetric_product(const Square& A, int j, int l, const Row& v) {
  double g = 0.0;
  for (int k = 0; k <= j; ++k) g += A(j, k) * v[k];
  double s[8] = {};
  for (int k = j + 1; k <= l; ++k) s[k % 8] += A(k, j) * v[k];
  return g + (((s[0] + s[4]) + (s[2] + s[6])) + ((s[1] + s[5]) + (s[3] + s[7])));
}

// The reflection for row i and its rank-two update. Returns h, 0 when there is none.
inline double reduce_row(Square& A, int i, Row& e, bool keep) {
  const int l = i - 1;
  const double scale = l > 0 ? sum(i, [&](auto k) { return std::fabs(A(i, int(k))); }) : 0.0;
  e[i] = A(i, l);
  if (scale == 0.0) return 0.0;
  for (int k = 0; k <= l; ++k) A(i, k) /= scale;
  double h = sum(i, [&](auto k) { return A(i, int(k)) * A(i, int(k)); });
  double f = A(i, l);
  double g = f >= 0.0 ? -std::sqrt(h) : std::sqrt(h);
  e[i] = scale * g;
  h -= f * g;
  A(i, l) = f - g;
  Row v(l + 1);
  for (int k = 0; k <= l; ++k) v[k] = A(i, k);
  f = 0.0;
  for (int j = 0; j <= l; ++j) {
    if (keep) A(j, i) = A(i, j) / h;
    e[j] = symmetric_product(A, j, l, v) / h;
    f += e[j] * A(i, j);
  }
  const double hh = f / (h + h);
  for (int j = 0; j <= l; ++j) {
    f = A(i, j);
    g = e[j] - hh * f;
    e[j] = g;
    for (int k = 0; k <= j; ++k) A(j, k) -= f * e[k] + g * A(i, k);
  }
  return h;
}

// A becomes the product of the reflections.
inline void accumulate(Square& A, Row& d) {
  for (int i = 0; i < A.n; ++i) {
    for (int j = 0; d[i] != 0.0 && j < i; ++j) {
      const double g = sum(i, [&](auto k) { return A(i, int(k)) * A(int(k), j); });
      for (int k = 0; k < i; ++k) A(k, j) -= g * A(k, i);
    }
    d[i] = A(i, i);
    A(i, i) = 1.0;
    for (int j = 0; j < i; ++j) A(i, j) = A(j, i) = 0.0;
  }
}

inline void tridiagonalize(Square& A, Row& d, Row& e, bool with_vectors) {
  for (int i = A.n - 1; i >= 1; --i) d[i] = reduce_row(A, i, e, with_vectors);
  d[0] = e[0] = 0.0;
  if (with_vectors) return accumulate(A, d);
  for (int i = 0; i < A.n; ++i) d[i] = A(i, i);
}

// Implicit QL; each rotation at once to all of Z. False when an eigenvalue takes more than 30
// sweeps.
inline bool tridiagonal_ql(Row& d, Row& e, Square& Z) {
  const int n = Z.n;
  for (int i = 1; i < n; ++i) e[i - 1] = e[i];
  e[n - 1] = 0.0;
  for (int l = 0; l < n; ++l) {
    for (int iter = 0;; ++iter) {
      int m = l;
      for (; m < n - 1; ++m) {
        const double dd = std::fabs(d[m]) + std::fabs(d[m + 1]);
        if (std::fabs(e[m]) + dd == dd) break;
      }
      if (m == l) break;
      if (iter == 30) return false;
      double g = (d[l + 1] - d[l]) / (2.0 * e[l]);
      double r = std::sqrt(g * g + 1.0);
      g = d[m] - d[l] + e[l] / (g + (g >= 0.0 ? r : -r));
      double s = 1.0, c = 1.0, p = 0.0;
      for (int i = m - 1; i >= l; --i) {
        const double f = s * e[i];
        const double b = c * e[i];
        if (std::fabs(f) >= std::fabs(g)) {
          c = g / f;
          r = std::sqrt(c * c + 1.0);
          e[i + 1] = f * r;
          s = 1.0 / r;
          c *= s;
        } else {
          s = f / g;
          r = std::sqrt(s * s + 1.0);
          e[i + 1] = g * r;
          c = 1.0 / r;
          s *= c;
        }
        g = d[i + 1] - p;
        r = (d[i] - g) * s + 2.0 * c * b;
        p = s * r;
        d[i + 1] = g + p;
        g = c * r - b;
        for (int k = 0; k < n; ++k) {
          const double y = Z(k, i + 1);
          Z(k, i + 1) = s * Z(k, i) + c * y;
          Z(k, i) = c * Z(k, i) - s * y;
        }
      }
      d[l] -= p;
      e[l] = g;
      e[m] = 0.0;
    }
  }
  return true;
}

}  // namespace matrix_pack::plain
