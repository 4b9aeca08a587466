// Square matrices, real and complex, that eigenvalue methods find hard or must treat with care, and
// the arithmetic of their residuals.
#pragma once

#include <complex>

#include "tests/support/test_host.hpp"
#include "tests/support/zoo.hpp"

namespace test {

// A square complex matrix; `is_real` says that it has no imaginary array.
struct SquareSpecimen {
  std::string name;
  int n;
  bool is_real;
  std::vector<Complex> a;

  Complex operator()(int i, int j) const { return a[static_cast<std::size_t>(j * n + i)]; }
  aMatrix* on(TestHost& host) const {
    if (!is_real) return host.complex_matrix(n, n, a);
    std::vector<double> re;
    for (const Complex& z : a) re.push_back(z.real());
    return host.matrix(n, n, re);
  }
};

using Element = std::function<double(int, int)>;
using ComplexElement = std::function<Complex(int, int)>;

inline SquareSpecimen specimen(const std::string& name, int n, const Element& element) {
  SquareSpecimen s = {name + " " + std::to_string(n), n, true, {}};
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) s.a.emplace_back(element(i, j));
  return s;
}

inline SquareSpecimen complex_specimen(const std::string& name, int n,
                                       const ComplexElement& element) {
  SquareSpecimen s = {name + " " + std::to_string(n), n, false, {}};
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) s.a.push_back(element(i, j));
  return s;
}

inline double clement(int n, int i, int j) {
  return j == i + 1 ? i + 1 : j == i - 1 ? n - i : 0;
}

// Real symmetric matrices: dense, tridiagonal, graded either way, in blocks, of low rank, extreme.
inline std::vector<SquareSpecimen> symmetric_zoo(int n) {
  const Dense x = random_dense(n, n, 21);
  const auto random = [&](int i, int j) { return i < j ? x(i, j) : x(j, i); };
  return {
      specimen("symmetric", n, random),
      specimen("second difference", n,
               [](int i, int j) { return i == j                 ? 2
                                         : std::abs(i - j) == 1 ? -1
                                                                : 0; }),
      specimen("zero", n, [](int, int) { return 0.0; }),
      specimen("diagonal", n, [&](int i, int j) { return i == j ? random(i, i) : 0; }),
      // Only so far: graded more steeply, the iteration may not settle within its limit.
      specimen("graded down", n,
               [&](int i, int j) { return random(i, j) * std::pow(10, -4.0 * (i + j) / n); }),
      specimen("graded up", n,
               [&](int i, int j) { return random(i, j) * std::pow(10, 8.0 * (i + j) / n); }),
      specimen("blocks", n, [&](int i, int j) { return i / 3 == j / 3 ? random(i, j) : 0; }),
      specimen("ones", n, [](int, int) { return 1.0; }),
      specimen("reflection", n, [&](int i, int j) { return (i == j ? 1 : 0) - 2.0 / n; }),
      specimen("symmetric large", n, [&](int i, int j) { return random(i, j) * 1e140; }),
      specimen("symmetric small", n, [&](int i, int j) { return random(i, j) * 1e-140; }),
  };
}

