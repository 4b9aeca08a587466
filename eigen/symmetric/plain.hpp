// The symmetric reduction in plain loops, every step applied at once: the definition of what it
// computes, to the bit.
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
  double h = 0.0;
  for (int k = 0; k <= l; ++k) h += A(i, k) * A(i, k);
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

}  // namespace matrix_pack::plain
