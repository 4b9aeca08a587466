#include "eigen/shared/scale_columns.hpp"

namespace matrix_pack {

void scale_to_largest(int n, const ComplexView& v) {
  for (int j = 0; j < n; ++j) {
    const ComplexView x = v.column(j);
    double most = 0.0;
    int k = 0;
    for (int i = 0; i < n; ++i) {
      const double square = x.re[i] * x.re[i] + x.im[i] * x.im[i];
      if (square > most) {
        most = square;
        k = i;
      }
    }
    if (!(most > 0.0)) continue;
    const Complex largest = x[k];
    for (int i = 0; i < n; ++i) x.set(i, divide(x[i], largest));
    // The quotient of a number by itself may miss 1 by a rounding.
    x.set(k, {1.0, 0.0});
  }
}

}  // namespace matrix_pack
