// Checks of the norms: computed once more in scaled arithmetic.
#include <algorithm>
#include <cmath>

#include "host/audit/check.hpp"
#include "host/audit/numeric/golub_kahan.hpp"

namespace audit {

namespace {

constexpr const char* kOutOfRange = "squares left the range of numbers";

// Sums that do not wait for each other.
constexpr std::size_t kSums = 16;

// The sum of of_element(i) over n elements; NaN or infinite if one is.
template <class OfElement>
double sum_of(std::size_t n, OfElement of_element) {
  double sums[kSums] = {};
  std::size_t i = 0;
  for (; i + kSums <= n; i += kSums)
    for (std::size_t lane = 0; lane < kSums; ++lane) sums[lane] += of_element(i + lane);
  for (; i < n; ++i) sums[0] += of_element(i);
  for (std::size_t lane = 1; lane < kSums; ++lane) sums[0] += sums[lane];
  return sums[0];
}

// Calls use(re, im) for each column, or the first of them, with null for an absent part.
template <class Use>
void for_each_column(const aMatrix* m, int count, Use use) {
  for (int j = 0; j < count; ++j) {
    const auto at = static_cast<std::ptrdiff_t>(j) * m->leading_dimension;
    use(m->re == nullptr ? nullptr : m->re + at, m->im == nullptr ? nullptr : m->im + at);
  }
}

// Whether the matrix has two parts; if not, which one it has.
const double* only_part(const double* re, const double* im) {
  return re == nullptr ? im : im == nullptr ? re : nullptr;
}

double magnitude(double re, double im) {
  return std::sqrt(re * re + im * im);
}

// The verdict on a norm that should be `right`, if neither that nor `total`, which has all elements
// in it, tells of elements that are not finite, or of squares that may have left the range. (Those
// that are too small for that are nothing beside the norm.)
std::optional<Verdict> glance(const Request& r, double right, double total) {
  constexpr double kLeast = 0x1p-400, kMost = 0x1p400;
  const double given = result_number(r);
  if (!std::isfinite(given) || !(total <= kMost) || !(right >= kLeast)) return std::nullopt;
  return Verdict{.error = std::fabs(given - right) / right, .cause = kOutOfRange};
}

// Sums of magnitudes of real numbers leave the range at no size of theirs, and the call does little
// more than read them. Beyond the order at which a check may take as long as its call, some of the
// columns are enough.
int columns_to_read(const Request& r) {
  constexpr int kOneOf = 6;
  const aMatrix* const m = matrix_at(r, 0);
  const bool is_real = m->re == nullptr || m->im == nullptr;
  return is_real && !is_cheap(r, m->rows) ? m->cols / kOneOf : m->cols;
}

// The verdict on a norm that is at least `least`, a sum of some magnitudes, where `total` is the
// sum of all that were read. Digits are lost to rounding only, one after the other.
std::optional<Verdict> compare_with_least(const Request& r, double least, double total) {
  const double given = result_number(r);
  if (!std::isfinite(given) || !std::isfinite(total)) return std::nullopt;
  if (!(given >= least * (1 - 1e-6))) return alarm("some of the sums are larger");
  return Verdict{.error = matrix_at(r, 0)->rows * kEpsilon};
}

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
  return {.error = std::fabs(given - right) / right, .cause = kOutOfRange};
}

}  // namespace

std::optional<Verdict> glance_at_norm1(const Request& r) {
  const auto n = static_cast<std::size_t>(matrix_at(r, 0)->rows);
  const int count = columns_to_read(r);
  double most = 0.0, total = 0.0;
  const auto take = [&](const double* re, const double* im) {
    const double* const part = only_part(re, im);
    const double sum =
        part != nullptr ? sum_of(n, [&](std::size_t i) { return std::fabs(part[i]); })
        : re != nullptr ? sum_of(n, [&](std::size_t i) { return magnitude(re[i], im[i]); })
                        : 0.0;
    most = std::max(most, sum);
    total += sum;
  };
  for_each_column(matrix_at(r, 0), count, take);
  return count < matrix_at(r, 0)->cols ? compare_with_least(r, most, total)
                                       : glance(r, most, total);
}

std::optional<Verdict> glance_at_normi(const Request& r) {
  const int count = columns_to_read(r);
  const auto n = static_cast<std::size_t>(matrix_at(r, 0)->rows);
  Vector sums(n);
  double* const to = sums.data();
  const auto take = [n, to](const double* re, const double* im) {
    const double* const part = only_part(re, im);
    if (part != nullptr) {
      for (std::size_t i = 0; i < n; ++i) to[i] += std::fabs(part[i]);
    } else if (re != nullptr) {
      for (std::size_t i = 0; i < n; ++i) to[i] += magnitude(re[i], im[i]);
    }
  };
  for_each_column(matrix_at(r, 0), count, take);
  const double total = sum_of(n, [&](std::size_t i) { return to[i]; });
  return count < matrix_at(r, 0)->cols ? compare_with_least(r, largest(sums), total)
                                       : glance(r, largest(sums), total);
}

std::optional<Verdict> glance_at_norme(const Request& r) {
  const auto n = static_cast<std::size_t>(matrix_at(r, 0)->rows);
  double squares = 0.0;
  for_each_column(matrix_at(r, 0), matrix_at(r, 0)->cols, [&](const double* re, const double* im) {
    for (const double* part : {re, im})
      if (part != nullptr) squares += sum_of(n, [&](std::size_t i) { return part[i] * part[i]; });
  });
  return glance(r, std::sqrt(squares), std::sqrt(squares));
}

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
  const LargestValue most = largest_singular_value(parts, random_for(m, 7), r.stop,
                                                   is_cheap(r, m->rows) ? kManySteps : kFewSteps);
  if (most.value == 0.0) return {.error = given == 0.0 ? 0.0 : 1.0};
  const double apart = std::fabs(given - most.value);
  // What the steps leave open is no error.
  return {.error = given >= most.value && apart <= most.open ? 0.0 : apart / most.value,
          .cause = kOutOfRange};
}

}  // namespace audit
