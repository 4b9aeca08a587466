// The inner loops of the QZ method in plain form: the definition of what the kernels compute.
#pragma once

#include <initializer_list>

#include "eigen/qz/reflector_kernels.hpp"
#include "pack/numeric/views.hpp"

namespace matrix_pack::plain {

inline void reflect(const Reflector2& h, double& x1, double& x2) {
  const double t = x1 + h.u2 * x2;
  x1 += t * h.v1;
  x2 += t * h.v2;
}

inline void reflect(const Reflector3& h, double& x1, double& x2, double& x3) {
  const double t = x1 + h.u2 * x2 + h.u3 * x3;
  x1 += t * h.v1;
  x2 += t * h.v2;
  x3 += t * h.v3;
}

inline void chase_rows2(Index count, const Reflector2* h, Index cols, double* a, double* b,
                        Index ld) {
  for (Index i = 0; i < count; ++i)
    for (double* x : {a, b})
      for (Index j = 0; j < cols; ++j) reflect(h[i], x[j * ld + i], x[j * ld + i + 1]);
}

inline void chase_rows3(Index count, const Reflector3* h, Index cols, double* a, double* b,
                        Index ld) {
  for (Index i = 0; i < count; ++i)
    for (double* x : {a, b})
      for (Index j = 0; j < cols; ++j)
        reflect(h[i], x[j * ld + i], x[j * ld + i + 1], x[j * ld + i + 2]);
}

inline void climb_rows(Index count, const Reflector2* h, Index cols, double* x, Index ld) {
  for (Index i = count; i-- > 0;)
    for (Index j = 0; j < cols; ++j) reflect(h[i], x[j * ld + i], x[j * ld + i + 1]);
}

inline void climb_cols(Index count, const Reflector2* h, Index rows, double* x, Index ld) {
  for (Index i = count; i-- > 0;)
    for (Index r = 0; r < rows; ++r) reflect(h[i], x[(i + 1) * ld + r], x[i * ld + r]);
}

inline void reflect_cols2(const Reflector2& h, Index rows, double* x, Index ld) {
  climb_cols(1, &h, rows, x, ld);
}

inline void reflect_cols3(const Reflector3& g, const Reflector2& h, Index rows, double* x,
                          Index ld) {
  for (Index r = 0; r < rows; ++r) reflect(g, x[2 * ld + r], x[ld + r], x[r]);
  reflect_cols2(h, rows, x, ld);
}

inline void add_pencil(Index n, double beta, double alfa, const double* a, const double* b,
                       double x, double* r) {
  for (Index i = 0; i < n; ++i) r[i] += (beta * a[i] - alfa * b[i]) * x;
}

inline void add_complex_pencil(Index n, double beta, double alfr, double alfi, const double* a,
                               const double* b, double xr, double xi, double* rr, double* ri) {
  for (Index i = 0; i < n; ++i) {
    const double re = beta * a[i] - alfr * b[i];
    const double im = -alfi * b[i];
    rr[i] += re * xr - im * xi;
    ri[i] += re * xi + im * xr;
  }
}

inline constexpr QzKernels qz_kernels = {chase_rows2, chase_rows3,       climb_rows,
                                         climb_cols,  reflect_cols2,     reflect_cols3,
                                         add_pencil,  add_complex_pencil};

}  // namespace matrix_pack::plain
