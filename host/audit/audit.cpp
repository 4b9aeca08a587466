#include "host/audit/audit.hpp"

#include <algorithm>
#include <cmath>
#include <new>

#include "fmt/format.h"
#include "host/audit/check.hpp"
#include "host/audit/second_call.hpp"

namespace audit {

// What a result looks like; checks of joined values look at the parts themselves.
enum class Shape { number, same, transposed, column, values, vectors, joined };

struct Check {
  const char* name;
  std::size_t arguments;
  bool takes_tolerance;
  bool is_square;  // The first argument.
  Shape shape;     // Of the result.
  Verdict (*evaluate)(const Request& r);
  // Tried first, if there is one: faster, and it sees itself whether elements are finite.
  std::optional<Verdict> (*glance)(const Request& r) = nullptr;
};

namespace {

constexpr Check kChecks[] = {
    {"lu", 1, false, true, Shape::joined, check_lu},
    {"lsolve", 2, false, true, Shape::column, check_lsolve},
    {"cholesky", 1, false, true, Shape::same, check_cholesky},
    {"qr", 1, false, false, Shape::joined, check_qr},
    {"rref", 1, false, false, Shape::same, check_rref},
    {"rank", 1, false, false, Shape::number, check_rank},
    {"geninv", 1, true, false, Shape::transposed, check_geninv},
    {"norm1", 1, false, true, Shape::number, check_norm1, glance_at_norm1},
    {"norm2", 1, false, true, Shape::number, check_norm2},
    {"norme", 1, false, true, Shape::number, check_norme, glance_at_norme},
    {"normi", 1, false, true, Shape::number, check_normi, glance_at_normi},
    {"cond1", 1, false, true, Shape::number, check_cond1},
    {"cond2", 1, false, true, Shape::number, check_cond2},
    {"conde", 1, false, true, Shape::number, check_conde},
    {"condi", 1, false, true, Shape::number, check_condi},
    {"eigenvals", 1, true, true, Shape::column, check_eigenvals},
    {"eigenvecs", 1, false, true, Shape::same, check_eigenvecs},
    {"eigenvec", 2, false, true, Shape::column, check_eigenvec},
    {"genvals", 2, true, true, Shape::values, check_genvals},
    {"genvecs", 2, true, true, Shape::vectors, check_genvecs},
    {"svd", 1, false, false, Shape::joined, check_svd},
    {"svds", 1, false, false, Shape::column, check_svds},
};

constexpr Check kInverse = {"inverse", 1, false, true, Shape::same, check_inverse};

enum class Content { numbers, not_finite, other };

bool is_plain_matrix(const Anyval* value) {
  if (value->kind != kMatrixKind) return false;
  const auto* const m = static_cast<const aMatrix*>(value);
  return (m->flags & kHoldsNested) == 0 && m->rows >= 1 && m->cols >= 1;
}

Content content_of(const Anyval* value) {
  if (value->kind == kScalarKind) {
    const auto* const z = static_cast<const aComplex*>(value);
    return std::isfinite(z->re) && std::isfinite(z->im) ? Content::numbers : Content::not_finite;
  }
  if (!is_plain_matrix(value)) return Content::other;
  const auto* const m = static_cast<const aMatrix*>(value);
  // What lies between the columns is nobody's.
  for (int j = 0; j < m->cols; ++j) {
    const auto at = static_cast<std::ptrdiff_t>(j) * m->leading_dimension;
    const auto n = static_cast<std::size_t>(m->rows);
    for (const double* part : {m->re, m->im})
      if (part != nullptr && !all_finite(part + at, n)) return Content::not_finite;
  }
  return Content::numbers;
}

// Whether the shapes are those of the function that we know: another pack may have one of that
// name.
bool fits(const Check& check, const Request& r) {
  if (r.arguments.empty() || r.arguments[0]->kind != kMatrixKind) return false;
  const aMatrix* const A = matrix_at(r, 0);
  const bool takes_number = check.evaluate == check_eigenvec;
  if (check.arguments == 2 && (r.arguments.size() < 2 ||
                               r.arguments[1]->kind != (takes_number ? kScalarKind : kMatrixKind) ||
                               (!takes_number && matrix_at(r, 1)->rows != A->rows)))
    return false;
  if (check.is_square && A->rows != A->cols) return false;
  if (check.shape == Shape::number) return r.result->kind == kScalarKind;
  if (r.result->kind != kMatrixKind) return false;
  const aMatrix* const X = result_matrix(r);
  switch (check.shape) {
    case Shape::same:
      return X->rows == A->rows && X->cols == A->cols;
    case Shape::transposed:
      return X->rows == A->cols && X->cols == A->rows;
    case Shape::column:
      return X->rows == A->cols && X->cols == 1;
    case Shape::values:
      return X->rows <= A->rows && X->cols == 1;
    case Shape::vectors:
      return X->rows == A->rows && X->cols <= A->rows;
    default:
      return true;
  }
}

std::string digits_text(double digits) {
  const auto whole = static_cast<int>(digits);
  if (whole < 1) return "no digit holds";
  return whole == 1 ? "about 1 digit holds" : fmt::format("about {} digits hold", whole);
}

Finding finding_of(const char* name, const Verdict& verdict) {
  Finding finding = {name, std::nullopt, Level::ok, verdict.note};
  if (!verdict.note.empty()) finding.level = Level::note;
  if (!verdict.error) {
    if (finding.text.empty()) finding.text = "not known: --audit=full looks closer";
    return finding;
  }
  const double error = *verdict.error;
  finding.digits = error <= 0.0     ? kMostDigits
                   : !(error < 1.0) ? 0.0
                                    : std::min(kMostDigits, -std::log10(error));
  if (*finding.digits < kDigitsWanted) {
    finding.level = verdict.is_meant ? Level::note : Level::warning;
    finding.text = !verdict.alarm.empty() ? verdict.alarm
                   : verdict.cause.empty()
                       ? digits_text(*finding.digits)
                       : fmt::format("{}: {}", digits_text(*finding.digits), verdict.cause);
  } else if (finding.text.empty()) {
    finding.text = digits_text(*finding.digits);
  }
  return finding;
}

}  // namespace

const Check* find_check(const worksheet::Row& row) {
  for (const Check& check : kChecks)
    if (row.name == check.name) {
      const bool has_tolerance = row.context.size() == 1 && row.context[0] == "TOL";
      const bool fits = row.argument_count == check.arguments &&
                        (check.takes_tolerance ? has_tolerance : row.context.empty());
      return fits ? &check : nullptr;
    }
  return nullptr;
}

const Check* inverse_check() {
  return &kInverse;
}

std::optional<Finding> run(const Check& check, const Request& request) try {
  if (check.glance != nullptr && is_plain_matrix(request.arguments[0]) && fits(check, request))
    if (const auto verdict = check.glance(request)) return finding_of(check.name, *verdict);
  for (const Anyval* argument : request.arguments)
    if (content_of(argument) != Content::numbers) return std::nullopt;
  switch (content_of(request.result)) {
    case Content::numbers:
      if (!fits(check, request)) return std::nullopt;
      return finding_of(check.name, check.evaluate(request));
    case Content::not_finite:
      return finding_of(check.name, alarm("the result is not finite, the arguments are"));
    default:
      return std::nullopt;
  }
} catch (const std::bad_alloc&) {
  return std::nullopt;
} catch (const Stopped&) {
  return std::nullopt;
}

namespace {

// The messages that depend on the size of the elements.
bool is_about_size(const Anyval* result) {
  if (result->kind != kErrorKind) return false;
  const std::string_view message = static_cast<const aError*>(result)->message->text;
  return message == "too many iterations" || message == "singular matrix";
}

// Far from 1: sizes within are no reason to fail.
constexpr int kFarExponent = 20;

}  // namespace

std::optional<Finding> hint(const Check& check, const Request& r) try {
  if (!is_about_size(r.result)) return std::nullopt;
  std::vector<Parts> matrices;
  for (std::size_t k = 0; k < check.arguments; ++k) {
    if (r.arguments[k]->kind != kMatrixKind || content_of(r.arguments[k]) != Content::numbers)
      return std::nullopt;
    matrices.push_back(parts_of(matrix_at(r, k)));
  }
  const int power = -exponent(std::max(largest(matrices[0].re), largest(matrices[0].im)));
  if (std::abs(power) < kFarExponent || -power == kZeroExponent ||
      !is_cheap(r, matrix_at(r, 0)->rows))
    return std::nullopt;
  std::vector<const Parts*> near_1;
  for (Parts& m : matrices) {
    scale(m.re, power);
    scale(m.im, power);
    near_1.push_back(&m);
  }
  const double* const tolerance =
      check.takes_tolerance ? &static_cast<const aComplex*>(r.arguments[check.arguments])->re
                            : nullptr;
  if (content_of(call_again(r, near_1, tolerance)) != Content::numbers) return std::nullopt;
  const double factor = std::ldexp(1.0, std::clamp(power, -1000, 1000));
  return Finding{check.name, std::nullopt, Level::note,
                 fmt::format("times about {:.0e}, near 1, {} a result", factor,
                             matrices.size() == 1 ? "the matrix has" : "the matrices have")};
} catch (const std::bad_alloc&) {
  return std::nullopt;
} catch (const Stopped&) {
  return std::nullopt;
}

}  // namespace audit
