// A small zoo of real matrices for residual tests, and the arithmetic of residuals.
#pragma once

#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace test {

// A column-major matrix of doubles.
struct Dense {
  Dense(int row_count, int col_count)
      : rows(row_count),
        cols(col_count),
        a(static_cast<std::size_t>(row_count) * static_cast<std::size_t>(col_count)) {}
  Dense(int row_count, int col_count, std::vector<double> elements)
      : rows(row_count), cols(col_count), a(std::move(elements)) {}
  double& operator()(int i, int j) { return a[index(i, j)]; }
  double operator()(int i, int j) const { return a[index(i, j)]; }
  std::size_t index(int i, int j) const {
    return static_cast<std::size_t>(j) * static_cast<std::size_t>(rows) +
           static_cast<std::size_t>(i);
  }

  int rows;
  int cols;
  std::vector<double> a;
};

inline Dense filled(int rows, int cols, const std::function<double(int, int)>& element) {
  Dense m(rows, cols);
  for (int j = 0; j < cols; ++j)
    for (int i = 0; i < rows; ++i) m(i, j) = element(i, j);
  return m;
}

inline Dense random_dense(int rows, int cols, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  return filled(rows, cols, [&](int, int) { return normal(engine); });
}

inline Dense transposed(const Dense& m) {
  return filled(m.cols, m.rows, [&](int i, int j) { return m(j, i); });
}

inline Dense product(const Dense& a, const Dense& b) {
  Dense p(a.rows, b.cols);
  for (int j = 0; j < b.cols; ++j)
    for (int k = 0; k < a.cols; ++k)
      for (int i = 0; i < a.rows; ++i) p(i, j) += a(i, k) * b(k, j);
  return p;
}

inline Dense difference(const Dense& a, const Dense& b) {
  return filled(a.rows, a.cols, [&](int i, int j) { return a(i, j) - b(i, j); });
}

inline Dense identity_dense(int n) {
  return filled(n, n, [](int i, int j) { return i == j ? 1.0 : 0.0; });
}

// Euclidean norm, safe against overflow and underflow.
inline double size_of(const Dense& m) {
  double norm = 0;
  for (const double x : m.a) norm = std::hypot(norm, x);
  return norm;
}

// |residual| / (n eps |reference|), 0 / 0 = 0.
inline double ratio_of(const Dense& residual, double reference) {
  const double r = size_of(residual);
  const int n = residual.rows > residual.cols ? residual.rows : residual.cols;
  return r == 0 ? 0 : r / (n * 0x1p-52) / reference;
}

// How far the columns of q are from orthonormal.
inline double orthogonality_ratio(const Dense& q) {
  return ratio_of(difference(product(transposed(q), q), identity_dense(q.cols)), 1);
}

// An m x n matrix, m >= n, with the singular values value(0), value(1)...: a product of random
// reflections, the diagonal and reflections.
inline Dense with_singular_values(int m, int n, unsigned seed,
                                  const std::function<double(int)>& value) {
  Dense a = filled(m, n, [&](int i, int j) { return i == j ? value(i) : 0.0; });
  const auto reflect_columns = [](Dense& b, unsigned s) {
    const Dense v = random_dense(b.rows, 1, s);
    const double scale = 2 / std::pow(size_of(v), 2);
    for (int j = 0; j < b.cols; ++j) {
      double t = 0;
      for (int i = 0; i < b.rows; ++i) t += v(i, 0) * b(i, j);
      for (int i = 0; i < b.rows; ++i) b(i, j) -= scale * t * v(i, 0);
    }
  };
  for (unsigned k = 0; k < 3; ++k) {
    reflect_columns(a, seed + k);
    Dense t = transposed(a);
    reflect_columns(t, seed + 10 + k);
    a = transposed(t);
  }
  return a;
}

struct Specimen {
  std::string name;
  Dense matrix;
};

// Matrices of one shape (rows >= cols): random, with zeros in bad places, repeated, clustered,
// graded and vanishing singular values, and of extreme size.
inline std::vector<Specimen> zoo(int m, int n, unsigned seed) {
  const Dense random = random_dense(m, n, seed);
  std::vector<Specimen> all;
  const std::string shape = std::to_string(m).append("x").append(std::to_string(n));
  const auto add = [&](const char* name, Dense matrix) {
    all.push_back({std::string(name).append(" ").append(shape), std::move(matrix)});
  };
  const auto change = [&](const std::function<double(int, int, double)>& f) {
    return filled(m, n, [&](int i, int j) { return f(i, j, random(i, j)); });
  };
  add("random", random);
  add("zero", Dense(m, n));
  add("zero columns", change([](int, int j, double x) { return j % 3 == 1 ? 0 : x; }));
  add("zero rows", change([](int i, int, double x) { return i % 3 == 0 ? 0 : x; }));
  add("upper triangular", change([](int i, int j, double x) { return i <= j ? x : 0; }));
  add("diagonal", change([](int i, int j, double x) { return i == j ? x : 0; }));
  add("bidiagonal", change([](int i, int j, double x) { return i == j || i + 1 == j ? x : 0; }));
  add("bidiagonal with zeros",
      change([](int i, int j, double x) { return (i == j && i % 4 != 2) || i + 1 == j ? x : 0; }));
  add("equal columns", change([&](int i, int, double) { return random(i, 0); }));
  add("repeated", with_singular_values(m, n, seed, [](int k) { return 1 + k % 2; }));
  add("clustered", with_singular_values(m, n, seed, [](int k) { return 1 + k * 1e-14; }));
  add("graded",
      with_singular_values(m, n, seed, [n](int k) { return std::pow(10, -15.0 * k / n); }));
  add("half rank", with_singular_values(m, n, seed, [n](int k) { return k < n / 2 ? 1 + k : 0; }));
  add("rows graded", change([m](int i, int, double x) { return x * std::pow(10, -15.0 * i / m); }));
  add("Hilbert", filled(m, n, [](int i, int j) { return 1.0 / (i + j + 1); }));
  add("large", change([](int, int, double x) { return x * 1e70; }));
  add("small", change([](int, int, double x) { return x * 1e-70; }));
  return all;
}

// Shapes around the sizes at which loops, panels and blocks end.
struct Shape {
  int m;
  int n;
};
inline const std::vector<Shape> kTallShapes = {{1, 1},   {2, 2},   {3, 3}, {5, 5},  {8, 8},  {9, 9},
                                               {33, 33}, {65, 40}, {7, 2}, {40, 1}, {34, 31}};

// The worst of many ratios: names it when it is logged.
class WorstRatio {
 public:
  explicit WorstRatio(std::string what) : what_(std::move(what)) {}
  ~WorstRatio() { std::printf("%s: worst ratio %.3g at %s\n", what_.c_str(), worst_, at_.c_str()); }
  WorstRatio(const WorstRatio&) = delete;
  WorstRatio& operator=(const WorstRatio&) = delete;

  // Notes a ratio and returns it.
  double note(double ratio, const std::string& at) {
    if (!(ratio <= worst_)) {
      worst_ = ratio;
      at_ = at;
    }
    return ratio;
  }

 private:
  std::string what_;
  double worst_ = 0;
  std::string at_ = "none";
};

}  // namespace test
