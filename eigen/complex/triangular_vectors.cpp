#include "eigen/complex/triangular_vectors.hpp"

#include <cmath>

#include "eigen/shared/scale_columns.hpp"
#include "pack/numeric/complex_arithmetic.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// x[0..i] holds the right-hand side for the components not yet known, x[i+1..en] the components.
void vector_of(const Parts& h, int en, double tiny) {
  double* const xr = h.re + en * h.ld;
  double* const xi = h.im + en * h.ld;
  const Complex value = {xr[en], xi[en]};
  xr[en] = 1.0;
  xi[en] = 0.0;
  for (int i = en - 1; i >= 0; --i) {
    const double* const column_re = h.re + i * h.ld;
    const double* const column_im = h.im + i * h.ld;
    Complex divisor = subtract(value, {column_re[i], column_im[i]});
    if (is_zero(divisor)) divisor.re = tiny;
    const Complex x = divide({xr[i], xi[i]}, divisor);
    xr[i] = x.re;
    xi[i] = x.im;
    if (std::fabs(x.re) > kGrown || std::fabs(x.im) > kGrown) {
      vector_kernels().scale(en + 1, kShrink, xr);
      vector_kernels().scale(en + 1, kShrink, xi);
    }
    complex_vector_kernels().subtract_multiple(i, {-xr[i], -xi[i]}, column_re, column_im, xr, xi);
  }
}

}  // namespace

void triangular_vectors(const Parts& h, double tiny, std::ptrdiff_t* last) {
  for (int en = h.n - 1; en >= 0; --en) {
    vector_of(h, en, tiny);
    last[en] = en;
  }
}

}  // namespace matrix_pack
