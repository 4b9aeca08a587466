#include "eigen/cores.hpp"

namespace matrix_pack {

const char* check_square(const aMatrix* a) {
  if (a == nullptr || (a->re == nullptr && a->im == nullptr))
    return "Null matrix or vector pointer.";
  if (a->rows < 1 || a->cols < 1) return "invalid dimension";
  if (a->rows != a->cols) return "must be square";
  return nullptr;
}

}  // namespace matrix_pack
