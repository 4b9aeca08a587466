#include "eigen/shared/storage.hpp"

#include "pack/messages.hpp"

namespace matrix_pack {

bool allocate(EigenStorage& s, int n, bool with_vectors) {
  s.n = n;
  s.wr = new_part(n, 1);
  s.wi = new_part(n, 1);
  s.scale = new_doubles(n);
  if (!s.wr || !s.wi || !s.scale) return false;
  if (!with_vectors) return true;
  s.z_re = new_zero_part(n, n);
  s.z_im = new_zero_part(n, n);
  if (!s.z_re || !s.z_im) return false;
  for (int j = 0; j < n; ++j) s.z().set(j, j, {1.0, 0.0});
  return true;
}

const char* take_results(EfiCallContext* context, EigenStorage& s, aMatrix** values,
                         aMatrix** vectors) {
  *values = new_matrix(context, s.n, 1, std::move(s.wr), std::move(s.wi));
  if (*values == nullptr) return kOutOfMemory;
  if (vectors == nullptr) return nullptr;
  *vectors = new_matrix(context, s.n, s.n, std::move(s.z_re), std::move(s.z_im));
  return *vectors != nullptr ? nullptr : kOutOfMemory;
}

}  // namespace matrix_pack
