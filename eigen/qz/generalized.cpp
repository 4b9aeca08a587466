// genvals and genvecs: the finite eigenvalues and the eigenvectors of M x = lambda N x.
#include <cmath>

#include "eigen/eigen.hpp"
#include "eigen/qz/driver.hpp"
#include "eigen/qz/finite_eigenvalues.hpp"
#include "linsys/rank.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

enum class Wanted { values, vectors };

constexpr const char* kNoSolution = "no solution found";

// TOL is a real number t with 0 < t <= 1. The comparisons are quiet: a NaN is refused like any
// other number outside.
bool is_legal(const aComplex* tolerance) {
  return tolerance->im == 0.0 && std::isgreater(tolerance->re, 0.0) &&
         std::islessequal(tolerance->re, 1.0);
}

// The checks in order; null when all pass.
Anyval* check(EfiCallContext* context, aMatrix* m, aMatrix* n, const aComplex* tolerance) {
  if (is_complex(m)) return argument_error(context, 1, kMustBeReal);
  if (is_complex(n)) return argument_error(context, 2, kMustBeReal);
  if (m->rows != m->cols) return argument_error(context, 1, kMustBeSquare);
  if (n->rows != n->cols) return argument_error(context, 2, kMustBeSquare);
  if (m->rows != n->rows) return call_error(context, "incompatible dimensions");
  if (contains_ptrs(m)) return argument_error(context, 1, kMayNotBeNested);
  if (contains_ptrs(n)) return argument_error(context, 2, kMayNotBeNested);
  if (!is_legal(tolerance)) return call_error(context, "illegal TOL");
  return nullptr;
}

Anyval* one_by_one(EfiCallContext* context, double x) {
  Doubles re = new_part(1, 1);
  if (!re) return sError_OutOfMemory;
  re[0] = x;
  return matrix_result(new_matrix(context, 1, 1, std::move(re)));
}

// Order 1. Where a is 0 and b is not, there is an eigenvalue but no eigenvector: kept, hosts rely
// on it.
Anyval* solve_order_one(EfiCallContext* context, double a, double b, Wanted wanted) {
  if (b == 0.0) return call_error(context, a == 0.0 ? kSingularity : kNoSolution);
  if (wanted == Wanted::values) return one_by_one(context, a == 0.0 ? 0.0 : a / b);
  return a == 0.0 ? call_error(context, kNoSolution) : one_by_one(context, 1.0);
}

// What a driver delivers.
struct Solution {
  aMatrix* values = nullptr;
  aMatrix* vectors = nullptr;
  int count = 0;
};

const char* solve(EfiCallContext* context, aMatrix* a, aMatrix* b, Wanted wanted,
                  Solution* solution) {
  return wanted == Wanted::values
             ? genvals_driver(context, a, b, &solution->values, &solution->count)
             : genvecs_driver(context, a, b, &solution->values, &solution->vectors,
                              &solution->count);
}

Anyval* solve_direct(EfiCallContext* context, aMatrix* m, aMatrix* n, Wanted wanted) {
  Solution solution;
  if (const char* message = solve(context, m, n, wanted, &solution))
    return call_error(context, message);
  if (solution.count == 0) return call_error(context, kNoSolution);
  return wanted == Wanted::values ? solution.values : solution.vectors;
}

// N x = mu M x in place of M x = lambda N x, for a singular N: the infinite lambda become zero mu.
Anyval* solve_exchanged(EfiCallContext* context, aMatrix* m, aMatrix* n, double tolerance,
                        Wanted wanted) {
  Solution solution;
  if (const char* message = solve(context, n, m, wanted, &solution))
    return call_error(context, message);
  const auto& [values, vectors, count] = solution;
  const int kept = count_nonzero(values, count, tolerance);
  if (kept == 0) return call_error(context, kNoSolution);
  return wanted == Wanted::values ? reciprocals(context, values, count, tolerance, kept)
                                  : kept_columns(context, values, vectors, count, tolerance, kept);
}

// Order 2 and above.
Anyval* solve_general(EfiCallContext* context, aMatrix* m, aMatrix* n, double tolerance,
                      Wanted wanted) {
  aMatrix* m_copy = nullptr;
  if (const char* message = matrix_copy(context, m, &m_copy)) return call_error(context, message);
  aMatrix* n_copy = nullptr;
  if (const char* message = matrix_copy(context, n, &n_copy)) return call_error(context, message);
  Anyval* m_rank = rank_worker(context, m);
  if (!is_scalar(m_rank)) return m_rank;
  Anyval* n_rank = rank_worker(context, n);
  if (!is_scalar(n_rank)) return n_rank;
  const bool exchanged = as_scalar(n_rank)->re < n->rows && as_scalar(m_rank)->re == m->rows;
  Anyval* result = exchanged ? solve_exchanged(context, m_copy, n_copy, tolerance, wanted)
                             : solve_direct(context, m_copy, n_copy, wanted);
  if (wanted == Wanted::vectors && is_matrix(result)) renormalize_matrix_cols(as_matrix(result));
  return result;
}

// The worker of both functions.
Anyval* generalized_real(EfiCallContext* context, aMatrix* m, aMatrix* n, const aComplex* tolerance,
                         Wanted wanted) {
  if (Anyval* error = check(context, m, n, tolerance)) return error;
  if (m->rows == 1) return solve_order_one(context, elem_re(m, 0, 0), elem_re(n, 0, 0), wanted);
  return solve_general(context, m, n, tolerance->re, wanted);
}

// The handler of both.
Anyval* handle(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance, Wanted wanted) {
  return guarded(context, [=] {
    if (!is_matrix(m)) return argument_error(context, 1, kMustBeArray);
    if (!is_matrix(n)) return argument_error(context, 2, kMustBeArray);
    if (!is_scalar(tolerance)) return call_error(context, "illegal TOL");
    return generalized_real(context, as_matrix(m), as_matrix(n), as_scalar(tolerance), wanted);
  });
}

}  // namespace

Anyval* genvals(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance) {
  return handle(context, m, n, tolerance, Wanted::values);
}

Anyval* genvecs(EfiCallContext* context, Anyval* m, Anyval* n, Anyval* tolerance) {
  return handle(context, m, n, tolerance, Wanted::vectors);
}

}  // namespace matrix_pack
