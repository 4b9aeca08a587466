#include "eigen/complex/triangular_vectors.hpp"

#include <cmath>

#include "eigen/shared/scale_columns.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// While the vector is computed, x[i+1..j] holds the components that are known, and x[0..i] the
// right-hand sides of the rows above.
void vector_of(const ComplexView& h, int j, double tiny) {
  const ComplexView x = h.column(j);
  const Complex value = x[j];
  x.set(j, {1.0, 0.0});
  for (int i = j - 1; i >= 0; --i) {
    Complex divisor = subtract(value, h(i, i));
    if (is_zero(divisor)) divisor.re = tiny;
    const Complex component = divide(x[i], divisor);
    x.set(i, component);
    if (std::fabs(component.re) > kGrown || std::fabs(component.im) > kGrown) {
      vector_kernels().scale(j + 1, kShrink, x.re);
      vector_kernels().scale(j + 1, kShrink, x.im);
    }
    complex_vector_kernels().subtract_multiple(i, {-x.re[i], -x.im[i]}, h.column(i), x);
  }
}

}  // namespace

void triangular_vectors(int n, const ComplexView& h, double tiny, Index* last) {
  for (int j = n - 1; j >= 0; --j) {
    vector_of(h, j, tiny);
    last[j] = j;
  }
}

}  // namespace matrix_pack
