// What a check sees and says. Each takes a request whose arguments and result are finite, and whose
// matrices hold numbers only.
#pragma once

#include <cmath>
#include <optional>
#include <string>

#include "host/audit/audit.hpp"
#include "host/audit/numeric/matrix.hpp"

namespace audit {

struct Verdict {
  // The error, relative to the largest element of the result; nothing where it cannot be known.
  std::optional<double> error = {};
  std::string cause = {};  // Of an error that is too large,
  std::string alarm = {};  // or the whole sentence: then `error` is 1.
  std::string note = {};   // Of a result that holds.
  bool is_meant = false;   // An alarm is only a note: the worksheet asked for it.
};

inline Verdict alarm(std::string text) {
  return {.error = 1.0, .alarm = std::move(text)};
}

inline const aMatrix* matrix_at(const Request& r, std::size_t k) {
  return static_cast<const aMatrix*>(r.arguments[k]);
}
inline const aMatrix* result_matrix(const Request& r) {
  return static_cast<const aMatrix*>(r.result);
}
inline double result_number(const Request& r) {
  return static_cast<const aComplex*>(r.result)->re;
}
inline bool is_cheap(const Request& r, int order) {
  return r.full || order <= kCheapOrder;
}

// Up to this order errors are looked at column by column: of few elements a random vector easily
// leaves one out.
inline constexpr int kFewColumns = 16;

// How many random vectors show an error: of one with many elements hardly any leaves it out.
inline int probes_for(int order) {
  return order <= kCheapOrder ? 3 : 1;
}

// The cause where a system of equations has no digits.
inline constexpr const char* kSingular = "the matrix is singular to working precision";

// A generator whose seed is made from the shape and the salt: the same call gives the same words.
inline Random random_for(const aMatrix* m, std::uint64_t salt) {
  Random random = {(static_cast<std::uint64_t>(m->rows) << 32) +
                   static_cast<std::uint32_t>(m->cols) + salt * 0x9E3779B97F4A7C15u};
  random.next();
  return random;
}

// Each in the file of its family.
Verdict check_lsolve(const Request&r), check_inverse(const Request&r);
Verdict check_lu(const Request&r), check_cholesky(const Request&r), check_qr(const Request&r);
Verdict check_rref(const Request&r), check_rank(const Request&r), check_geninv(const Request&r);
Verdict check_norm1(const Request&r), check_normi(const Request&r), check_norme(const Request&r),
    check_norm2(const Request&r);
// The same in one pass, in plain arithmetic, without asking first whether all elements are finite.
// Nothing where that does not do: where some are not, or sums or squares may leave the range.
std::optional<Verdict> glance_at_norm1(const Request&r), glance_at_normi(const Request&r),
    glance_at_norme(const Request&r);
Verdict check_cond1(const Request&r), check_condi(const Request&r), check_conde(const Request&r),
    check_cond2(const Request&r);
Verdict check_eigenvals(const Request&r), check_eigenvecs(const Request&r),
    check_eigenvec(const Request&r);
Verdict check_genvals(const Request&r), check_genvecs(const Request&r);
Verdict check_svd(const Request&r), check_svds(const Request&r);

}  // namespace audit
