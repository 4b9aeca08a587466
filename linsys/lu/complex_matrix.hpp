// Complex matrices whose part arrays may be absent, for cores that need both.
#pragma once

#include "pack/host_interface.hpp"
#include "pack/numeric/split.hpp"

namespace matrix_pack {

inline Split split(const aMatrix* m) {
  return {m->re, m->im};
}

}  // namespace matrix_pack
