#include "host/audit/numeric/doubled_factors.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace audit {

namespace {

// y := y - x a for columns of n elements.
void subtract_multiple(const double* a_hi, const double* a_lo, const Double2& x, std::size_t n,
                       double* y_hi, double* y_lo) {
  for (std::size_t i = 0; i < n; ++i) {
    const Double2 p = product(Double2{a_hi[i], a_lo[i]}, Double2{-x.hi, -x.lo});
    const Double2 s = sum({y_hi[i], y_lo[i]}, p);
    y_hi[i] = s.hi;
    y_lo[i] = s.lo;
  }
}

}  // namespace

DoubledFactors::DoubledFactors(const Matrix& A, efi::StopFlag stop)
    : hi_(A), lo_(A.rows, A.cols), pivots_(static_cast<std::size_t>(A.rows)) {
  const int n = A.rows;
  for (int k = 0; k < n; ++k) {
    poll(stop);
    const double* const a = hi_.column(k);
    const int p = index_of_largest(a, k, n);
    pivots_[static_cast<std::size_t>(k)] = p;
    if (a[p] == 0.0) {
      singular_ = true;
      return;
    }
    for (Matrix* part : {&hi_, &lo_})
      for (int j = 0; p != k && j < n; ++j) std::swap((*part)(p, j), (*part)(k, j));
    for (int i = k + 1; i < n; ++i) {
      const Double2 multiplier = quotient(at(i, k), at(k, k));
      hi_(i, k) = multiplier.hi;
      lo_(i, k) = multiplier.lo;
    }
    // column j := column j - u · multipliers
    const auto rest = static_cast<std::size_t>(n - k - 1);
    for (int j = k + 1; j < n; ++j)
      if (hi_(k, j) != 0.0)
        subtract_multiple(hi_.column(k) + k + 1, lo_.column(k) + k + 1, at(k, j), rest,
                          hi_.column(j) + k + 1, lo_.column(j) + k + 1);
  }
}

Vector DoubledFactors::solve(const Vector& b) const {
  const int n = hi_.rows;
  Vector2 x(b);
  for (std::size_t k = 0; k < x.size(); ++k)
    std::swap(x.hi[k], x.hi[static_cast<std::size_t>(pivots_[k])]);
  for (int k = 0; k < n; ++k) {
    const auto below = static_cast<std::size_t>(k + 1);
    subtract_multiple(hi_.column(k) + k + 1, lo_.column(k) + k + 1, x[below - 1], x.size() - below,
                      x.hi.data() + below, x.lo.data() + below);
  }
  for (int k = n; k-- > 0;) {
    const auto above = static_cast<std::size_t>(k);
    x.set(above, quotient(x[above], at(k, k)));
    subtract_multiple(hi_.column(k), lo_.column(k), x[above], above, x.hi.data(), x.lo.data());
  }
  return std::move(x.hi);
}

Vector DoubledFactors::solve_transposed(const Vector& b) const {
  const int n = hi_.rows;
  Vector2 x(b);
  const auto subtract = [&](int i, int k) {
    const Double2 p = product(at(i, k), x[static_cast<std::size_t>(i)]);
    x.add(static_cast<std::size_t>(k), {-p.hi, -p.lo});
  };
  for (int k = 0; k < n; ++k) {
    for (int i = 0; i < k; ++i) subtract(i, k);
    x.set(static_cast<std::size_t>(k), quotient(x[static_cast<std::size_t>(k)], at(k, k)));
  }
  for (int k = n; k-- > 0;)
    for (int i = k + 1; i < n; ++i) subtract(i, k);
  for (std::size_t k = x.size(); k-- > 0;)
    std::swap(x.hi[k], x.hi[static_cast<std::size_t>(pivots_[k])]);
  return std::move(x.hi);
}

}  // namespace audit
