#include "eigen/complex/qr_iteration.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/complex/qr_sweep.hpp"
#include "eigen/cores.hpp"
#include "eigen/shared/complex_roots.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// Numbers of sweeps for one eigenvalue at which an exceptional shift shakes up the iteration.
bool is_exceptional(int sweeps) {
  return sweeps == 10 || sweeps == 20;
}

// An iteration in progress: rows and columns low..en are still to be done.
struct Iteration {
  const Parts& a;
  int low;
  int igh;
  int en;
  Complex t;   // The sum of the shifts.
  int sweeps;  // For the eigenvalue at en.

  double& re(int i, int j) const { return a.re[j * a.ld + i]; }
  double& im(int i, int j) const { return a.im[j * a.ld + i]; }
  Complex h(int i, int j) const { return {re(i, j), im(i, j)}; }
  void set(int i, int j, Complex z) const {
    re(i, j) = z.re;
    im(i, j) = z.im;
  }
};

// Makes the subdiagonal real: where an element is not, its row is multiplied by a phase and the
// column of that number by the conjugate one. Without Z, only low..igh is kept up to date.
void make_subdiagonal_real(const Iteration& it, const Parts* z) {
  const int right = z != nullptr ? it.a.n - 1 : it.igh;
  const int top = z != nullptr ? 0 : it.low;
  for (int i = it.low + 1; i <= it.igh; ++i) {
    const Complex element = it.h(i, i - 1);
    if (element.im == 0.0) continue;
    const double norm = scaled_modulus(element.re, element.im);
    const Complex phase = {element.re / norm, element.im / norm};
    const Complex conjugate = {phase.re, -phase.im};
    it.set(i, i - 1, {norm, 0.0});
    for (int j = i; j <= right; ++j) it.set(i, j, multiply(conjugate, it.h(i, j)));
    const int bottom = std::min(i + 1, it.igh);
    for (int j = top; j <= bottom; ++j) it.set(j, i, multiply(phase, it.h(j, i)));
    if (z == nullptr) continue;
    double* const zr = z->re + i * z->ld;
    double* const zi = z->im + i * z->ld;
    for (int j = it.low; j <= it.igh; ++j) {
      const Complex product = multiply(phase, {zr[j], zi[j]});
      zr[j] = product.re;
      zi[j] = product.im;
    }
  }
}

// The row of the last small subdiagonal element, where the active block begins. The element becomes
// zero: the block stays split off, though its diagonal will change. Without that, the rows above,
// which only the vectors keep up to date, might join in again, and the vectors might then come in
// another order than the values.
int find_block(const Iteration& it) {
  for (int l = it.en; l > it.low; --l) {
    const double s = std::fabs(it.re(l - 1, l - 1)) + std::fabs(it.im(l - 1, l - 1)) +
                     std::fabs(it.re(l, l)) + std::fabs(it.im(l, l));
    if (std::fabs(it.re(l, l - 1)) <= kEps * s) {
      it.re(l, l - 1) = 0.0;
      return l;
    }
  }
  return it.low;
}

// The eigenvalue of the last 2x2 block that is nearer to its last element.
Complex usual_shift(const Iteration& it) {
  const int en = it.en;
  const double below = it.re(en, en - 1);
  const Complex s = it.h(en, en);
  const Complex x = {it.re(en - 1, en) * below, it.im(en - 1, en) * below};
  if (is_zero(x)) return s;
  const Complex y = {(it.re(en - 1, en - 1) - s.re) / 2.0, (it.im(en - 1, en - 1) - s.im) / 2.0};
  Complex z = square_root(add(multiply(y, y), x));
  if (y.re * z.re + y.im * z.im < 0.0) z = {-z.re, -z.im};
  return subtract(s, divide(x, add(y, z)));
}

Complex exceptional_shift(const Iteration& it) {
  const int en = it.en;
  const double above = en - 2 >= it.low ? std::fabs(it.re(en - 1, en - 2)) : 0.0;
  return {std::fabs(it.re(en, en - 1)) + above, 0.0};
}

void shift(Iteration& it) {
  const Complex s = is_exceptional(it.sweeps) ? exceptional_shift(it) : usual_shift(it);
  for (int i = it.low; i <= it.en; ++i) it.set(i, i, subtract(it.h(i, i), s));
  it.t = add(it.t, s);
}

const char* iterate(Iteration& it, double tolerance, int most_sweeps, double* wr, double* wi,
                    ComplexSweepWork& work) {
  const auto chop = [=](double x) { return std::fabs(x) < tolerance ? 0.0 : x; };
  while (it.en >= it.low) {
    const int en = it.en;
    const int l = find_block(it);
    if (l == en) {
      it.set(en, en, add(it.h(en, en), it.t));
      wr[en] = chop(it.re(en, en));
      wi[en] = chop(it.im(en, en));
      --it.en;
      it.sweeps = 0;
      continue;
    }
    if (it.sweeps == most_sweeps) return kTooManyIterations;
    shift(it);
    ++it.sweeps;
    work.sweep(l, en);
  }
  work.finish();
  return nullptr;
}

const char* run(const Parts& h, const Balance& b, double tolerance, int most_sweeps, double* wr,
                double* wi, const Parts* z, ComplexSweepWork& work) {
  Iteration it = {h, b.low, b.igh, b.igh, {0.0, 0.0}, 0};
  make_subdiagonal_real(it, z);
  for (int i = 0; i < h.n; ++i) {
    if (i >= b.low && i <= b.igh) continue;
    wr[i] = it.re(i, i);
    wi[i] = it.im(i, i);
  }
  return iterate(it, tolerance, most_sweeps, wr, wi, work);
}

}  // namespace

const char* complex_qr(const Parts& h, const Balance& b, double tolerance, int most_sweeps,
                       double* wr, double* wi) {
  ComplexSweepWork work;
  if (!work.open(h)) return kOutOfMemory;
  return run(h, b, tolerance, most_sweeps, wr, wi, nullptr, work);
}

const char* complex_qr_with_vectors(const Parts& h, const Balance& b, int most_sweeps, double* wr,
                                    double* wi, const Parts& z) {
  ComplexSweepWork work;
  if (!work.open_with_vectors(h, b, z)) return kOutOfMemory;
  return run(h, b, 0.0, most_sweeps, wr, wi, &z, work);
}

}  // namespace matrix_pack
