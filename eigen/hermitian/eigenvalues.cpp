#include "eigen/hermitian/eigenvalues.hpp"

#include <cmath>

#include "eigen/hermitian/tridiagonal.hpp"
#include "pack/checks.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Sweeps that one eigenvalue may take.
constexpr int kMostSweeps = 30;

// The rational QL method on the diagonal d and the squares e2 of the elements beside it, e2[i]
// between d[i] and d[i + 1]. The eigenvalues found so far are d[0..l-1], ascending; the active
// block is l..m. Eigenvalues are less by the sum of all shifts while they are in the making.
struct RationalQl {
  Index n;
  double* d;
  double* e2;
  double shifted = 0.0;       // The sum of all shifts.
  double tiny = 0.0;          // What counts as zero beside the diagonal,
  double tiny_squared = 0.0;  // and its square.

  // The end of the block that begins at l. (e2[n - 1] is 0 at first; a NaN may take its place.)
  Index block_end(Index l) const {
    Index m = l;
    while (m < n - 1 && !(e2[m] <= tiny_squared)) ++m;
    return m;
  }

  // Shifts l...n - 1 by an eigenvalue of the leading 2 x 2 block of l...m.
  void shift(Index l) {
    const double beside = std::sqrt(e2[l]);
    const double before = d[l];
    const double ratio = (d[l + 1] - before) / (2.0 * beside);
    const double root = std::sqrt(ratio * ratio + 1.0);
    d[l] = beside / (ratio + (ratio < 0.0 ? -root : root));
    const double h = before - d[l];
    for (Index i = l + 1; i < n; ++i) d[i] -= h;
    shifted += h;
  }

  double nonzero(double g) const { return g == 0.0 ? tiny : g; }

  // One sweep from m up to l; returns the new d[l]. No roots are taken: s is the square of a
  // rotation's sine, g the diagonal element that elimination from below would leave, and h is g
  // times the square of the cosine.
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

  // Makes d[l] an eigenvalue, but for the shifts; false when it does not converge.
  bool find_value(Index l) {
    const double size = kEps * (std::fabs(d[l]) + std::sqrt(e2[l]));
    if (tiny <= size) {
      tiny = size;
      tiny_squared = tiny * tiny;
    }
    const Index m = block_end(l);
    if (m == l) return true;
    for (int sweeps = 0; sweeps < kMostSweeps; ++sweeps) {
      shift(l);
      const double h = sweep(l, m);
      if (h == 0.0 || std::fabs(e2[l]) <= std::fabs(tiny_squared / h)) return true;
      e2[l] *= h;
    }
    return false;
  }

  // Moves the eigenvalue l to its place among those found, behind those equal to it.
  void insert(Index l) {
    const double value = d[l] + shifted;
    Index i = l;
    for (; i > 0 && !(d[i - 1] <= value); --i) d[i] = d[i - 1];
    d[i] = value;
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
