#include "eigen/symmetric/ql_iteration.hpp"

#include <cmath>

#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/rotation_batch.hpp"

// d is the diagonal, and e[i] stands between d[i] and d[i+1]. The eigenvalues 0..l-1 are done, and
// the active block is l..m.

namespace matrix_pack {

namespace {

// Sweeps that one eigenvalue may take.
constexpr int kMostSweeps = 30;

// Up to this order the work stands on the stack.
constexpr int kFewInIteration = 4;

// The first m >= l behind which the matrix splits: e[m] no longer changes its neighbours on the
// diagonal. e[n-1] = 0 ends the search.
int find_split(const double* d, const double* e, int l, int n) {
  int m = l;
  for (; m < n - 1; ++m) {
    const double neighbours = std::fabs(d[m]) + std::fabs(d[m + 1]);
    if (std::fabs(e[m]) + neighbours == neighbours) break;
  }
  return m;
}

// d[m] less the eigenvalue of the leading 2x2 block of l..m that is nearer to d[l].
double shifted_end(const double* d, const double* e, int l, int m) {
  const double ratio = (d[l + 1] - d[l]) / (2.0 * e[l]);
  const double root = std::sqrt(ratio * ratio + 1.0);
  return d[m] - d[l] + e[l] / (ratio + (ratio >= 0.0 ? root : -root));
}

// One sweep from m up to l: rotation i, of the cosine c and the sine s, annihilates the bulge that
// the one before has made beside g. `taken` goes from each diagonal element to the one below it.
// The rotations of columns m and m - 1, m - 1 and m - 2... go to `rotations` unless it is null.
// Kept: a zero radius has no case of its own.
void sweep(double* d, double* e, int l, int m, Rotation* rotations) {
  double g = shifted_end(d, e, l, m);
  double s = 1.0;
  double c = 1.0;
  double taken = 0.0;
  for (int i = m - 1; i >= l; --i) {
    const double bulge = s * e[i];
    const double beside = c * e[i];
    if (std::fabs(bulge) >= std::fabs(g)) {
      c = g / bulge;
      const double radius = std::sqrt(c * c + 1.0);
      e[i + 1] = bulge * radius;
      s = 1.0 / radius;
      c = c * s;
    } else {
      s = bulge / g;
      const double radius = std::sqrt(s * s + 1.0);
      e[i + 1] = g * radius;
      c = 1.0 / radius;
      s = s * c;
    }
    const double below = d[i + 1] - taken;
    const double r = (d[i] - below) * s + 2.0 * c * beside;
    taken = s * r;
    d[i + 1] = below + taken;
    g = c * r - beside;
    if (rotations != nullptr) *rotations++ = {c, s};
  }
  d[l] = d[l] - taken;
  e[l] = g;
  e[m] = 0.0;
}

const char* iterate(int n, double* d, double* e, RotationBatch* kept) {
  for (int i = 1; i < n; ++i) e[i - 1] = e[i];
  e[n - 1] = 0.0;
  for (int l = 0; l < n; ++l) {
    for (int sweeps = 0;; ++sweeps) {
      const int m = find_split(d, e, l, n);
      if (m == l) break;
      if (sweeps == kMostSweeps) return kTooManyIterations;
      sweep(d, e, l, m, kept == nullptr ? nullptr : kept->sweep(n - 1 - m, m - l));
    }
  }
  return nullptr;
}

}  // namespace

const char* tridiagonal_ql(int n, double* d, double* e) {
  return iterate(n, d, e, nullptr);
}

const char* tridiagonal_ql_with_vectors(int n, double* d, double* e, RealView z) {
  const Work<Rotation, kept_rotations(kFewInIteration)> rotations(kept_rotations(n));
  const Work<double, panel_size(kFewInIteration)> panel(panel_size(n));
  if (!rotations || !panel) return kOutOfMemory;
  // A sweep rises: its columns are counted from the last one down.
  RotationBatch kept(n, {z.column(n - 1), -z.ld}, n, rotations.get(), panel.get());
  if (const char* message = iterate(n, d, e, &kept)) return message;
  kept.finish();
  return nullptr;
}

}  // namespace matrix_pack
