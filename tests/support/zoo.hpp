// A small zoo of real matrices for residual tests, and the arithmetic of residuals.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "host/arguments/values.hpp"

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

inline Dense changed(const Dense& m, const std::function<double(int, int, double)>& f) {
  return filled(m.rows, m.cols, [&](int i, int j) { return f(i, j, m(i, j)); });
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

// The same elements; all NaNs are alike.
inline bool same(const Dense& a, const Dense& b) {
  return std::equal(a.a.begin(), a.a.end(), b.a.begin(), b.a.end(),
                    [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
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

// A real matrix, or a complex one.
struct Specimen {
  std::string name;
  Dense matrix;
  Dense imaginary = {0, 0};  // Of a complex one.

  bool is_real() const { return imaginary.a.empty(); }
};

using arguments::Source;
using arguments::Structure;

inline Specimen specimen(arguments::Fill fill, int m, int n, std::uint64_t seed,
                         bool complex = false) {
  Specimen s = {std::string(complex ? "complex " : "") + name_of(fill.source) + " " +
                    name_of(fill.structure) + " " + std::to_string(m) + "x" + std::to_string(n),
                Dense(m, n), complex ? Dense(m, n) : Dense(0, 0)};
  arguments::Draft draft = {
      m, n, s.matrix.a.data(), complex ? s.imaginary.a.data() : nullptr, fill.source, {seed}};
  arguments::fill(draft, fill.structure);
  return s;
}

// Matrices of one shape: random, with zeros in bad places, of many structures, graded, and of
// extreme size.
inline std::vector<Specimen> structures(int m, int n, unsigned seed, bool complex = false) {
  std::vector<Specimen> all;
  for (const Source source :
       {Source::units, Source::zeros, Source::repeated, Source::big, Source::small})
    all.push_back(specimen({source, Structure::general}, m, n, seed, complex));
  for (int k = 1; k < arguments::kStructures; ++k)
    // Only so far: balancing makes a large one worse, of which too few digits are left.
    if (static_cast<Structure>(k) != Structure::frank || n < 10)
      all.push_back(specimen({Source::units, static_cast<Structure>(k)}, m, n, seed, complex));
  return all;
}

// The same and, of shapes with m >= n, repeated, clustered, graded and vanishing singular values.
inline std::vector<Specimen> zoo(int m, int n, unsigned seed) {
  std::vector<Specimen> all = structures(m, n, seed);
  const auto add = [&](const char* name, const std::function<double(int)>& value) {
    all.push_back({name + std::to_string(m).append("x").append(std::to_string(n)),
                   with_singular_values(m, n, seed, value)});
  };
  add("repeated ", [](int k) { return 1 + k % 2; });
  add("clustered ", [](int k) { return 1 + k * 1e-14; });
  add("graded values ", [n](int k) { return std::pow(10, -15.0 * k / n); });
  add("half rank ", [n](int k) { return k < n / 2 ? 1 + k : 0; });
  return all;
}

// Shapes around the sizes at which loops, panels and blocks end.
struct Shape {
  int m;
  int n;
};
inline const std::vector<Shape> kTallShapes = {{1, 1},   {2, 2},   {3, 3}, {5, 5},  {8, 8},  {9, 9},
                                               {33, 33}, {65, 40}, {7, 2}, {40, 1}, {34, 31}};

// The worst of many ratios, each of which is expected below the gate: about ten times the worst
// that has been measured. Names it when it is logged.
class WorstRatio {
 public:
  WorstRatio(std::string what, double gate) : what_(std::move(what)), gate_(gate) {}
  ~WorstRatio() { std::printf("%s: worst ratio %.3g at %s\n", what_.c_str(), worst_, at_.c_str()); }
  WorstRatio(const WorstRatio&) = delete;
  WorstRatio& operator=(const WorstRatio&) = delete;

  void expect(double ratio, const std::string& at) {
    EXPECT_LT(ratio, gate_) << what_ << ", " << at;
    if (ratio <= worst_) return;
    worst_ = ratio;
    at_ = at;
  }

 private:
  std::string what_;
  double gate_;
  double worst_ = 0;
  std::string at_ = "none";
};

}  // namespace test
