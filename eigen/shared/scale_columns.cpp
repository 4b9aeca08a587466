#include "eigen/shared/scale_columns.hpp"

#include "pack/numeric/complex_arithmetic.hpp"

namespace matrix_pack {

void scale_to_largest(const Parts& v) {
  for (int j = 0; j < v.n; ++j) {
    double* const re = v.re + j * v.ld;
    double* const im = v.im + j * v.ld;
    double most = 0.0;
    int k = 0;
    for (int i = 0; i < v.n; ++i) {
      const double square = re[i] * re[i] + im[i] * im[i];
      if (square > most) {
        most = square;
        k = i;
      }
    }
    if (!(most > 0.0)) continue;
    const Complex largest = {re[k], im[k]};
    for (int i = 0; i < v.n; ++i) {
      const Complex z = divide({re[i], im[i]}, largest);
      re[i] = z.re;
      im[i] = z.im;
    }
    // The quotient of a number by itself may miss 1 by a rounding.
    re[k] = 1.0;
    im[k] = 0.0;
  }
}

}  // namespace matrix_pack
