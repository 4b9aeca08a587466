#include "linsys/lu/ludecomp.hpp"

#include <limits>

#include "linsys/lu/elimination.hpp"
#include "linsys/lu/plain_failure.hpp"
#include "pack/checks.hpp"
#include "pack/frame/fast_path.hpp"
#include "pack/frame/faults.hpp"
#include "pack/matrix_views.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

double sign_of(Index n, const double* pivots) {
  double sign = 1.0;
  for (Index k = 0; k < n; ++k)
    if (pivots[k] != static_cast<double>(k)) sign = -sign;
  return sign;
}

template <class View>
const char* factor(Index n, View a, double* pivots, double* sign, double epsilon,
                   bool relative_test) {
  // The scale array, the bounds of a panel's rows, and a pivot record if the caller has none.
  const Work<double, 3 * kPanel> work(n + kPanel + (pivots == nullptr ? n : 0));
  if (!work) return kOutOfMemory;
  double* const scale = work.get();
  double* const bounds = scale + n;
  if (pivots == nullptr) pivots = bounds + kPanel;
  constexpr double kNone = std::numeric_limits<double>::infinity();
  Factoring<View> f = {n, a, scale, pivots, bounds, {epsilon, relative_test, 0.0, kNone}};
  switch (eliminate(f)) {
    case Pivoting::done:
      *sign = sign_of(n, pivots);
      return nullptr;
    case Pivoting::zero_pivot:
      return kSingularMatrix;
    case Pivoting::modulus_overflow:
      break;
  }
  throw SE_FPEOverflow_Exception();
}

}  // namespace

const char* ludecomp(aMatrix* a, double* pivots, double* sign, bool relative_test) {
  *sign = 1.0;
  if (a->re == nullptr) return "PPnullPtr";
  if (const char* message = check_square(a)) return message;
  return factor(a->rows, real_view(a), pivots, sign, kEps, relative_test);
}

const char* cludecomp(aMatrix* a, double* pivots, double* sign, bool relative_test) {
  *sign = 1.0;
  if (const char* message = check_square(a)) return message;
  if (!provide_parts(a)) return kOutOfMemory;
  const char* message = factor(a->rows, complex_view(a), pivots, sign, kEps * kEps, relative_test);
  if (message == nullptr && pivots != nullptr)
    for (Index k = 0; k < a->rows; ++k) pivots[k] += 1.0;
  return message;
}

const char* factor_copy(const aMatrix* m, aMatrix* lu, bool complex, double* pivots,
                        bool relative_test) {
  double sign;
  return fast_or_plain(
      kSingularMatrix,
      [&] { return (complex ? cludecomp : ludecomp)(lu, pivots, &sign, relative_test); },
      [&] { return factor_plainly(m, lu, complex, pivots, relative_test); });
}

}  // namespace matrix_pack
