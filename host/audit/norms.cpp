// Checks of the norms: computed once more in scaled arithmetic.
#include <algorithm>
#include <cmath>

#include "host/audit/check.hpp"
#include "host/audit/numeric/golub_kahan.hpp"

namespace audit {

namespace {

// The magnitudes of the elements, brought to [0, 2), and by which power of two.
Matrix magnitudes(const aMatrix* m, int* power) {
  Parts parts = parts_of(m);
  *power = normalize(parts);
  for (std::size_t k = 0; k < parts.re.elements.size(); ++k)
    parts.re.elements[k] = parts.is_complex()
                               ? std::hypot(parts.re.elements[k], parts.im.elements[k])
                               : std::fabs(parts.re.elements[k]);
  return parts.re;
}

Verdict compare(const Request& r, double (*norm)(const Matrix&)) {
  int power = 0;
  const Matrix A = magnitudes(matrix_at(r, 0), &power);
  const double right = norm(A), given = std::ldexp(result_number(r), power);
  if (right == 0.0) return {.error = given == 0.0 ? 0.0 : 1.0};
  return {.error = std::fabs(given - right) / right, .cause = "squares left the range of numbers"};
}

}  // namespace

Verdict check_norm1(const Request& r) {
  return compare(r, norm_1);
}
Verdict check_normi(const Request& r) {
  return compare(r, norm_inf);
}
Verdict check_norme(const Request& r) {
  return compare(r, frobenius);
}

Verdict check_norm2(const Request& r) {
  const aMatrix* const m = matrix_at(r, 0);
  Parts parts = parts_of(m);
  const int power = normalize(parts);
  const double given = std::ldexp(result_number(r), power);
  const LargestValue most = largest_singular_value(parts, random_for(m, 7), r.stop);
  if (most.value == 0.0) return {.error = given == 0.0 ? 0.0 : 1.0};
  const double apart = std::fabs(given - most.value);
  // What the steps leave open is no error.
  return {.error = given >= most.value && apart <= most.open ? 0.0 : apart / most.value,
          .cause = "squares left the range of numbers"};
}

}  // namespace audit
