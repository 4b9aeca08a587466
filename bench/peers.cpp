#include "bench/peers.hpp"

#include <cblas.h>

#include "bench/eigen_peers.hpp"

namespace bench {

std::string peers() {
  return std::string(openblas_get_config()) + "; " + eigen::version();
}

void use_one_thread() {
  openblas_set_num_threads(1);
}

}  // namespace bench
