// Square matrices, real and complex, for eigenvalue methods, and the arithmetic of their residuals.
#pragma once

#include <algorithm>
#include <complex>

#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace test {

inline aMatrix* make(TestHost& host, const Specimen& s) {
  const Dense& m = s.matrix;
  if (s.is_real()) return host.matrix(m.rows, m.cols, m.a);
  std::vector<StdComplex> z;
  for (std::size_t k = 0; k < m.a.size(); ++k) z.emplace_back(m.a[k], s.imaginary.a[k]);
  return host.complex_matrix(m.rows, m.cols, z);
}

// The upper triangle and its mirror image.
inline Dense mirrored(const Dense& m) {
  return changed(m, [&](int i, int j, double) { return i < j ? m(i, j) : m(j, i); });
}

// The elements of a matrix of three diagonals.
template <class Number>
auto tridiagonal(Number below, Number diagonal, Number above) {
  return [=](int i, int j) {
    return i == j ? diagonal : i == j + 1 ? below : j == i + 1 ? above : Number(0);
  };
}

// A as a complex matrix, rows and columns turned by phases: the Euclidean and the 2-norm, and the
// magnitudes of all elements, stay as they are.
inline aMatrix* turned(TestHost& host, const Dense& a) {
  std::vector<StdComplex> z;
  for (int j = 0; j < a.cols; ++j)
    for (int i = 0; i < a.rows; ++i) z.push_back(a(i, j) * std::polar(1.0, i * 0.25 + j * 0.3));
  return host.complex_matrix(a.rows, a.cols, z);
}

inline double norm_of(const std::vector<StdComplex>& a) {
  double norm = 0;
  for (const StdComplex& z : a) norm = std::hypot(norm, std::abs(z));
  return norm;
}

// The worst |A x - lambda B x| / (n eps (|A| + |lambda| |B|) |x|) over the columns x of `vectors`,
// 0 / 0 = 0; B is the identity, with no part in the measure, when it is null.
inline double eigen_ratio(const aMatrix* a, const aMatrix* b, const std::vector<StdComplex>& values,
                          const aMatrix* vectors) {
  const int n = a->rows;
  const auto at = [](const aMatrix* m, int i, int j) {
    return StdComplex(re(m, i, j), im(m, i, j));
  };
  const double a_size = norm_of(elements(a));
  const double b_size = b == nullptr ? 0 : norm_of(elements(b));
  double worst = 0;
  for (int j = 0; j < vectors->cols; ++j) {
    const StdComplex lambda = values[static_cast<std::size_t>(j)];
    double residual = 0, length = 0;
    for (int i = 0; i < n; ++i) {
      StdComplex r = b == nullptr ? -lambda * at(vectors, i, j) : 0;
      for (int k = 0; k < n; ++k)
        r += (at(a, i, k) - (b == nullptr ? 0 : lambda * at(b, i, k))) * at(vectors, k, j);
      residual = std::hypot(residual, std::abs(r));
      length = std::hypot(length, std::abs(at(vectors, i, j)));
    }
    if (residual == 0 && length > 0) continue;
    const double size = n * 0x1p-52 * (a_size + std::abs(lambda) * b_size) * length;
    if (!(residual / size <= worst)) worst = residual / size;
  }
  return worst;
}

// The distance of two lists: each number is matched with the nearest one that is left.
inline double distance(const std::vector<StdComplex>& found, std::vector<StdComplex> known) {
  EXPECT_EQ(found.size(), known.size());
  double worst = 0;
  for (const StdComplex& z : found) {
    const auto nearest =
        std::min_element(known.begin(), known.end(), [&](const StdComplex& a, const StdComplex& b) {
          return std::abs(a - z) < std::abs(b - z);
        });
    worst = std::max(worst, std::abs(*nearest - z));
    known.erase(nearest);
  }
  return worst;
}

}  // namespace test
