#include "pack/elements.hpp"

#include <cmath>
#include <cstring>
#include <new>

namespace matrix_pack {

const double kSharedZero = 0.0;

void store_lazy(double** slot, int ld, int i, int j, unsigned bytes, double x) {
  if (*slot == nullptr) {
    if (x == 0.0 || std::isnan(x)) return;
    const std::size_t whole = bytes & ~7u;
    *slot = static_cast<double*>(::operator new(whole));
    std::memset(*slot, 0, whole);
  }
  (*slot)[element_index(ld, i, j)] = x;
}

namespace {

bool element_reaches(const aMatrix* m, int i, int j, double bound) {
  return std::fabs(elem_re(m, i, j)) >= bound || std::fabs(elem_im(m, i, j)) >= bound;
}

}  // namespace

bool has_huge_element(const aMatrix* m) {
  for (int i = 0; i < m->rows; ++i)
    for (int j = 0; j < m->cols; ++j)
      if (element_reaches(m, i, j, 1e307)) return true;
  return false;
}

bool has_huge_offdiag(const aMatrix* m) {
  for (int i = 0; i < m->rows; ++i)
    for (int j = 0; j < m->cols; ++j)
      if (i != j && element_reaches(m, i, j, 1e104)) return true;
  return false;
}

}  // namespace matrix_pack
