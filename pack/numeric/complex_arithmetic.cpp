#include "pack/numeric/complex_arithmetic.hpp"

#include "pack/frame/faults.hpp"

namespace matrix_pack {

double cmodulus(const Complex& z) {
  double modulus;
  if (!modulus_in_range(z, &modulus)) throw SE_FPEOverflow_Exception();
  return modulus;
}

}  // namespace matrix_pack
