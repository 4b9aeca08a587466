// The implicit-shift QR iteration on an upper bidiagonal form, which both singular value cores
// share. What becomes of its rotations, and whether the first root of a step is guarded, is said by
// the Rotations of a core:
//
//   constexpr bool kGuardsFirstRoot
//   void cancel(p, i, c, s)          rotates columns p and i of the left factor
//   void begin_sweep(l, count)       a sweep of `count` steps begins at columns l and l + 1
//   void right(c, s), left(c, s)     rotate the step's two columns of the right (left) factor
//   void negate(k)                   negates column k of the right factor
#pragma once

#include <cmath>
#include <limits>

#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

// Sweeps that one singular value may take.
inline constexpr int kMaxSweeps = 100;

// Whether squares that are to be added under a root have overflowed: the test is true for an
// infinite square and false for a NaN.
inline bool overflows(double x_squared, double y_squared) {
  constexpr double kLargest = std::numeric_limits<double>::max();
  return x_squared > kLargest || y_squared > kLargest;
}

// One iteration on w (diagonal) and rv1 (rv1[i] above w[i]); magnitudes up to tol count as zero.
// The singular values behind w[k] are done, and the active block is l...k.
//   method   Golub and Reinsch, Handbook for Automatic Computation II (1971), contribution I/10
//   cost     about two sweeps a value, two roots and four divisions a step
// Every function returns null or a message; w, rv1 and the factors are then of no use.
template <class Rotations>
struct ImplicitShift {
  double* w;
  double* rv1;
  double tol;
  Rotations& rotations;

  // The block l...k; whether rv1[l] has to be cancelled because w[l - 1] is zero.
  struct Block {
    Index l;
    bool cancels;
  };

  // rv1[0] is zero and tol is never a NaN: l = 0 ends the search at the latest.
  Block find_block(Index k) const {
    for (Index l = k;; --l) {
      if (std::fabs(rv1[l]) <= tol) return {l, false};
      if (std::fabs(w[l - 1]) <= tol) return {l, true};
    }
  }

  // Makes w[k] a singular value.
  const char* find_value(Index k) {
    for (int sweeps = 0;; ++sweeps) {
      const Block block = find_block(k);
      if (block.cancels)
        if (const char* message = cancel(block.l, k)) return message;
      if (block.l == k) break;
      if (sweeps == kMaxSweeps) return kTooManyIterations;
      if (const char* message = sweep(block.l, k)) return message;
    }
    if (w[k] < 0.0) {
      w[k] = -w[k];
      rotations.negate(k);
    }
    return nullptr;
  }

  // Moves rv1[l] along its row until it is negligible, by rotations of rows l - 1 and l, l + 1...
  const char* cancel(Index l, Index k) {
    double c = 0.0;
    double s = 1.0;
    for (Index i = l; i <= k; ++i) {
      const double f = s * rv1[i];
      rv1[i] = c * rv1[i];
      if (std::fabs(f) <= tol) break;
      const double g = w[i];
      if (overflows(f * f, g * g)) return kOverflow;
      const double h = std::sqrt(f * f + g * g);
      w[i] = h;
      c = g / h;
      s = -f / h;
      rotations.cancel(l - 1, i, c, s);
    }
    return nullptr;
  }

  // ((w[l]^2 - shift) / w[l]), the shift an eigenvalue of the trailing 2 x 2 block of the square.
  // x begins the diagonal of the block, y and z end it, and g and h stand above these.
  double shifted(Index l, Index k) const {
    const double x = w[l];
    const double y = w[k - 1];
    const double z = w[k];
    const double g = rv1[k - 1];
    const double h = rv1[k];
    const double f = ((y - z) * (y + z) + (g - h) * (g + h)) / (y * h + y * h);
    const double root = std::sqrt(f * f + 1.0);
    return ((x - z) * (x + z) + h * (y / (f + (f < 0.0 ? -root : root)) - h)) / x;
  }

  // Chases the bulge down the block, by rotations of columns (right) and of rows (left). In step j
  // the first makes [x g; 0 w[j+1]] to [f g; h y], the second that to [w[j] f; 0 x].
  const char* sweep(Index l, Index k) {
    double f = shifted(l, k);
    double x = w[l];
    double c = 1.0;
    double s = 1.0;
    rotations.begin_sweep(l, k - l);
    for (Index j = l; j < k; ++j) {
      double h = s * rv1[j + 1];
      double g = c * rv1[j + 1];
      if constexpr (Rotations::kGuardsFirstRoot)
        if (overflows(f * f, h * h)) return kOverflow;
      double z = std::sqrt(f * f + h * h);
      rv1[j] = z;
      c = f / z;
      s = h / z;
      f = x * c + g * s;
      g = g * c - x * s;
      h = w[j + 1] * s;
      const double y = w[j + 1] * c;
      rotations.right(c, s);
      if (overflows(f * f, h * h)) return kOverflow;
      z = std::sqrt(f * f + h * h);
      w[j] = z;
      if (z != 0.0) {
        c = f / z;
        s = h / z;
      }
      f = c * g + s * y;
      x = c * y - s * g;
      rotations.left(c, s);
    }
    rv1[l] = 0.0;
    rv1[k] = f;
    w[k] = x;
    return nullptr;
  }
};

// Makes the bidiagonal form diagonal, its elements w nonnegative and in no particular order.
// "overflow" or "too many iterations".
template <class Rotations>
const char* diagonalise(Index n, double* w, double* rv1, double tol, Rotations& rotations) {
  ImplicitShift<Rotations> iteration{w, rv1, tol, rotations};
  for (Index k = n - 1; k >= 0; --k)
    if (const char* message = iteration.find_value(k)) return message;
  return nullptr;
}

// What counts as zero in a bidiagonal form: the machine epsilon times its largest |w[i]| +
// |rv1[i]|.
inline double negligible(double anorm) {
  return anorm * kEps;
}

// Sorts w into descending order by exchanges; swap(i, j) follows each. Kept: which of equal values
// comes first is what this very order of comparisons makes it.
template <class Swap>
void sort_descending(Index n, double* w, Swap swap) {
  for (Index i = 0; i < n; ++i)
    for (Index j = i + 1; j < n; ++j)
      if (w[i] < w[j]) {
        const double larger = w[j];
        w[j] = w[i];
        w[i] = larger;
        swap(i, j);
      }
}

}  // namespace matrix_pack
