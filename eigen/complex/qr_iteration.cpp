#include "eigen/complex/qr_iteration.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/complex/qr_sweep.hpp"
#include "eigen/cores.hpp"
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
  ComplexView h;
  int low;
  int en;
  Complex t;   // The sum of the shifts.
  int sweeps;  // For the eigenvalue at en.
};

// Makes the subdiagonal real: where an element is not, its row is multiplied by a phase and the
// column of that number by the conjugate one. Without Z, only low..igh is kept up to date.
void make_subdiagonal_real(const Balance& b, const ComplexView& h, const ComplexView* z) {
  const int right = z != nullptr ? b.n - 1 : b.igh;
  const int top = z != nullptr ? 0 : b.low;
  for (int i = b.low + 1; i <= b.igh; ++i) {
    const Complex element = h(i, i - 1);
    if (element.im == 0.0) continue;
    const double norm = scaled_modulus(element.re, element.im);
    const Complex phase = {element.re / norm, element.im / norm};
    h.set(i, i - 1, {norm, 0.0});
    for (int j = i; j <= right; ++j) h.set(i, j, multiply({phase.re, -phase.im}, h(i, j)));
    const int bottom = std::min(i + 1, b.igh);
    for (int j = top; j <= bottom; ++j) h.set(j, i, multiply(phase, h(j, i)));
    if (z == nullptr) continue;
    for (int j = b.low; j <= b.igh; ++j) z->set(j, i, multiply(phase, (*z)(j, i)));
  }
}

// The row of the last small subdiagonal element, where the active block begins. The element becomes
// zero: the block stays split off, though its diagonal will change. Without that, the rows above,
// which only the vectors keep up to date, might join in again, and the vectors might then come in
// another order than the values.
int find_block(const Iteration& it) {
  for (int l = it.en; l > it.low; --l) {
    const double below = it.h(l, l - 1).re;
    const double s = std::fabs(it.h(l - 1, l - 1).re) + std::fabs(it.h(l - 1, l - 1).im) +
                     std::fabs(it.h(l, l).re) + std::fabs(it.h(l, l).im);
    if (std::fabs(below) <= kEps * s) {
      it.h.set(l, l - 1, {0.0, it.h(l, l - 1).im});
      return l;
    }
  }
  return it.low;
}

// The eigenvalue of the last 2x2 block that is nearer to its last element.
Complex usual_shift(const Iteration& it) {
  const int en = it.en;
  const double below = it.h(en, en - 1).re;
  const Complex above = it.h(en - 1, en);
  const Complex before = it.h(en - 1, en - 1);
  const Complex s = it.h(en, en);
  const Complex x = {above.re * below, above.im * below};
  if (is_zero(x)) return s;
  const Complex y = {(before.re - s.re) / 2.0, (before.im - s.im) / 2.0};
  Complex z = square_root(add(multiply(y, y), x));
  if (y.re * z.re + y.im * z.im < 0.0) z = {-z.re, -z.im};
  return subtract(s, divide(x, add(y, z)));
}

Complex exceptional_shift(const Iteration& it) {
  const int en = it.en;
  const double above = en - 2 >= it.low ? std::fabs(it.h(en - 1, en - 2).re) : 0.0;
  return {std::fabs(it.h(en, en - 1).re) + above, 0.0};
}

void shift(Iteration& it) {
  const Complex s = is_exceptional(it.sweeps) ? exceptional_shift(it) : usual_shift(it);
  for (int i = it.low; i <= it.en; ++i) it.h.set(i, i, subtract(it.h(i, i), s));
  it.t = add(it.t, s);
}

const char* iterate(Iteration& it, double tolerance, int most_sweeps, double* wr, double* wi,
                    ComplexSweepWork& work) {
  const auto chop = [=](double x) { return std::fabs(x) < tolerance ? 0.0 : x; };
  while (it.en >= it.low) {
    const int en = it.en;
    const int l = find_block(it);
    if (l == en) {
      it.h.set(en, en, add(it.h(en, en), it.t));
      wr[en] = chop(it.h(en, en).re);
      wi[en] = chop(it.h(en, en).im);
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

const char* run(const Balance& b, const ComplexView& h, double tolerance, int most_sweeps,
                double* wr, double* wi, const ComplexView* z, ComplexSweepWork& work) {
  make_subdiagonal_real(b, h, z);
  for (int i = 0; i < b.n; ++i) {
    if (i >= b.low && i <= b.igh) continue;
    wr[i] = h(i, i).re;
    wi[i] = h(i, i).im;
  }
  Iteration it = {h, b.low, b.igh, {0.0, 0.0}, 0};
  return iterate(it, tolerance, most_sweeps, wr, wi, work);
}

}  // namespace

const char* complex_qr(const Balance& b, const ComplexView& h, double tolerance, int most_sweeps,
                       double* wr, double* wi) {
  ComplexSweepWork work;
  if (!work.open(b.n, h)) return kOutOfMemory;
  return run(b, h, tolerance, most_sweeps, wr, wi, nullptr, work);
}

const char* complex_qr_with_vectors(const Balance& b, const ComplexView& h, int most_sweeps,
                                    double* wr, double* wi, const ComplexView& z) {
  ComplexSweepWork work;
  if (!work.open_with_vectors(b, h, z)) return kOutOfMemory;
  return run(b, h, 0.0, most_sweeps, wr, wi, &z, work);
}

}  // namespace matrix_pack
