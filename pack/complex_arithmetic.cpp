#include "pack/complex_arithmetic.hpp"

#include "pack/faults.hpp"

namespace matrix_pack {

double cmodulus(const Complex& z) {
  double modulus;
  if (!modulus_in_range(z, &modulus)) throw SE_FPEOverflow_Exception();
  return modulus;
}

}  // namespace matrix_pack
