// Checks of condition numbers: the norm of the inverse once more, from solutions refined to twice
// the digits.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/numeric/golub_kahan.hpp"
#include "host/audit/numeric/solver.hpp"

namespace audit {

namespace {

// A, transposed for the norm of rows, with its inverse column by column.
class Inverse {
 public:
  Inverse(const Parts& parts, efi::StopFlag stop)
      : n_(static_cast<std::size_t>(parts.re.rows)),
        stop_(stop),
        solver_(real_form(parts, parts.is_complex()), stop) {}

  const Solver& solver() const { return solver_; }

  // Column j of A⁻¹ as magnitudes times 2^-shift(), plain or refined; nothing where that fails.
  std::optional<Vector> column(std::size_t j, bool refined) const {
    poll(stop_);
    const auto& [rows, cols] = solver_.scaling();
    Vector b(static_cast<std::size_t>(solver_.matrix().rows));
    b[j] = 1.0;
    std::optional<Vector> x = refined ? solver_.refined_solution(b) : solver_.solve(b);
    if (!x) return x;
    // A⁻¹ e_j = D_c A_s⁻¹ D_r e_j
    for (std::size_t i = 0; i < x->size(); ++i)
      (*x)[i] = std::ldexp((*x)[i], cols[i] + rows[j] - shift_);
    for (std::size_t i = 0; x->size() > n_ && i < n_; ++i)
      (*x)[i] = std::hypot((*x)[i], (*x)[n_ + i]);
    x->resize(n_);
    for (double& a : *x) a = std::fabs(a);
    return x;
  }
  // From here on columns are so scaled that the largest element is about 1.
  void find_shift() {
    const auto& [rows, cols] = solver_.scaling();
    int most = kZeroExponent;
    for (std::size_t j = 0; j < n_; ++j) {
      poll(stop_);
      Vector b(static_cast<std::size_t>(solver_.matrix().rows));
      b[j] = 1.0;
      most = std::max(most, exponent(solver_.solve(b), cols) + rows[j]);
    }
    shift_ = most;
  }
  int shift() const { return shift_; }
  std::size_t order() const { return n_; }

 private:
  std::size_t n_;
  efi::StopFlag stop_;
  Solver solver_;
  int shift_ = 0;
};

double sum_of(const Vector& x) {
  double sum = 0.0;
  for (const double a : x) sum += a;
  return sum;
}

// The largest column sum of the inverse, refined; nothing where that fails.
std::optional<double> inverse_norm_1(const Inverse& inverse) {
  double most = 0.0;
  std::size_t of = 0;
  for (std::size_t j = 0; j < inverse.order(); ++j) {
    const double sum = sum_of(*inverse.column(j, false));
    if (sum > most) of = j;
    most = std::max(most, sum);
  }
  const auto column = inverse.column(of, true);
  if (!column) return std::nullopt;
  return sum_of(*column);
}

// The same for the Euclidean norm.
std::optional<double> inverse_norm_e(const Inverse& inverse) {
  double sum = 0.0;
  for (std::size_t j = 0; j < inverse.order(); ++j) {
    const auto column = inverse.column(j, true);
    if (!column) return std::nullopt;
    sum += dot(column->data(), column->data(), column->size());
  }
  return std::sqrt(sum);
}

// The norm of the inverse as a map, by its products with vectors; nothing where refining fails.
std::optional<double> inverse_norm_2(const Inverse& inverse, const Request& r) {
  const Solver& solver = inverse.solver();
  const auto& [rows, cols] = solver.scaling();
  const auto scaled = [&](Vector x, const Exponents& e, int shift) {
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::ldexp(x[i], e[i] - shift);
    return x;
  };
  const int shift = inverse.shift();
  const LargestValue most = largest_singular_value(
      [&](const Vector& x) { return scaled(solver.solve(scaled(x, rows, 0)), cols, shift); },
      [&](const Vector& x) {
        return scaled(solver.solve_transposed(scaled(x, cols, shift)), rows, 0);
      },
      solver.matrix().rows, random_for(matrix_at(r, 0), 12), r.stop);
  const auto y = solver.refined_solution(scaled(most.right, rows, 0));
  if (!y) return std::nullopt;
  return euclidean(scaled(*y, cols, shift));
}

// The verdict on a condition number that should be 2^shift norm inverse_norm.
Verdict compare(double given, double norm, double inverse_norm, int shift, double condition) {
  const double right = norm * inverse_norm;
  return {.error = std::fabs(std::ldexp(given, -shift) - right) / right,
          .cause = fmt::format("the matrix, scaled, has condition {:.0e}", condition)};
}

enum class Norm { one, infinity, euclidean };

double norm_of(const Matrix& magnitudes, Norm norm) {
  return norm == Norm::euclidean ? frobenius(magnitudes) : norm_1(magnitudes);
}

Verdict check(const Request& r, Norm norm) {
  Parts parts = parts_of(matrix_at(r, 0));
  const int n = parts.re.rows;
  const double given = result_number(r);
  const double least = norm == Norm::euclidean ? n : 1;
  if (!(given >= least * (1 - 1e-6))) return alarm(fmt::format("it is at least {}", least));
  if (norm == Norm::infinity) {
    parts.re = transposed(parts.re);
    if (parts.is_complex()) parts.im = transposed(parts.im);
  }
  normalize(parts);
  if (!is_cheap(r, n)) return {};
  Inverse inverse(parts, r.stop);
  const double condition = inverse.solver().condition();
  if (inverse.solver().is_hopeless()) return {.error = 1.0, .cause = kSingular};
  Matrix magnitudes = parts.re;
  for (std::size_t k = 0; parts.is_complex() && k < magnitudes.elements.size(); ++k)
    magnitudes.elements[k] = std::hypot(parts.re.elements[k], parts.im.elements[k]);
  inverse.find_shift();
  const auto of_inverse =
      norm == Norm::euclidean ? inverse_norm_e(inverse) : inverse_norm_1(inverse);
  if (!of_inverse) return {.error = 1.0, .cause = kSingular};
  return compare(given, norm_of(magnitudes, norm), *of_inverse, inverse.shift(), condition);
}

}  // namespace

Verdict check_cond2(const Request& r) {
  Parts parts = parts_of(matrix_at(r, 0));
  const double given = result_number(r);
  if (!(given >= 1 - 1e-6)) return alarm("it is at least 1");
  if (!is_cheap(r, parts.re.rows)) return {};
  normalize(parts);
  Inverse inverse(parts, r.stop);
  const double condition = inverse.solver().condition();
  if (inverse.solver().is_hopeless()) return {.error = 1.0, .cause = kSingular};
  inverse.find_shift();
  const auto of_inverse = inverse_norm_2(inverse, r);
  if (!of_inverse) return {.error = 1.0, .cause = kSingular};
  const double norm = largest_singular_value(parts, random_for(matrix_at(r, 0), 13), r.stop).value;
  return compare(given, norm, *of_inverse, inverse.shift(), condition);
}

Verdict check_cond1(const Request& r) {
  return check(r, Norm::one);
}
Verdict check_condi(const Request& r) {
  return check(r, Norm::infinity);
}
Verdict check_conde(const Request& r) {
  return check(r, Norm::euclidean);
}

}  // namespace audit
