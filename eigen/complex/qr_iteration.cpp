#include "eigen/complex/qr_iteration.hpp"

#include <algorithm>
#include <cmath>

#include "eigen/complex/qr_sweep.hpp"
#include "eigen/cores.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

// In progress, the rows and columns low..last are still to be done; the active block is
// first..last. What stands behind `last` is final. When the iteration gives up, so are the
// eigenvalues there, but the callers use none of them.

namespace matrix_pack {

namespace {

// Numbers of sweeps for one eigenvalue at which an exceptional shift shakes up the iteration.
bool is_exceptional(int sweeps) {
  return sweeps == 10 || sweeps == 20;
}

struct Iteration {
  ComplexView h;
  int low;
  int last;
  Complex shifted;  // The sum of the shifts.
  int sweeps;       // For the eigenvalue at `last`.
};

// Makes the subdiagonal real: where an element is not, its row is multiplied by a phase and the
// column of that number by the conjugate one. Without Z, only low..high is kept up to date.
void make_subdiagonal_real(const Balance& b, const ComplexView& h, const ComplexView* z) {
  const int right = z != nullptr ? b.n - 1 : b.high;
  const int top = z != nullptr ? 0 : b.low;
  for (int i = b.low + 1; i <= b.high; ++i) {
    const Complex element = h(i, i - 1);
    if (element.im == 0.0) continue;
    const double norm = scaled_modulus(element.re, element.im);
    const Complex phase = {element.re / norm, element.im / norm};
    h.set(i, i - 1, {norm, 0.0});
    for (int j = i; j <= right; ++j) h.set(i, j, multiply({phase.re, -phase.im}, h(i, j)));
    const int bottom = std::min(i + 1, b.high);
    for (int j = top; j <= bottom; ++j) h.set(j, i, multiply(phase, h(j, i)));
    if (z == nullptr) continue;
    for (int j = b.low; j <= b.high; ++j) z->set(j, i, multiply(phase, (*z)(j, i)));
  }
}

// The first row of the active block, behind the last small subdiagonal element. The element becomes
// zero: the block stays split off, though its diagonal will change. Without that, the rows above,
// which only the vectors keep up to date, might join in again, and the vectors might then come in
// another order than the values.
int find_block(const Iteration& it) {
  for (int first = it.last; first > it.low; --first) {
    const Complex before = it.h(first - 1, first - 1);
    const Complex diagonal = it.h(first, first);
    const Complex below = it.h(first, first - 1);
    const double s = std::fabs(before.re) + std::fabs(before.im) + std::fabs(diagonal.re) +
                     std::fabs(diagonal.im);
    if (std::fabs(below.re) <= kEps * s) {
      it.h.set(first, first - 1, {0.0, below.im});
      return first;
    }
  }
  return it.low;
}

// The eigenvalue of the last 2x2 block that is nearer to its last element: corner - product /
// (half +- sqrt(half^2 + product)), with half of the difference of its diagonal and the product of
// its off-diagonal elements.
Complex usual_shift(const Iteration& it) {
  const int last = it.last;
  const double below = it.h(last, last - 1).re;
  const Complex above = it.h(last - 1, last);
  const Complex before = it.h(last - 1, last - 1);
  const Complex corner = it.h(last, last);
  const Complex product = {above.re * below, above.im * below};
  if (is_zero(product)) return corner;
  const Complex half = {(before.re - corner.re) / 2.0, (before.im - corner.im) / 2.0};
  Complex root = square_root(add(multiply(half, half), product));
  if (half.re * root.re + half.im * root.im < 0.0) root = {-root.re, -root.im};
  return subtract(corner, divide(product, add(half, root)));
}

Complex exceptional_shift(const Iteration& it) {
  const int last = it.last;
  const double above = last - 2 >= it.low ? std::fabs(it.h(last - 1, last - 2).re) : 0.0;
  return {std::fabs(it.h(last, last - 1).re) + above, 0.0};
}

void shift(Iteration& it) {
  const Complex s = is_exceptional(it.sweeps) ? exceptional_shift(it) : usual_shift(it);
  for (int i = it.low; i <= it.last; ++i) it.h.set(i, i, subtract(it.h(i, i), s));
  it.shifted = add(it.shifted, s);
}

const char* iterate(Iteration& it, double tolerance, int most_sweeps, double* wr, double* wi,
                    ComplexSweepWork& work) {
  const auto chop = [=](double x) { return std::fabs(x) < tolerance ? 0.0 : x; };
  while (it.last >= it.low) {
    const int last = it.last;
    const int first = find_block(it);
    if (first == last) {
      const Complex value = add(it.h(last, last), it.shifted);
      it.h.set(last, last, value);
      wr[last] = chop(value.re);
      wi[last] = chop(value.im);
      --it.last;
      it.sweeps = 0;
      continue;
    }
    if (it.sweeps == most_sweeps) return kTooManyIterations;
    shift(it);
    ++it.sweeps;
    work.sweep(first, last);
  }
  work.finish();
  return nullptr;
}

const char* run(const Balance& b, const ComplexView& h, double tolerance, int most_sweeps,
                double* wr, double* wi, ComplexSweepWork& work) {
  for (int i = 0; i < b.n; ++i) {
    if (i >= b.low && i <= b.high) continue;
    wr[i] = h(i, i).re;
    wi[i] = h(i, i).im;
  }
  Iteration it = {h, b.low, b.high, {0.0, 0.0}, 0};
  return iterate(it, tolerance, most_sweeps, wr, wi, work);
}

}  // namespace

const char* complex_qr(const Balance& b, const ComplexView& h, double tolerance, int most_sweeps,
                       double* wr, double* wi) {
  ComplexSweepWork work;
  if (!work.open(b.n, h)) return kOutOfMemory;
  make_subdiagonal_real(b, h, nullptr);
  return run(b, h, tolerance, most_sweeps, wr, wi, work);
}

const char* complex_qr_with_vectors(const Balance& b, const ComplexView& h, int most_sweeps,
                                    double* wr, double* wi, const ComplexView& z) {
  make_subdiagonal_real(b, h, &z);
  ComplexSweepWork work;
  if (!work.open_with_vectors(b, h, z)) return kOutOfMemory;
  return run(b, h, 0.0, most_sweeps, wr, wi, work);
}

}  // namespace matrix_pack
