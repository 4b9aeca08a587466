// cholesky, and its packed variant.
#include "linsys/cholesky.hpp"

#include <algorithm>
#include <cmath>

#include "linsys/cholesky_kernels.hpp"
#include "linsys/linsys.hpp"
#include "linsys/product_kernels.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

constexpr const char* kNotDefinite = "non-positive definite matrix";
constexpr double kSqrtEps = 0x1p-26;  // sqrt(kEps)

// Columns of a panel, and of the parts in which it is factored column by column. Measured.
constexpr Index kPanel = 64;
constexpr Index kNarrow = 8;
// Matrices up to this order are factored column by column. Measured.
constexpr Index kSmallOrder = 16;

// The lower triangle of an n x n array.
struct Triangle {
  Index n;
  RealView a;

  double* at(Index i, Index j) const { return &a(i, j); }
};

// Takes the columns k0 to k1 - 1 of L off the columns j0 to j1 - 1, from row j0 down. The corner
// above the diagonal comes along: it mirrors what stands below it.
void take_off(const Triangle& t, Index k0, Index k1, Index j0, Index j1) {
  const double* const l = t.at(j0, k0);
  const ConstRealView l_transposed = {l, 1};
  subtract_product(t.n - j0, j1 - j0, k1 - k0, {l, t.a.ld}, l_transposed, t.a.ld, t.a.from(j0, j0));
}

bool factor_panel(const Triangle& t, Index j0, Index j1) {
  if (j1 - j0 <= kNarrow || t.n <= kSmallOrder)
    return cholesky_kernels().factor_columns(t.n - j0, t.a.from(j0, j0), j1 - j0);
  const Index middle = j0 + (j1 - j0) / 2;
  if (!factor_panel(t, j0, middle)) return false;
  take_off(t, j0, middle, middle, j1);
  return factor_panel(t, middle, j1);
}

// Copies the upper triangle to the lower.
void mirror(const aMatrix* from, aMatrix* to) {
  const RealView upper = real_view(from);
  const RealView lower = real_view(to);
  for (Index j = 0; j < to->rows; ++j)
    for (Index i = j + 1; i < to->rows; ++i) lower(i, j) = upper(j, i);
}

Anyval* cholesky_worker(EfiCallContext* context, aMatrix* m) {
  if (m->rows != m->cols) return argument_error(context, 1, kMustBeSquare);
  if (is_complex(m)) return argument_error(context, 1, kMustBeReal);
  aMatrix* factor = nullptr;
  if (const char* message = matrix_copy(context, m, &factor)) return call_error(context, message);
  if (m->re != nullptr) mirror(m, factor);
  if (const char* message = cholesky_core(factor)) return call_error(context, message);
  return factor;
}

}  // namespace

const char* cholesky_core(aMatrix* a) {
  // Without a real array all is zero.
  if (a->re == nullptr) return a->rows > 0 ? kNotDefinite : nullptr;
  const Triangle t = {a->rows, real_view(a)};
  for (Index j0 = 0; j0 < t.n; j0 += kPanel) {
    const Index j1 = std::min(j0 + kPanel, t.n);
    if (j0 > 0) take_off(t, 0, j0, j0, j1);
    if (!factor_panel(t, j0, j1)) return kNotDefinite;
  }
  for (Index j = 1; j < t.n; ++j) std::fill_n(t.at(0, j), j, 0.0);
  return nullptr;
}

const char* cholesky_packed(EfiCallContext* context, const aMatrix* packed, int n,
                            aMatrix** factor) {
  const std::int64_t length = std::int64_t{n} * (n + 1) / 2;
  if (packed->cols != 1 || packed->rows != length) return "invalid dimensions";
  Doubles u = new_zero_part(length, 1);
  if (!u) return kOutOfMemory;
  if (packed->re != nullptr) std::copy_n(packed->re, length, u.get());

  const auto column = [&](Index j) { return u.get() + j * (j + 1) / 2; };
  double largest = 0.0;
  for (Index j = n - 1; j >= 0; --j) {
    double* const uj = column(j);
    if (uj[j] <= 0.0) return kNotDefinite;
    uj[j] = std::sqrt(uj[j]);
    vector_kernels().divide(j, uj[j], uj);
    for (Index i = 0; i <= j; ++i) largest = std::max(largest, std::fabs(uj[i]));
    for (Index k = 0; k < j; ++k) {
      vector_kernels().axpy(k + 1, -uj[k], uj, column(k));
      if (column(k)[k] < kSqrtEps * largest) return kNotDefinite;
    }
  }
  *factor = new_matrix(context, static_cast<int>(length), 1, std::move(u));
  return *factor == nullptr ? kOutOfMemory : nullptr;
}

Anyval* cholesky(EfiCallContext* context, Anyval* m) {
  return contained(context, [=] {
    if (!is_matrix(m)) return argument_error(context, 1, kMustBeArray);
    return cholesky_worker(context, as_matrix(m));
  });
}

}  // namespace matrix_pack
