#include "eigen/qz/finite_eigenvalues.hpp"

#include <algorithm>
#include <cmath>

#include "pack/elements.hpp"
#include "pack/memory.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// Calls visit(i, column, sign) for each finite eigenvalue in order: its number, and the column of Z
// in which its vector stands. With a sign, that is the real part, and the next column times the
// sign the imaginary part. Of a complex pair the first one decides for both.
template <class Visit>
void for_each_finite(const QzPair& pair, const QzValues& v, const Visit& visit) {
  for (Index i = 0; i < pair.n; ++i) {
    if (v.beta[i] == 0.0 && (v.alfr[i] != 0.0 || v.alfi[i] != 0.0)) continue;
    if (v.alfi[i] > 0.0) {
      visit(i, i, 1);
      visit(i + 1, i, -1);
      ++i;
    } else if (v.alfi[i] < 0.0) {  // The first of the pair is real, being tiny, or infinite.
      visit(i, i - 1, -1);
    } else {
      visit(i, i, 0);
    }
  }
}

bool is_nonzero(const aMatrix* values, int i, double tolerance) {
  return std::fabs(elem_re(values, i, 0)) > tolerance;
}

}  // namespace

int count_finite(const QzPair& pair, const QzValues& found) {
  int count = 0;
  for_each_finite(pair, found, [&](auto...) { ++count; });
  return count;
}

aMatrix* finite_values(EfiCallContext* context, const QzPair& pair, const QzValues& found,
                       int count) {
  Doubles re = new_zero_part(count, 1);
  Doubles im = new_zero_part(count, 1);
  if (!re || !im) return nullptr;
  std::size_t k = 0;
  for_each_finite(pair, found, [&](Index i, Index, int sign) {
    if (sign != 0 || found.beta[i] != 0.0) {
      re[k] = found.alfr[i] / found.beta[i];
      im[k] = found.alfi[i] / found.beta[i];
    }
    ++k;
  });
  return new_matrix(context, count, 1, std::move(re), std::move(im));
}

aMatrix* finite_vectors(EfiCallContext* context, const QzPair& pair, const QzValues& found,
                        int count) {
  const Index n = pair.n;
  bool complex = false;
  for_each_finite(pair, found, [&](Index, Index column, int sign) {
    const double* const im = pair.column_of_z(column) + n;
    complex = complex || (sign != 0 && std::any_of(im, im + n, [](double x) { return x != 0.0; }));
  });
  Doubles re = new_part(n, count);
  Doubles im = complex ? new_zero_part(n, count) : nullptr;
  if (!re || (complex && !im)) return nullptr;
  double* to_re = re.get();
  double* to_im = im.get();
  for_each_finite(pair, found, [&](Index, Index column, int sign) {
    const double* const from = pair.column_of_z(column);
    to_re = std::copy(from, from + n, to_re);
    if (!complex) return;
    if (sign > 0) std::copy(from + n, from + 2 * n, to_im);
    // Not the negative, which would make zeros negative too.
    if (sign < 0) std::transform(from + n, from + 2 * n, to_im, [](double x) { return 0.0 - x; });
    to_im += n;
  });
  return new_matrix(context, static_cast<int>(n), count, std::move(re), std::move(im));
}

int count_nonzero(const aMatrix* values, int count, double tolerance) {
  int kept = 0;
  for (int i = 0; i < count; ++i) kept += is_nonzero(values, i, tolerance);
  return kept;
}

Anyval* reciprocals(EfiCallContext* context, const aMatrix* values, int count, double tolerance,
                    int kept) {
  Doubles re = new_zero_part(kept, 1);
  Doubles im = new_zero_part(kept, 1);
  if (!re || !im) return sError_OutOfMemory;
  double* to_re = re.get();
  double* to_im = im.get();
  for (int i = 0; i < count; ++i) {
    if (!is_nonzero(values, i, tolerance)) continue;
    const double u = elem_re(values, i, 0);
    const double v = elem_im(values, i, 0);
    *to_re++ = u / (v * v + u * u);
    *to_im++ = (0.0 - v) / (u * u + v * v);  // Not -v, which would make a zero negative.
  }
  return matrix_result(new_matrix(context, kept, 1, std::move(re), std::move(im)));
}

Anyval* kept_columns(EfiCallContext* context, const aMatrix* values, const aMatrix* vectors,
                     int count, double tolerance, int kept) {
  const int n = vectors->rows;
  Doubles re = new_zero_part(n, kept);
  Doubles im = new_zero_part(n, kept);
  if (!re || !im) return sError_OutOfMemory;
  aMatrix* result = new_matrix(context, n, kept, std::move(re), std::move(im));
  if (result == nullptr) return sError_OutOfMemory;
  int k = 0;
  for (int j = 0; j < count; ++j) {
    if (!is_nonzero(values, j, tolerance)) continue;
    for (int i = 0; i < n; ++i)
      set_elem(result, i, k, elem_re(vectors, i, j), elem_im(vectors, i, j));
    ++k;
  }
  return result;
}

}  // namespace matrix_pack
