// The general real eigenproblem in plain loops, every step applied at once: the definition of what
// the elimination and the sweeps of the QR iteration compute, to the bit.
#pragma once

#include <cmath>
#include <utility>

#include "eigen/shared/plain.hpp"

namespace matrix_pack::plain {

// Elimination to Hessenberg form within low..high; pivots[m] is the row that was exchanged with m.
inline void eliminate_to_hessenberg(Square& A, int low, int high, Row& pivots) {
  for (int m = low + 1; m < high; ++m) {
    double x = 0.0;
    int i = m;
    for (int j = m; j <= high; ++j)
      if (std::fabs(A(j, m - 1)) > std::fabs(x)) {
        x = A(j, m - 1);
        i = j;
      }
    pivots[m] = i;
    if (i != m) {
      for (int j = m - 1; j < A.n; ++j) std::swap(A(i, j), A(m, j));
      for (int j = 0; j <= high; ++j) std::swap(A(j, i), A(j, m));
    }
    if (x == 0.0) continue;
    for (i = m + 1; i <= high; ++i) {
      double y = A(i, m - 1);
      if (y == 0.0) continue;
      y /= x;
      A(i, m - 1) = y;
      for (int j = m; j < A.n; ++j) A(i, j) -= y * A(m, j);
      for (int j = 0; j <= high; ++j) A(j, m) += y * A(j, i);
    }
  }
}

// One double-shift sweep of rows m..en from the vector (p, q, r): in the rows of columns up to
// `right`, the columns of rows from `top` on, and the columns of rows z_begin..z_end-1 of Z.
struct Sweep {
  int l, m, en, top, right, z_begin, z_end;

  void run(Square& H, Square& Z, double p, double q, double r) const {
    for (int i = m + 2; i <= en; ++i) {
      H(i, i - 2) = 0.0;
      if (i != m + 2) H(i, i - 3) = 0.0;
    }
    double x = 0.0;
    for (int k = m; k < en; ++k) {
      const bool notlast = k != en - 1;
      if (k != m) {
        p = H(k, k - 1);
        q = H(k + 1, k - 1);
        r = notlast ? H(k + 2, k - 1) : 0.0;
        x = std::fabs(p) + std::fabs(q) + std::fabs(r);
        if (x == 0.0) continue;
        p /= x;
        q /= x;
        r /= x;
      }
      double s = std::sqrt(p * p + q * q + r * r);
      if (p < 0.0) s = -s;
      if (k != m)
        H(k, k - 1) = -s * x;
      else if (l != m)
        H(k, k - 1) = -H(k, k - 1);
      p += s;
      x = p / s;
      const double y = q / s;
      const double zz = r / s;
      q /= p;
      r /= p;
      for (int j = k; j <= right; ++j) {
        p = H(k, j) + q * H(k + 1, j);
        if (notlast) p += r * H(k + 2, j);
        H(k, j) -= p * x;
        H(k + 1, j) -= p * y;
        if (notlast) H(k + 2, j) -= p * zz;
      }
      const int bottom = en < k + 3 ? en : k + 3;
      for (int i = top; i <= bottom; ++i) reflect_columns(H, i, k, notlast, x, y, zz, q, r);
      for (int i = z_begin; i < z_end; ++i) reflect_columns(Z, i, k, notlast, x, y, zz, q, r);
    }
  }

  static void reflect_columns(Square& A, int i, int k, bool notlast, double x, double y, double zz,
                              double q, double r) {
    double p = x * A(i, k) + y * A(i, k + 1);
    if (notlast) p += zz * A(i, k + 2);
    A(i, k) -= p;
    A(i, k + 1) -= p * q;
    if (notlast) A(i, k + 2) -= p * r;
  }
};

}  // namespace matrix_pack::plain
