// Checks of svd and svds.
#include <algorithm>
#include <cmath>

#include "fmt/format.h"
#include "host/audit/second_call.hpp"

namespace audit {

namespace {

// Qᵀ (Q x) - x for a random x.
double loss_of_orthogonality(const Matrix& Q, Random& random) {
  const Vector x = random_signs(random, static_cast<std::size_t>(Q.cols));
  const Vector y = transposed_product(Q, product(Q, x));
  double most = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) most = std::max(most, std::fabs(y[i] - x[i]));
  return std::isfinite(euclidean(y)) ? most : 1.0;
}

}  // namespace

// ‖A V - U S‖ / ‖A‖ with S from the vectors, its order and signs, and the orthogonality of U and V,
// as LAPACK's tests measure them.
Verdict check_svd(const Request& r) {
  const auto parts = r.store.parts(r.result);
  Matrix A = parts_of(matrix_at(r, 0)).re;
  if (parts.size() != 2 || parts[0]->rows != A.rows || parts[0]->cols != A.cols ||
      parts[1]->rows != A.cols || parts[1]->cols != A.cols)
    return {};
  const Matrix U = parts_of(parts[0]).re, V = parts_of(parts[1]).re;
  normalize(A);
  const double size = std::max(frobenius(A), 0x1p-1000);
  double error = 0.0, before = HUGE_VAL;
  for (int j = 0; j < A.cols; ++j) {
    poll(r.stop);
    Vector w = product(A, Vector(V.column(j), V.column(j) + A.cols));
    const double s = dot(w.data(), U.column(j), w.size());
    for (std::size_t i = 0; i < w.size(); ++i) w[i] -= s * U.column(j)[i];
    error = std::max({error, euclidean(w) / size, (s - before) / size, -s / size});
    before = s;
  }
  Random random = random_for(matrix_at(r, 0), 10);
  // Columns of U for values of 0 need no length.
  error = std::max({error, loss_of_orthogonality(U, random), loss_of_orthogonality(V, random)});
  return {.error = error, .cause = "U S V' is not the matrix"};
}

// A second call with rows and columns in another order, scaled, and with noise of the norm's
// rounding; and the Euclidean norm, which any order can afford.
Verdict check_svds(const Request& r) {
  constexpr double kSafety = 2.0;
  const aMatrix* const m = matrix_at(r, 0);
  Parts A = parts_of(m);
  const int power = normalize(A.re);
  Vector s = parts_of(result_matrix(r)).re.elements;
  scale(s, power);
  const double size = frobenius(A.re);
  if (size == 0.0) return {.error = largest(s) == 0.0 ? 0.0 : 1.0};
  const double of_norm = std::fabs(euclidean(s) - size) / size;
  if (!(of_norm <= 1e-6)) return {.error = of_norm, .cause = "their squares do not add up"};
  if (!is_cheap(r, A.re.cols)) return {};
  Random random = random_for(m, 11);
  const auto cols = random_order(random, A.re.cols), rows = random_order(random, A.re.rows);
  A.re = permuted(A.re, rows, cols);
  add_noise(A.re, kEpsilon * size / std::sqrt(A.re.rows), false, random);
  const Parts* const matrices[] = {&A};
  const Numbers second = numbers_of(call_again(r, matrices, nullptr));
  if (second.size() != s.size()) return {.error = of_norm};
  double apart = kEpsilon * size;
  for (std::size_t k = 0; k < s.size(); ++k)
    apart = std::max(apart, kSafety * std::fabs(s[k] - second[k].real()));
  Verdict verdict = {.error = apart / s[0], .cause = "a second run gives others"};
  const bool small =
      std::any_of(s.begin(), s.end(), [&](double x) { return x > 0.0 && x < 1e6 * apart; });
  if (small)
    verdict.note =
        fmt::format("values below {:.0e} have no six digits", std::ldexp(1e6 * apart, -power));
  return verdict;
}

}  // namespace audit
