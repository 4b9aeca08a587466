#include "eigen/hermitian/eigenvalues.hpp"

#include <cmath>

#include "eigen/hermitian/tridiagonal.hpp"
#include "pack/checks.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Iterations that one eigenvalue may take.
constexpr int kMaxIterations = 30;

// The rational QL method on the diagonal d and the squares e2 of the elements beside it, e2[i]
// between d[i] and d[i + 1].
struct RationalQl {
  Index n;
  double* d;
  double* e2;
  double f = 0.0;  // The sum of all shifts.
  double b = 0.0;  // What counts as zero beside the diagonal, and its square.
  double c = 0.0;

  // The end of the block that begins at l. (e2[n - 1] is 0 at first; a NaN may take its place.)
  Index block_end(Index l) const {
    Index m = l;
    while (m < n - 1 && !(e2[m] <= c)) ++m;
    return m;
  }

  // Shifts l...n - 1 by an eigenvalue of the leading 2 x 2 block of l...m.
  void shift(Index l) {
    const double s = std::sqrt(e2[l]);
    const double g = d[l];
    const double p = (d[l + 1] - g) / (2.0 * s);
    const double r = std::sqrt(p * p + 1.0);
    d[l] = s / (p + (p < 0.0 ? -r : r));
    const double h = g - d[l];
    for (Index i = l + 1; i < n; ++i) d[i] -= h;
    f += h;
  }

  double nonzero(double g) const { return g == 0.0 ? b : g; }

  // One sweep from m up to l; returns the new d[l].
  double sweep(Index l, Index m) {
    double g = nonzero(d[m]);
    double h = g;
    double s = 0.0;
    for (Index i = m - 1; i >= l; --i) {
      const double p = g * h;
      const double r = p + e2[i];
      e2[i + 1] = s * r;
      s = e2[i] / r;
      d[i + 1] = h + s * (h + d[i]);
      g = nonzero(d[i] - e2[i] / g);
      h = g * p / r;
    }
    e2[l] = s * g;
    d[l] = h;
    return h;
  }

  // Turns d[l] + f into an eigenvalue; false when it does not converge.
  bool find_value(Index l) {
    const double size = kEps * (std::fabs(d[l]) + std::sqrt(e2[l]));
    if (b <= size) {
      b = size;
      c = b * b;
    }
    const Index m = block_end(l);
    if (m == l) return true;
    for (int j = 0; j < kMaxIterations; ++j) {
      shift(l);
      const double h = sweep(l, m);
      if (h == 0.0 || std::fabs(e2[l]) <= std::fabs(c / h)) return true;
      e2[l] *= h;
    }
    return false;
  }

  // Moves d[l] + f to its place among the l eigenvalues found, behind those equal to it.
  void insert(Index l) {
    const double p = d[l] + f;
    Index i = l;
    for (; i > 0 && !(d[i - 1] <= p); --i) d[i] = d[i - 1];
    d[i] = p;
  }
};

// The eigenvalues, ascending, to d; false when one does not converge.
bool rational_ql(Index n, double* d, double* e2) {
  if (n == 1) return true;
  for (Index i = 0; i + 1 < n; ++i) e2[i] = e2[i + 1];
  e2[n - 1] = 0.0;
  RationalQl ql{n, d, e2};
  for (Index l = 0; l < n; ++l) {
    if (!ql.find_value(l)) return false;
    ql.insert(l);
  }
  return true;
}

}  // namespace

const char* hermitian_eigenvalues(aMatrix* a, double* d) {
  if (const char* message = check_square(a)) return message;
  const Index n = a->rows;
  const Doubles e2 = new_doubles(n);
  const Doubles work = new_doubles(tridiagonal_work(n));
  if (!e2 || !work) return kOutOfMemory;
  reduce_hermitian(n, {a->re, a->im, a->leading_dimension}, d, e2.get(), work.get());
  return rational_ql(n, d, e2.get()) ? nullptr : kTooManyIterations;
}

}  // namespace matrix_pack
