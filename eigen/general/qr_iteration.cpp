#include "eigen/general/qr_iteration.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/general/qr_sweep.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/vector_kernels.hpp"

// In progress, the rows and columns low..last are still to be done; the active block is
// first..last. What stands behind `last` is final. When the iteration gives up, so are the
// eigenvalues there, but the callers use none of them.

namespace matrix_pack {

namespace {

// Sweeps that one eigenvalue or pair may take, and how often an exceptional shift shakes up an
// iteration that does not settle.
constexpr int kMostSweeps = 40;
constexpr int kExceptionalEvery = 10;

struct Iteration {
  int n;
  RealView h;
  int low;
  double norm;
  int last;
  double shifted;  // The sum of the exceptional shifts.
  int sweeps;      // For the eigenvalue at `last`.
  double* wr;
  double* wi;
  SweepWork& work;
};

// The first row of the active block, behind the last small subdiagonal element. The element becomes
// zero: the block stays split off, though its diagonal will change. Without that, the rows above,
// which only the vectors keep up to date, might join in again, and the vectors might then come in
// another order than the values.
int find_block(const Iteration& it) {
  for (int first = it.last; first > it.low; --first) {
    double s = std::fabs(it.h(first - 1, first - 1)) + std::fabs(it.h(first, first));
    if (s == 0.0) s = it.norm;
    if (std::fabs(it.h(first, first - 1)) <= kEps * s) {
      it.h(first, first - 1) = 0.0;
      return first;
    }
  }
  return it.low;
}

void take_one(Iteration& it) {
  const int last = it.last;
  it.h(last, last) += it.shifted;
  it.wr[last] = it.h(last, last);
  it.wi[last] = 0.0;
  it.last = last - 1;
  it.sweeps = 0;
}

// Rotates the last two rows and columns of H, and the columns of Z, so that the block of a real
// pair becomes triangular. `distance` is the block's first eigenvalue less H(last,last).
void make_triangular(const Iteration& it, double distance) {
  const int last = it.last;
  const int upper = last - 1;
  const double below = it.h(last, upper);
  const double scale = std::fabs(below) + std::fabs(distance);
  double s = below / scale;
  double c = distance / scale;
  const double length = std::sqrt(s * s + c * c);
  s /= length;
  c /= length;
  it.work.apply();
  for (int j = upper; j < it.n; ++j) {
    const double x = it.h(upper, j);
    it.h(upper, j) = c * x + s * it.h(last, j);
    it.h(last, j) = c * it.h(last, j) - s * x;
  }
  vector_kernels().rotate(last + 1, c, s, &it.h(0, upper), &it.h(0, last));
  it.work.rotate_z(upper, c, s);
}

// The eigenvalues of a block of order 2: last + half +- sqrt(half^2 + product), with half of the
// difference of its diagonal and the product of its off-diagonal elements. Of two real ones that
// farther from `last` comes first, the other one from their product.
void take_two(Iteration& it, double product) {
  const int last = it.last;
  const int upper = last - 1;
  const double half = (it.h(upper, upper) - it.h(last, last)) / 2.0;
  const double discriminant = half * half + product;
  const double root = std::sqrt(std::fabs(discriminant));
  const double corner = it.h(last, last) + it.shifted;
  it.h(last, last) = corner;
  it.h(upper, upper) += it.shifted;
  if (discriminant >= 0.0) {
    const double distance = half >= 0.0 ? half + root : half - root;
    it.wr[upper] = it.wr[last] = corner + distance;
    if (distance != 0.0) it.wr[last] = corner - product / distance;
    it.wi[upper] = it.wi[last] = 0.0;
    if (it.work.has_z) make_triangular(it, distance);
  } else {
    it.wr[upper] = it.wr[last] = corner + half;
    it.wi[upper] = root;
    it.wi[last] = -root;
  }
  it.last = last - 2;
  it.sweeps = 0;
}

// The shifts of a double step are the roots of (first - z) (second - z) - product: the eigenvalues
// of a block with this diagonal and this product of the other elements.
struct Shifts {
  double first, second, product;
};

Shifts exceptional_shifts(Iteration& it) {
  const int last = it.last;
  const double x = it.h(last, last);
  it.shifted += x;
  for (int i = it.low; i <= last; ++i) it.h(i, i) -= x;
  const double s = std::fabs(it.h(last, last - 1)) + std::fabs(it.h(last - 1, last - 2));
  return {0.75 * s, 0.75 * s, -0.4375 * (s * s)};
}

// Where the sweep of the block may start, behind two consecutive small subdiagonal elements, and
// the first column of the double step there, scaled.
SweepStart find_start(const Iteration& it, int first, const Shifts& shifts) {
  for (int m = it.last - 2;; --m) {
    const double diagonal = it.h(m, m);
    const double one = shifts.first - diagonal;
    const double other = shifts.second - diagonal;
    double x = (one * other - shifts.product) / it.h(m + 1, m) + it.h(m, m + 1);
    double y = it.h(m + 1, m + 1) - diagonal - one - other;
    double z = it.h(m + 2, m + 1);
    const double size = std::fabs(x) + std::fabs(y) + std::fabs(z);
    x /= size;
    y /= size;
    z /= size;
    const SweepStart start = {m, {x, y, z}};
    if (m == first) return start;
    const double neighbours =
        std::fabs(it.h(m - 1, m - 1)) + std::fabs(diagonal) + std::fabs(it.h(m + 1, m + 1));
    if (std::fabs(it.h(m, m - 1)) * (std::fabs(y) + std::fabs(z)) <=
        kEps * std::fabs(x) * neighbours)
      return start;
  }
}

const char* iterate(Iteration& it) {
  while (it.last >= it.low) {
    const int last = it.last;
    const int first = find_block(it);
    if (first == last) {
      take_one(it);
      continue;
    }
    const double product = it.h(last, last - 1) * it.h(last - 1, last);
    if (first == last - 1) {
      take_two(it, product);
      continue;
    }
    if (it.sweeps == kMostSweeps) return kTooManyIterations;
    Shifts shifts = {it.h(last, last), it.h(last - 1, last - 1), product};
    if (it.sweeps != 0 && it.sweeps % kExceptionalEvery == 0) shifts = exceptional_shifts(it);
    ++it.sweeps;
    it.work.sweep(first, last, find_start(it, first, shifts));
  }
  it.work.finish();
  return nullptr;
}

const char* run(const Balance& b, RealView h, double norm, double* wr, double* wi,
                SweepWork& work) {
  for (int i = 0; i < b.n; ++i) {
    if (i >= b.low && i <= b.high) continue;
    wr[i] = h(i, i);
    wi[i] = 0.0;
  }
  Iteration it = {b.n, h, b.low, norm, b.high, 0.0, 0, wr, wi, work};
  return iterate(it);
}

}  // namespace

double hessenberg_norm(int n, ConstRealView h) {
  double norm = 0.0;
  for (int j = 0; j < n; ++j) {
    const int first = j == 0 ? 1 : 0;
    norm += vector_kernels().sum_abs(std::min(j + 2, n) - first, h.column(j) + first);
  }
  return norm;
}

const char* hessenberg_qr(const Balance& b, RealView h, double norm, double* wr, double* wi) {
  SweepWork work;
  if (!work.open(b.n, h)) return kOutOfMemory;
  return run(b, h, norm, wr, wi, work);
}

const char* hessenberg_qr_with_vectors(const Balance& b, RealView h, double norm, double* wr,
                                       double* wi, RealView z) {
  SweepWork work;
  if (!work.open_with_vectors(b, h, z)) return kOutOfMemory;
  return run(b, h, norm, wr, wi, work);
}

}  // namespace matrix_pack
