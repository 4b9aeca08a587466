#include "eigen/complex/triangular_vectors.hpp"

#include <cmath>

#include "eigen/shared/scale_columns.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// x[0..i] holds the right-hand side for the components not yet known, x[i+1..en] the components.
void vector_of(const ComplexView& h, int en, double tiny) {
  const ComplexView x = h.column(en);
  const Complex value = x[en];
  x.set(en, {1.0, 0.0});
  for (int i = en - 1; i >= 0; --i) {
    Complex divisor = subtract(value, h(i, i));
    if (is_zero(divisor)) divisor.re = tiny;
    const Complex component = divide(x[i], divisor);
    x.set(i, component);
    if (std::fabs(component.re) > kGrown || std::fabs(component.im) > kGrown) {
      vector_kernels().scale(en + 1, kShrink, x.re);
      vector_kernels().scale(en + 1, kShrink, x.im);
    }
    complex_vector_kernels().subtract_multiple(i, {-x.re[i], -x.im[i]}, h.column(i), x);
  }
}

}  // namespace

void triangular_vectors(int n, const ComplexView& h, double tiny, Index* last) {
  for (int en = n - 1; en >= 0; --en) {
    vector_of(h, en, tiny);
    last[en] = en;
  }
}

}  // namespace matrix_pack
