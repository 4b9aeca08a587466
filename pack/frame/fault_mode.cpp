#include "pack/frame/fault_mode.hpp"

#include "pack/frame/fp_control.hpp"

namespace matrix_pack {

bool faults_trap() noexcept {
#if defined(MATRIX_FAULTS_FLAGS)
  return false;
#else
  return MATRIX_HAS_MXCSR != 0;
#endif
}

}  // namespace matrix_pack
