// Checks of rref and rank.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/numeric/double_double.hpp"
#include "host/audit/numeric/singular.hpp"

namespace audit {

namespace {

// The columns of the echelon form that are unit vectors, each a row lower than the one before.
std::vector<int> pivot_columns(const Matrix& R) {
  std::vector<int> pivots;
  for (int c = 0; c < R.cols && static_cast<int>(pivots.size()) < R.rows; ++c) {
    const double* const column = R.column(c);
    const auto others = std::count_if(column, column + R.rows, [](double x) { return x != 0.0; });
    if (others == 1 && column[pivots.size()] == 1.0) pivots.push_back(c);
  }
  return pivots;
}

// The least-squares solution y of B y = a, with one refinement in twice the digits.
Vector least_squares(const Matrix& B, const SingularForm& form, const Vector& a) {
  const auto solve = [&](const Vector& b) {
    Vector c = transposed_product(form.U, b);
    for (std::size_t k = 0; k < c.size(); ++k) c[k] /= form.s[k];
    return product(form.V, c);
  };
  Vector2 y(solve(a)), residual(a);
  add_product(B, y, -1.0, residual);
  const Vector d = solve(residual.hi);
  for (std::size_t k = 0; k < d.size(); ++k) y.add(k, {d[k], 0.0});
  return y.hi;
}

// How far the other columns of the form R are from the combinations of the pivot columns of the
// matrix that they state, against the largest.
double refit_error(const Matrix& A, const Equilibration& by, const Matrix& R,
                   const std::vector<int>& pivots, const Matrix& B, const SingularForm& form) {
  double error = 0.0, size = 1.0;
  for (int j = 0; j < A.cols; ++j) {
    if (std::find(pivots.begin(), pivots.end(), j) != pivots.end()) continue;
    Vector y = least_squares(B, form, Vector(A.column(j), A.column(j) + A.rows));
    for (std::size_t k = 0; k < y.size(); ++k) {
      y[k] = std::ldexp(y[k], by.cols[static_cast<std::size_t>(pivots[k])] -
                                  by.cols[static_cast<std::size_t>(j)]);
      error = std::max(error, std::fabs(y[k] - R(static_cast<int>(k), j)));
      size = std::max(size, std::fabs(y[k]));
    }
    for (int i = static_cast<int>(y.size()); i < R.rows; ++i)
      error = std::max(error, std::fabs(R(i, j)));
  }
  return error / size;
}

}  // namespace

// The pivot columns are independent, as many as the numerical rank of the matrix with rows and
// columns brought to one size; and the other columns are the combinations of them that the form
// states.
Verdict check_rref(const Request& r) {
  Matrix A = parts_of(matrix_at(r, 0)).re;
  const Matrix R = parts_of(result_matrix(r)).re;
  if (!is_cheap(r, std::max(A.rows, A.cols))) return {};
  const std::vector<int> pivots = pivot_columns(R);
  const auto taken = static_cast<int>(pivots.size());
  if (largest(A) == 0.0) return {.error = 0.0};
  const Equilibration by = equilibrate(A);
  const int rank = numerical_rank(singular_values(A, r.stop), A.rows, A.cols);
  if (rank != taken)
    return alarm(fmt::format("{} {} taken, the singular values say rank {}", taken,
                             taken == 1 ? "pivot" : "pivots", rank));
  if (taken == 0) return {.error = 0.0};
  Matrix B(A.rows, taken);
  for (int k = 0; k < taken; ++k)
    std::copy_n(A.column(pivots[static_cast<std::size_t>(k)]), A.rows, B.column(k));
  const SingularForm form = singular_form(B, r.stop);
  const double ratio = form.s.back() / form.s.front();
  if (!(ratio > kEpsilon * std::max(A.rows, A.cols)))
    return alarm("the pivot columns are dependent to working precision");
  return {.error = std::max(refit_error(A, by, R, pivots, B, form), kEpsilon),
          .cause = fmt::format("the pivot columns have condition {:.0e}", 1.0 / ratio)};
}

namespace {

// A value that stays within this factor of the tolerance might as well be on its other side.
constexpr double kDoubtful = 50.0;

// Those of the values that are above the tolerance, but not by much.
int doubtful_values(const Vector& s, int m, int n) {
  const double tolerance = s[0] * std::max(m, n) * kEpsilon;
  return static_cast<int>(std::count_if(
      s.begin(), s.end(), [&](double x) { return x > tolerance && x <= kDoubtful * tolerance; }));
}

}  // namespace

Verdict check_rank(const Request& r) {
  Matrix A = parts_of(matrix_at(r, 0)).re;
  const auto given = static_cast<int>(result_number(r));
  if (!is_cheap(r, std::max(A.rows, A.cols))) return {};
  normalize(A);
  const Vector s = singular_values(A, r.stop);
  if (s[0] == 0.0) return {.error = given == 0 ? 0.0 : 1.0};
  const int doubtful = doubtful_values(s, A.rows, A.cols);
  const int plain = numerical_rank(s, A.rows, A.cols);
  if (doubtful > 0)
    return alarm(fmt::format("{} or {}: {} only just above the tolerance", plain - doubtful, plain,
                             doubtful == 1 ? "a singular value is" : "singular values are"));
  if (plain != given) return alarm(fmt::format("the singular values say {}", plain));
  equilibrate(A);
  const Vector t = singular_values(A, r.stop);
  const int even = numerical_rank(t, A.rows, A.cols);
  if (even != given && doubtful_values(t, A.rows, A.cols) == 0)
    return alarm(fmt::format(
        "with rows and columns of one size it is {}: small ones do not count here", even));
  return {.error = 0.0};
}

}  // namespace audit
