#include "host/audit/numeric/solver.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace audit {

namespace {

// The relative rounding of factors in twice the digits, to the safe side.
constexpr double kDoubledEpsilon = 0x1p-102;

}  // namespace

Solver::Solver(const Matrix& A, efi::StopFlag stop) : scaled_(A) {
  // Up to here corrections contract, though the condition is an estimate.
  constexpr double kMostLoss = 0x1p-6;
  scaling_ = equilibrate(scaled_);
  factors_ = scaled_;
  factor(stop);
  if (!singular_) condition_ = norm_1(scaled_) * inverse_norm();
  if (loss() <= kMostLoss) return;
  doubled_.emplace(scaled_, stop);
  singular_ = doubled_->is_singular();
  condition_ = singular_ ? HUGE_VAL : norm_1(scaled_) * inverse_norm();
}

double Solver::loss() const {
  return condition_ * (doubled_ ? kDoubledEpsilon : kEpsilon) * scaled_.rows;
}

bool Solver::is_hopeless() const {
  constexpr double kMostLoss = 0x1p-30;
  return doubled_ && !(loss() <= kMostLoss);
}

// A right side that Hager's steps are known to miss nothing with (Higham, section 15.2).
Vector Solver::unrelated_side() const {
  const auto n = static_cast<std::size_t>(scaled_.rows);
  Vector b(n);
  for (std::size_t i = 0; i < n; ++i)
    b[i] = (i % 2 == 0 ? 1.0 : -1.0) *
           (1.0 + static_cast<double>(i) / std::max(1.0, static_cast<double>(n) - 1.0));
  return b;
}

void Solver::factor(efi::StopFlag stop) {
  const int n = factors_.rows;
  pivots_.resize(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    poll(stop);
    double* const a = factors_.column(k);
    const int p = index_of_largest(a, k, n);
    pivots_[static_cast<std::size_t>(k)] = p;
    if (a[p] == 0.0) {
      singular_ = true;
      return;
    }
    if (p != k)
      for (int j = 0; j < n; ++j) std::swap(factors_(p, j), factors_(k, j));
    for (int i = k + 1; i < n; ++i) a[i] /= a[k];
    // column j := column j - u · multipliers
    for (int j = k + 1; j < n; ++j) {
      double* const b = factors_.column(j);
      const double u = b[k];
      if (u == 0.0) continue;
      for (int i = k + 1; i < n; ++i) b[i] -= a[i] * u;
    }
  }
}

Vector Solver::solve(Vector b) const {
  if (doubled_) return doubled_->solve(b);
  const int n = factors_.rows;
  for (std::size_t k = 0; k < b.size(); ++k)
    std::swap(b[k], b[static_cast<std::size_t>(pivots_[k])]);
  for (int k = 0; k < n; ++k) {
    const double x = b[static_cast<std::size_t>(k)];
    for (int i = k + 1; i < n; ++i) b[static_cast<std::size_t>(i)] -= factors_(i, k) * x;
  }
  for (int k = n; k-- > 0;) {
    const double x = b[static_cast<std::size_t>(k)] /= factors_(k, k);
    for (int i = 0; i < k; ++i) b[static_cast<std::size_t>(i)] -= factors_(i, k) * x;
  }
  return b;
}

Vector Solver::solve_transposed(Vector b) const {
  if (doubled_) return doubled_->solve_transposed(b);
  const auto n = b.size();
  for (std::size_t k = 0; k < n; ++k) {
    const double* const a = factors_.column(static_cast<int>(k));
    b[k] = (b[k] - dot(a, b.data(), k)) / a[k];
  }
  for (std::size_t k = n; k-- > 0;) {
    const double* const a = factors_.column(static_cast<int>(k));
    b[k] -= dot(a + k + 1, b.data() + k + 1, n - k - 1);
  }
  for (std::size_t k = n; k-- > 0;) std::swap(b[k], b[static_cast<std::size_t>(pivots_[k])]);
  return b;
}

namespace {

double sum_of_magnitudes(const Vector& x) {
  double sum = 0.0;
  for (const double a : x) sum += std::fabs(a);
  return sum;
}

}  // namespace

double Solver::inverse_norm() const {
  constexpr int kMostSteps = 5;
  const auto n = static_cast<std::size_t>(factors_.rows);
  Vector x(n, 1.0 / static_cast<double>(n));
  double estimate = 0.0;
  for (int step = 0; step < kMostSteps; ++step) {
    const Vector y = solve(x);
    const double norm = sum_of_magnitudes(y);
    if (!std::isfinite(norm)) return HUGE_VAL;
    if (step > 0 && norm <= estimate) break;
    estimate = norm;
    Vector signs(n);
    std::transform(y.begin(), y.end(), signs.begin(), [](double a) { return a < 0 ? -1.0 : 1.0; });
    const Vector z = solve_transposed(signs);
    const auto most = static_cast<std::size_t>(index_of_largest(z.data(), 0, factors_.rows));
    if (step > 0 && std::fabs(z[most]) <= dot(z.data(), x.data(), n)) break;
    x.assign(n, 0.0);
    x[most] = 1.0;
  }
  const double other =
      2.0 * sum_of_magnitudes(solve(unrelated_side())) / (3.0 * static_cast<double>(n));
  return std::max(estimate, other);
}

bool Solver::refine(const Vector2& b, Vector2& x) const {
  constexpr int kMostSteps = 12;
  constexpr double kEnough = 0x1p-70, kContraction = 0.5, kStalled = 0x1p-40;
  // A correction, itself a double, is good to this: the next one is smaller by it.
  const double rate = std::max(loss(), kEpsilon);
  double before = HUGE_VAL;
  for (int step = 0; step < kMostSteps; ++step) {
    Vector2 r = b;
    add_product(scaled_, x, -1.0, r);
    for (std::size_t i = 0; i < r.size(); ++i) r.hi[i] += r.lo[i];
    const Vector d = solve(std::move(r.hi));
    const double now = largest(d);
    for (std::size_t i = 0; i < d.size(); ++i) x.add(i, {d[i], 0.0});
    const double size = largest(x.hi);
    if (now * rate <= kEnough * size) return true;
    if (!(now <= kContraction * before)) return std::min(now, before) <= kStalled * size;
    before = now;
  }
  return before <= kStalled * largest(x.hi);
}

std::optional<Vector> Solver::refined_solution(const Vector& b) const {
  Vector2 x(solve(b));
  if (!refine(Vector2(b), x)) return std::nullopt;
  return std::move(x.hi);
}

}  // namespace audit
