// The inner loops of the QZ method: plane reflectors applied to rows and to columns.
//
// A reflector makes the first of two (three) numbers plus or minus their norm, and the others zero.
// Applied to x1, x2 (, x3) it computes, in this order,
//   t = x1 + u2 x2 (+ u3 x3),   x1 += t v1,   x2 += t v2   (, x3 += t v3).
// All zeros is the identity. Rows and columns are counted from 0; matrices are column-major with
// leading dimension ld.
#pragma once

#include "pack/numeric/kernel_sets.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack {

struct Reflector2 {
  double v1, v2, u2;
};

struct Reflector3 {
  double v1, v2, v3, u2, u3;
};

struct QzKernels {
  // h[i] on rows i, i+1 of a and of b, i = 0, 1 .. count-1: a chase down the rows
  void (*chase_rows2)(Index count, const Reflector2* h, Index cols, double* a, double* b, Index ld);
  // h[i] on rows i, i+1, i+2 of a and of b, i = 0, 1 .. count-1
  void (*chase_rows3)(Index count, const Reflector3* h, Index cols, double* a, double* b, Index ld);
  // h[i] on rows i, i+1 of x, i = count-1 .. 1, 0: up the rows
  void (*climb_rows)(Index count, const Reflector2* h, Index cols, double* x, Index ld);
  // h[i] on columns i+1, i of x, i = count-1 .. 1, 0: from right to left
  void (*climb_cols)(Index count, const Reflector2* h, Index rows, double* x, Index ld);
  // h on columns 1, 0 of x
  void (*reflect_cols2)(const Reflector2& h, Index rows, double* x, Index ld);
  // g on columns 2, 1, 0 of x, then h on columns 1, 0
  void (*reflect_cols3)(const Reflector3& g, const Reflector2& h, Index rows, double* x, Index ld);

  // r[i] += (beta a[i] - alfa b[i]) x
  void (*add_pencil)(Index n, double beta, double alfa, const double* a, const double* b, double x,
                     double* r);
  // The same for complex alfa, x and r.
  void (*add_complex_pencil)(Index n, double beta, double alfr, double alfi, const double* a,
                             const double* b, double xr, double xi, double* rr, double* ri);
};
MATRIX_SELECT_KERNELS(QzKernels, qz_kernels)

}  // namespace matrix_pack
