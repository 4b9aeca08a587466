#include "linsys/lu/complex_matrix.hpp"

#include <algorithm>
#include <new>

#include "pack/memory.hpp"

namespace matrix_pack {

bool complete_parts(aMatrix* m) {
  for (double** part : {&m->re, &m->im}) {
    if (*part != nullptr) continue;
    *part = new_zero_part(m->rows, m->cols).release();
    if (*part == nullptr) return false;
  }
  return true;
}

void drop_zeros(const aMatrix* m, double** part) {
  const Index n = Index{m->rows} * m->cols;
  if (std::any_of(*part, *part + n, [](double x) { return x != 0.0; })) return;
  ::operator delete(*part);
  *part = nullptr;
}

}  // namespace matrix_pack
