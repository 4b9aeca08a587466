#include "pack/numeric/complex_vector_kernels.hpp"

#include "pack/numeric/lanes/complex_lanes.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

void subtract_multiple(Index n, Complex f, const ConstComplexView& u, const ComplexView& x) {
  over_elements(0, n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    store(x, k, subtract(load<V>(x, k), multiply(load<V>(u, k), f)));
  });
}

double sum_magnitudes(Index n, const ConstComplexView& x) {
  return sum_of(n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    return magnitude(load<V>(x.re + k)) + magnitude(load<V>(x.im + k));
  });
}

double sum_squares(Index n, const ConstComplexView& x) {
  return sum_of(n, [=]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    const V re = load<V>(x.re + k);
    const V im = load<V>(x.im + k);
    return re * re + im * im;
  });
}

}  // namespace

const ComplexVectorKernels complex_vector_kernels_table = {subtract_multiple, sum_magnitudes,
                                                           sum_squares};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
