// The function table: static records, and the initializer that fills them while the pack is loaded.
//
// The rows refer to records that the host's library owns. Their addresses are values of another
// library's variables, so the table cannot be a constant: it is zero in the image. The rows
// themselves stand in pack/function_rows.inc.
#include <cstring>
#include <initializer_list>

#include "eigen/eigen.hpp"
#include "linsys/linsys.hpp"
#include "norms/norms.hpp"
#include "pack/exports.hpp"
#include "structural/structural.hpp"
#include "svd/svd.hpp"

// --- The names ---

#define HOST_ROW(...)

#pragma GCC visibility push(default)
#define ROW(function, ...) sName string_##function = {{{kStringKind}, #function, 0}, 0};
#include "pack/function_rows.inc"
#undef ROW
#pragma GCC visibility pop

sName string_TOL = {{{kStringKind}, "TOL", 0}, 0};
const sIdentifier identifier_TOL = {{kIdentifierKind}, 0, &string_TOL, 2};
const sCons TOLLIST = {&identifier_TOL, nullptr};
sCons ORIGINLIST = {nullptr, nullptr};

FunctionEntry theEfi[kRowCount];
const std::int32_t numFuncs = kRowCount;

namespace matrix_pack {

namespace {

// --- What the rows consist of, besides the host's signatures and StripUnit_sString ---

// Of the exported overloads, those that are handlers.
constexpr Anyval* (*eigenvals)(EfiCallContext*, Anyval*, Anyval*) = ::eigenvals;
constexpr Anyval* (*eigenvecs)(EfiCallContext*, Anyval*) = ::eigenvecs;

// No worksheet variable follows the arguments.
constexpr const sCons* kNone = nullptr;

// Flags. Their bits are the host's to interpret.
constexpr std::uint8_t kUsual = 12;
constexpr std::uint8_t kExtents = 8;    // rows, cols and identity
constexpr std::uint8_t kCallsBack = 0;  // matrix, which applies a function of the worksheet

// Unit rules. A rule is null where all arguments are plain numbers, else the name of a unit check
// of the host's or an expression in its rule language.
constexpr const sString* kPlainNumbers = nullptr;

constexpr sString check(const char* name) {
  return {{kStringKind}, name, 0};
}

sString same_unit = check("-EqDims");                      // That of the result, too.
sString same_unit_plain_result = check("-EqDimsDimless");  // Of which the result has none.
sString plain = check("-VDimless");
sString quotient = check("-DimsLikeDiv");
sString root = check("-DimsLikeRoot");

// The text of a rule, and the record that rows point at.
struct UnitRule {
  const char* text;
  sString string;
};

constexpr UnitRule rule(const char* text) {
  return {text, {{kStringKind}, nullptr, 0}};
}

UnitRule unit_of_elements = rule(" (%lambda (a) (-EqDims a)) ");
UnitRule plain_sizes = rule(" (%lambda(a b function ) ( -VDimless a b )  )");
UnitRule plain_bounds =
    rule(" (%lambda(a b c d e) ( %sequence ( (-VDimless b c d e) ( -EqDims a ) ) ) )");
UnitRule second_over_first = rule(" (%lambda(a b)( -DimsLikeDiv b a ) ) ");
UnitRule plain_vectors = rule(" (%lambda(a b)( -EqDimsDimless a ) ) ");
UnitRule square_root = rule(" (%lambda (a)( -DimsLikeRoot a 2 ) ) ");
UnitRule reciprocal = rule(" (%lambda (a)( -DimsLikePower a -1 ) ) ");

const sString* record_of(const sString* record) {
  return record;
}
const sString* record_of(const sString& check) {
  return &check;
}
const sString* record_of(const UnitRule& rule) {
  return &rule.string;
}

// --- The initializer ---

std::int32_t text_length(const char* text) {
  return static_cast<std::int32_t>(std::strlen(text));
}

// Names and unit checks count the terminating NUL; rules do not.
void fill_counted_length(sString* record) {
  record->length = text_length(record->text) + 1;
}

void fill_check_lengths() {
  for (sString* check : {&same_unit, &same_unit_plain_result, &plain, &quotient, &root})
    fill_counted_length(check);
}

void fill_name_lengths() {
#define ROW(function, ...) fill_counted_length(&string_##function);
#include "pack/function_rows.inc"
#undef ROW
}

void fill_rules() {
  for (UnitRule* rule : {&unit_of_elements, &plain_sizes, &plain_bounds, &second_over_first,
                         &plain_vectors, &square_root, &reciprocal}) {
    rule->string.text = rule->text;
    rule->string.length = text_length(rule->text);
  }
}

template <class... Arguments>
FunctionEntry row(const sString* name, sFunctionInfo* signature, const sCons* context,
                  std::uint8_t flags, const sString* rule,
                  Anyval* (*handler)(EfiCallContext*, Arguments...)) {
  return {signature, context, flags, {}, name, 0, reinterpret_cast<AnyHandler>(handler), rule};
}

#undef HOST_ROW
#define HOST_ROW(function, name, signature, context, flags, rule) \
  row(name, signature, context, flags, record_of(rule), matrix_pack::function),
#define ROW(function, ...) HOST_ROW(function, &string_##function, __VA_ARGS__)

void fill_rows() {
  const FunctionEntry rows[] = {
#include "pack/function_rows.inc"
  };
  static_assert(sizeof rows == sizeof theEfi, "kRowCount is the number of rows");
  std::memcpy(theEfi, rows, sizeof rows);
}

// Runs while the library is loaded, before the host can see the table.
[[maybe_unused]] const bool filled = [] {
  fill_check_lengths();
  fill_name_lengths();
  ORIGINLIST = {ORIGIN_sUnIdent, nullptr};
  fill_counted_length(&string_TOL);
  fill_rules();
  fill_rows();
  return true;
}();

}  // namespace

}  // namespace matrix_pack