// Real matrices that are not symmetric (for n >= 2).
inline std::vector<SquareSpecimen> general_zoo(int n) {
  const Dense x = random_dense(n, n, 22);
  const auto random = [&](int i, int j) { return x(i, j); };
  const auto upper = [&](int i, int j) { return i <= j ? random(i, j) : 0; };
  const auto cyclic = [n](int i, int j) { return i == (j + 1) % n ? 1.0 : 0.0; };
  std::vector<SquareSpecimen> zoo = {
      specimen("random", n, random),
      specimen("graded", n,
               [&](int i, int j) { return random(i, j) * std::pow(10, -10.0 * (i + j) / n); }),
      specimen("badly scaled", n,
               [&](int i, int j) { return random(i, j) * std::pow(10, 12.0 * (i - j) / n); }),
      specimen("upper triangular", n, upper),
      specimen("lower triangular", n, [&](int i, int j) { return upper(j, i); }),
      // Rows and columns exchanged: balancing isolates one eigenvalue after the other.
      specimen("hidden triangular", n,
               [&](int i, int j) { return upper((5 * i + 2) % n, (5 * j + 2) % n); }),
      specimen("block triangular", n,
               [&](int i, int j) {
                 return i < n / 4 && i > j ? 0 : i >= n - n / 4 && i > j ? 0 : random(i, j);
               }),
      specimen("Jordan block", n, [](int i, int j) { return i == j       ? 0.5
                                                            : j == i + 1 ? 1
                                                                         : 0; }),
      specimen("nilpotent", n, [](int i, int j) { return j == i + 1 ? 1.0 : 0.0; }),
      specimen("companion", n,
               [&](int i, int j) { return j == n - 1   ? -random(i, 0)
                                          : i == j + 1 ? 1
                                                       : 0; }),
      specimen("Clement", n, [n](int i, int j) { return clement(n, i, j); }),
      specimen("Grcar", n,
               [](int i, int j) { return i == j + 1             ? -1
                                         : i <= j && j <= i + 3 ? 1
                                                                : 0; }),
      specimen("Toeplitz", n,
               [&](int i, int j) { return random(i > j ? i - j : 0, j > i ? j - i : 0); }),
      specimen("cyclic", n, cyclic),
      specimen("two cycles", n,
               [&](int i, int j) { return i / 2 == j / 2 ? (i == j ? 0 : 1 + i) : 0.0; }),
      specimen("rotations", n,
               [](int i, int j) {
                 return i / 2 != j / 2 ? 0 : i == j ? 0.6 : i < j ? -0.8 : 0.8;
               }),
      specimen("repeated rows", n, [&](int, int j) { return random(0, j); }),
      specimen("large", n, [&](int i, int j) { return random(i, j) * 1e70; }),
      specimen("small", n, [&](int i, int j) { return random(i, j) * 1e-70; }),
  };
  // At higher orders, balancing makes this matrix worse: its vectors solve the balanced problem to
  // the last digits, and the original one to fewer and fewer.
  if (n < 10)
    zoo.push_back(
        specimen("Frank", n, [n](int i, int j) { return i > j + 1 ? 0 : n - (i > j ? i : j); }));
  return zoo;
}

inline std::vector<SquareSpecimen> complex_zoo(int n) {
  const Dense x = random_dense(n, n, 23);
  const Dense y = random_dense(n, n, 24);
  const auto random = [&](int i, int j) { return Complex(x(i, j), y(i, j)); };
  const auto upper = [&](int i, int j) { return i <= j ? random(i, j) : 0; };
  return {
      complex_specimen("complex", n, random),
      complex_specimen("Hermitian", n,
                       [&](int i, int j) {
                         return i == j ? x(i, i) : i < j ? random(i, j) : std::conj(random(j, i));
                       }),
      complex_specimen("zero imaginary", n, [&](int i, int j) { return x(i, j); }),
      complex_specimen("purely imaginary", n, [&](int i, int j) { return Complex(0, y(i, j)); }),
      complex_specimen("complex upper triangular", n, upper),
      complex_specimen("complex lower triangular", n, [&](int i, int j) { return upper(j, i); }),
      complex_specimen("complex hidden triangular", n,
                       [&](int i, int j) { return upper((5 * i + 2) % n, (5 * j + 2) % n); }),
      complex_specimen("complex Jordan block", n,
                       [](int i, int j) { return i == j       ? Complex(0.5, 1)
                                                 : j == i + 1 ? 1
                                                              : 0; }),
      complex_specimen("complex cyclic", n,
                       [n](int i, int j) { return i == (j + 1) % n ? Complex(0, 1) : 0; }),
      complex_specimen(
          "complex badly scaled", n,
          [&](int i, int j) { return random(i, j) * std::pow(10, 12.0 * (i - j) / n); }),
      complex_specimen("complex Grcar", n,
                       [](int i, int j) {
                         return i == j + 1 ? -1 : i <= j && j <= i + 3 ? Complex(1, 1) : 0;
                       }),
      complex_specimen("complex large", n, [&](int i, int j) { return random(i, j) * 1e70; }),
      complex_specimen("complex small", n, [&](int i, int j) { return random(i, j) * 1e-70; }),
  };
}

inline double norm_of(const std::vector<Complex>& a) {
  double norm = 0;
  for (const Complex& z : a) norm = std::hypot(norm, std::hypot(z.real(), z.imag()));
  return norm;
}

// |A V - V diag(values)| / (n eps |A| |V|), 0 / 0 = 0.
inline double eigen_ratio(const SquareSpecimen& a, const std::vector<Complex>& values,
                          const std::vector<Complex>& vectors) {
  const int n = a.n;
  std::vector<Complex> residual;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      const auto v = [&](int k) { return vectors[static_cast<std::size_t>(j * n + k)]; };
      Complex r = -values[static_cast<std::size_t>(j)] * v(i);
      for (int k = 0; k < n; ++k) r += a(i, k) * v(k);
      residual.push_back(r);
    }
  }
  const double r = norm_of(residual);
  return r == 0 ? 0 : r / (n * 0x1p-52) / norm_of(a.a) / norm_of(vectors);
}

}  // namespace test
