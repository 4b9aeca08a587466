// The QR decomposition in plain loops: the definition of what qr_core computes.
#pragma once

#include <cmath>

#include "linsys/qr.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/vector_plain.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

// (row i, row i + 1) become (c x + s y, c y - s x).
inline void givens_apply(const Givens& g, int i, double* m, int rows, int cols) {
  for (int j = 0; j < cols; ++j) {
    double* const column = m + static_cast<Index>(j) * rows;
    const double x = column[i];
    const double y = column[i + 1];
    column[i] = g.c * x + g.s * y;
    column[i + 1] = g.c * y - g.s * x;
  }
}

// r: m x n, A on entry and R on return; qt: m x m, becomes Q^T.
inline void qr(int m, int n, double* r, double* qt) {
  for (int k = 0; k < m * m; ++k) qt[k] = k % (m + 1) == 0 ? 1.0 : 0.0;
  int p = 0;
  for (int c = 0; c < n && p < m; ++c) {
    double* const column = r + static_cast<Index>(c) * m;
    const double norm = std::sqrt(sum_squares(m, column));
    if (norm == 0.0) continue;
    const double tol = ((c + 1) * norm * kEps) / std::sqrt(static_cast<double>(m - p));
    const auto negligible = [tol](double x) { return -tol < x && x < tol; };
    bool taken = !negligible(column[p]);
    for (int k = m - 1; k > p; --k) {
      if (negligible(column[k])) continue;
      taken = true;
      const Givens g = givens_coeffs(column[k - 1], column[k]);
      givens_apply(g, k - 1, r, m, n);
      givens_apply(g, k - 1, qt, m, m);
    }
    if (taken) ++p;
    for (int k = p; k < m; ++k) column[k] = 0.0;
  }
}

}  // namespace matrix_pack::plain
