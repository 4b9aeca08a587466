#include "eigen/general/qr_iteration.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/cores.hpp"
#include "eigen/general/qr_sweep.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Sweeps that one eigenvalue or pair may take, and how often an exceptional shift shakes up an
// iteration that does not settle.
constexpr int kMostSweeps = 40;
constexpr int kExceptionalEvery = 10;

// An iteration in progress: rows and columns low..en are still to be done.
struct Iteration {
  int n;
  RealView h;
  int low;
  double norm;
  int en;
  double t;    // The sum of the exceptional shifts.
  int sweeps;  // For the eigenvalue at en.
  double* wr;
  double* wi;
  SweepWork& work;
};

// The row of the last small subdiagonal element, where the active block begins. The element becomes
// zero: the block stays split off, though its diagonal will change. Without that, the rows above,
// which only the vectors keep up to date, might join in again, and the vectors might then come in
// another order than the values.
int find_block(const Iteration& it) {
  for (int l = it.en; l > it.low; --l) {
    double s = std::fabs(it.h(l - 1, l - 1)) + std::fabs(it.h(l, l));
    if (s == 0.0) s = it.norm;
    if (std::fabs(it.h(l, l - 1)) <= kEps * s) {
      it.h(l, l - 1) = 0.0;
      return l;
    }
  }
  return it.low;
}

void take_one(Iteration& it) {
  const int en = it.en;
  it.h(en, en) += it.t;
  it.wr[en] = it.h(en, en);
  it.wi[en] = 0.0;
  it.en = en - 1;
  it.sweeps = 0;
}

// Turns rows and columns en-1, en of H, and the columns of Z, so that the block of a real pair
// becomes triangular. `zz` is the block's eigenvalue at en-1 less H(en,en).
void make_triangular(const Iteration& it, double zz) {
  const int en = it.en;
  const int na = en - 1;
  const double x = it.h(en, na);
  const double s = std::fabs(x) + std::fabs(zz);
  double p = x / s;
  double q = zz / s;
  const double r = std::sqrt(p * p + q * q);
  p /= r;
  q /= r;
  for (int j = na; j < it.n; ++j) {
    const double upper = it.h(na, j);
    it.h(na, j) = q * upper + p * it.h(en, j);
    it.h(en, j) = q * it.h(en, j) - p * upper;
  }
  vector_kernels().rotate(en + 1, q, p, &it.h(0, na), &it.h(0, en));
  it.work.rotate_z(na, q, p);
}

// `w` is the product of the block's off-diagonal elements.
void take_two(Iteration& it, double w) {
  const int en = it.en;
  const int na = en - 1;
  const double p = (it.h(na, na) - it.h(en, en)) / 2.0;
  const double q = p * p + w;
  double zz = std::sqrt(std::fabs(q));
  const double x = it.h(en, en) + it.t;
  it.h(en, en) = x;
  it.h(na, na) += it.t;
  if (q >= 0.0) {
    zz = p >= 0.0 ? p + zz : p - zz;
    it.wr[na] = it.wr[en] = x + zz;
    if (zz != 0.0) it.wr[en] = x - w / zz;
    it.wi[na] = it.wi[en] = 0.0;
    if (it.work.has_z) make_triangular(it, zz);
  } else {
    it.wr[na] = it.wr[en] = x + p;
    it.wi[na] = zz;
    it.wi[en] = -zz;
  }
  it.en = en - 2;
  it.sweeps = 0;
}

// The sum and product of the shifts: x and y are they by themselves when w = 0.
struct Shifts {
  double x, y, w;
};

Shifts exceptional_shifts(Iteration& it) {
  const int en = it.en;
  const double x = it.h(en, en);
  it.t += x;
  for (int i = it.low; i <= en; ++i) it.h(i, i) -= x;
  const double s = std::fabs(it.h(en, en - 1)) + std::fabs(it.h(en - 1, en - 2));
  return {0.75 * s, 0.75 * s, -0.4375 * s * s};
}

// Where the sweep of the block that begins at l may start, and the first column of the double step
// there: behind two consecutive small subdiagonal elements.
SweepStart find_start(const Iteration& it, int l, const Shifts& shifts) {
  for (int m = it.en - 2;; --m) {
    const double zz = it.h(m, m);
    double r = shifts.x - zz;
    double s = shifts.y - zz;
    double p = (r * s - shifts.w) / it.h(m + 1, m) + it.h(m, m + 1);
    double q = it.h(m + 1, m + 1) - zz - r - s;
    r = it.h(m + 2, m + 1);
    s = std::fabs(p) + std::fabs(q) + std::fabs(r);
    p /= s;
    q /= s;
    r /= s;
    const SweepStart start = {m, {p, q, r}};
    if (m == l) return start;
    const double neighbours =
        std::fabs(it.h(m - 1, m - 1)) + std::fabs(zz) + std::fabs(it.h(m + 1, m + 1));
    if (std::fabs(it.h(m, m - 1)) * (std::fabs(q) + std::fabs(r)) <=
        kEps * std::fabs(p) * neighbours)
      return start;
  }
}

const char* iterate(Iteration& it) {
  while (it.en >= it.low) {
    const int l = find_block(it);
    if (l == it.en) {
      take_one(it);
      continue;
    }
    const int na = it.en - 1;
    Shifts shifts = {it.h(it.en, it.en), it.h(na, na), it.h(it.en, na) * it.h(na, it.en)};
    if (l == na) {
      take_two(it, shifts.w);
      continue;
    }
    if (it.sweeps == kMostSweeps) return kTooManyIterations;
    if (it.sweeps != 0 && it.sweeps % kExceptionalEvery == 0) shifts = exceptional_shifts(it);
    ++it.sweeps;
    it.work.sweep(l, it.en, find_start(it, l, shifts));
  }
  it.work.finish();
  return nullptr;
}

const char* run(const Balance& b, RealView h, double norm, double* wr, double* wi,
                SweepWork& work) {
  for (int i = 0; i < b.n; ++i) {
    if (i >= b.low && i <= b.igh) continue;
    wr[i] = h(i, i);
    wi[i] = 0.0;
  }
  Iteration it = {b.n, h, b.low, norm, b.igh, 0.0, 0, wr, wi, work};
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
