#include "host/audit/second_call.hpp"

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>
#include <tuple>

namespace audit {

namespace {

double* new_part(const Vector& elements) {
  auto* const part = static_cast<double*>(::operator new(elements.size() * sizeof(double)));
  std::copy(elements.begin(), elements.end(), part);
  return part;
}

Anyval* new_matrix(efi::Store& store, const Parts& m) {
  double* const re = new_part(m.re.elements);
  double* const im = m.is_complex() ? new_part(m.im.elements) : nullptr;
  const auto bytes = static_cast<unsigned>(m.re.elements.size() * sizeof(double));
  Anyval* const made = store.new_matrix(m.re.rows, m.re.cols, re, im, bytes);
  if (made != nullptr) return made;
  ::operator delete(re);
  ::operator delete(im);
  throw std::bad_alloc();
}

}  // namespace

const Anyval* call_again(const Request& r, std::span<const Parts* const> matrices,
                         const double* tolerance) {
  std::vector<Anyval*> arguments;
  for (const Parts* m : matrices) arguments.push_back(new_matrix(r.store, *m));
  if (tolerance != nullptr) {
    arguments.push_back(r.store.new_scalar(*tolerance, 0.0));
    if (arguments.back() == nullptr) throw std::bad_alloc();
  }
  Anyval* const result = r.again(arguments);
  if (result == nullptr || result == sError_OutOfMemory) throw Stopped();
  return result;
}

Numbers numbers_of(const Anyval* value) {
  Numbers numbers;
  if (value->kind != kMatrixKind) return numbers;
  const Parts parts = parts_of(static_cast<const aMatrix*>(value));
  for (const Matrix* part : {&parts.re, &parts.im})
    if (!all_finite(part->elements.data(), part->elements.size())) return numbers;
  for (std::size_t k = 0; k < parts.re.elements.size(); ++k)
    numbers.emplace_back(parts.re.elements[k], parts.is_complex() ? parts.im.elements[k] : 0.0);
  return numbers;
}

std::vector<int> random_order(Random& random, int n) {
  std::vector<int> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  for (int k = n; k > 1; --k)
    std::swap(order[static_cast<std::size_t>(k - 1)],
              order[static_cast<std::size_t>(random.below(k))]);
  return order;
}

Matrix permuted(const Matrix& A, const std::vector<int>& rows, const std::vector<int>& cols) {
  Matrix B(A.rows, A.cols);
  if (A.elements.empty()) return B;
  for (int j = 0; j < A.cols; ++j)
    for (int i = 0; i < A.rows; ++i)
      B(i, j) = A(rows[static_cast<std::size_t>(i)], cols[static_cast<std::size_t>(j)]);
  return B;
}

void add_noise(Matrix& A, double size, bool symmetric, Random& random) {
  for (int j = 0; j < A.cols; ++j)
    for (int i = 0; i < (symmetric ? j + 1 : A.rows); ++i) {
      A(i, j) += size * random.unit();
      if (symmetric) A(j, i) = A(i, j);
    }
}

namespace {

// The sum of the magnitudes in row or column k, without the diagonal.
double off_diagonal(const Parts& A, int k, bool row) {
  double sum = 0.0;
  for (int i = 0; i < A.re.rows; ++i) {
    if (i == k) continue;
    sum += std::fabs(row ? A.re(k, i) : A.re(i, k));
    if (A.is_complex()) sum += std::fabs(row ? A.im(k, i) : A.im(i, k));
  }
  return sum;
}

}  // namespace

void balance(Parts& A) {
  constexpr int kMostSweeps = 20;
  const int n = A.re.rows;
  bool changed = true;
  for (int sweep = 0; changed && sweep < kMostSweeps; ++sweep) {
    changed = false;
    for (int k = 0; k < n; ++k) {
      const double c = off_diagonal(A, k, false), row = off_diagonal(A, k, true);
      if (c == 0.0 || row == 0.0) continue;
      const int power = static_cast<int>(std::lround((std::log2(row) - std::log2(c)) / 2));
      if (power == 0 || std::abs(power) > 500) continue;
      changed = true;
      const double f = std::ldexp(1.0, power), g = std::ldexp(1.0, -power);
      for (Matrix* part : {&A.re, &A.im}) {
        if (part->elements.empty()) continue;
        for (int i = 0; i < n; ++i) (*part)(i, k) *= f;
        for (int i = 0; i < n; ++i) (*part)(k, i) *= g;
      }
    }
  }
}

std::vector<int> nearest_pairs(const Numbers& x, const Numbers& y, Distance distance) {
  std::vector<std::tuple<double, int, int>> all;
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = 0; j < y.size(); ++j)
      all.emplace_back(distance(x[i], y[j]), static_cast<int>(i), static_cast<int>(j));
  std::sort(all.begin(), all.end());
  std::vector<int> partner(x.size(), -1);
  std::vector<bool> taken(y.size());
  for (const auto& [d, i, j] : all) {
    if (partner[static_cast<std::size_t>(i)] >= 0 || taken[static_cast<std::size_t>(j)]) continue;
    partner[static_cast<std::size_t>(i)] = j;
    taken[static_cast<std::size_t>(j)] = true;
  }
  return partner;
}

}  // namespace audit
