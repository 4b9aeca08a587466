// What the plain loops of the eigenproblem work on: square matrices and rows of numbers with signed
// indices.
#pragma once

#include <vector>

#include "pack/numeric/vector_plain.hpp"

namespace matrix_pack::plain {

struct Row {
  explicit Row(int n) : a(static_cast<std::size_t>(n)) {}
  double& operator[](int i) { return a[static_cast<std::size_t>(i)]; }
  double operator[](int i) const { return a[static_cast<std::size_t>(i)]; }

  std::vector<double> a;
};

struct Square {
  explicit Square(int order) : n(order), a(index(0, order)) {}
  Square(int order, std::vector<double> elements) : n(order), a(std::move(elements)) {}
  double& operator()(int i, int j) { return a[index(i, j)]; }
  double operator()(int i, int j) const { return a[index(i, j)]; }
  std::size_t index(int i, int j) const {
    return static_cast<std::size_t>(j) * static_cast<std::size_t>(n) + static_cast<std::size_t>(i);
  }

  int n;
  std::vector<double> a;
};

inline Square identity(int n) {
  Square z(n);
  for (int i = 0; i < n; ++i) z(i, i) = 1.0;
  return z;
}

}  // namespace matrix_pack::plain
