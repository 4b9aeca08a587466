#include "linsys/lu/ludecomp.hpp"

#include <limits>

#include "linsys/lu/complex_matrix.hpp"
#include "linsys/lu/elimination.hpp"
#include "pack/frame/faults.hpp"
#include "pack/memory.hpp"

namespace matrix_pack {

namespace {

constexpr double kRealEpsilon = 2.220446049250313e-16;     // 2^-52
constexpr double kComplexEpsilon = 4.930380657631324e-32;  // 2^-104

const char* check_square(const aMatrix* a) {
  if (a->rows < 1 || a->cols < 1) return "invalid dimension";
  if (a->rows != a->cols) return "must be square";
  return nullptr;
}

double sign_of(Index n, const double* pivots) {
  double sign = 1.0;
  for (Index k = 0; k < n; ++k)
    if (pivots[k] != static_cast<double>(k)) sign = -sign;
  return sign;
}

template <class Array>
const char* factor(Index n, Array a, double* pivots, double* sign, double epsilon,
                   bool relative_test) {
  // The scale array, the bounds of a panel's rows, and a pivot record if the caller has none.
  const Doubles work = new_doubles(n + kPanel + (pivots == nullptr ? n : 0));
  if (!work) return "out of memory";
  double* const scale = work.get();
  double* const bounds = scale + n;
  if (pivots == nullptr) pivots = bounds + kPanel;
  constexpr double kNone = std::numeric_limits<double>::infinity();
  Factoring<Array> f = {n, a, scale, pivots, bounds, {epsilon, relative_test, 0.0, kNone}};
  switch (eliminate(f)) {
    case Pivoting::done:
      *sign = sign_of(n, pivots);
      return nullptr;
    case Pivoting::zero_pivot:
      return "singular matrix";
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
  return factor(a->rows, a->re, pivots, sign, kRealEpsilon, relative_test);
}

const char* cludecomp(aMatrix* a, double* pivots, double* sign, bool relative_test) {
  *sign = 1.0;
  if (const char* message = check_square(a)) return message;
  if (!complete_parts(a)) return "out of memory";
  const char* message = factor(a->rows, split(a), pivots, sign, kComplexEpsilon, relative_test);
  if (message == nullptr && pivots != nullptr)
    for (Index k = 0; k < a->rows; ++k) pivots[k] += 1.0;
  return message;
}

}  // namespace matrix_pack
