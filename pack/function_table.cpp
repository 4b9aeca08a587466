// The function table: static records, and the initializer that fills them while the pack is loaded.
//
// The rows refer to records that the host's library owns. Their addresses are values of another
// library's variables, so the table cannot be a constant: it is zero in the image.
#include <cstring>
#include <initializer_list>

#include "eigen/eigen.hpp"
#include "linsys/linsys.hpp"
#include "norms/norms.hpp"
#include "pack/exports.hpp"
#include "structural/structural.hpp"
#include "svd/svd.hpp"

namespace {

constexpr sName name_record(const char* text) {
  return {{{kStringKind}, text, 0}, 0};
}

}  // namespace

sName string_rows = name_record("rows");
sName string_cols = name_record("cols");
sName string_identity = name_record("identity");
sName string_last = name_record("last");
sName string_length = name_record("length");
sName string_max = name_record("max");
sName string_min = name_record("min");
sName string_reverse = name_record("reverse");
sName string_submatrix = name_record("submatrix");
sName string_tr = name_record("tr");
sName string_augment = name_record("augment");
sName string_stack = name_record("stack");
sName string_cond1 = name_record("cond1");
sName string_cond2 = name_record("cond2");
sName string_conde = name_record("conde");
sName string_condi = name_record("condi");
sName string_cholesky = name_record("cholesky");
sName string_eigenvals = name_record("eigenvals");
sName string_eigenvecs = name_record("eigenvecs");
sName string_eigenvec = name_record("eigenvec");
sName string_genvals = name_record("genvals");
sName string_genvecs = name_record("genvecs");
sName string_geninv = name_record("geninv");
sName string_lsolve = name_record("lsolve");
sName string_lu = name_record("lu");
sName string_norm1 = name_record("norm1");
sName string_norm2 = name_record("norm2");
sName string_norme = name_record("norme");
sName string_normi = name_record("normi");
sName string_qr = name_record("qr");
sName string_rank = name_record("rank");
sName string_rref = name_record("rref");
sName string_svd = name_record("svd");
sName string_svds = name_record("svds");
sName string_matrix = name_record("matrix");

sName string_TOL = name_record("TOL");
const sIdentifier identifier_TOL = {{kIdentifierKind}, 0, &string_TOL, 2};
const sCons TOLLIST = {&identifier_TOL, nullptr};
sCons ORIGINLIST = {nullptr, nullptr};

FunctionEntry theEfi[kRowCount];
const std::int32_t numFuncs = kRowCount;

namespace {

// Unit checks: rows name three of them directly, and all stand in the rules below.
sString check_eq_dims = {{kStringKind}, "-EqDims", 0};
sString check_eq_dims_dimless = {{kStringKind}, "-EqDimsDimless", 0};
sString check_v_dimless = {{kStringKind}, "-VDimless", 0};
sString check_dims_like_div = {{kStringKind}, "-DimsLikeDiv", 0};
sString check_dims_like_root = {{kStringKind}, "-DimsLikeRoot", 0};

// A unit rule: its text in the host's rule language, and the record that rows point at.
struct UnitRule {
  const char* text;
  sString string;
};

constexpr UnitRule unit_rule(const char* text) {
  return {text, {{kStringKind}, nullptr, 0}};
}

UnitRule rule1 = unit_rule(" (%lambda (a) (-EqDims a)) ");
UnitRule rule2 = unit_rule(" (%lambda(a b function ) ( -VDimless a b )  )");
UnitRule rule3 =
    unit_rule(" (%lambda(a b c d e) ( %sequence ( (-VDimless b c d e) ( -EqDims a ) ) ) )");
UnitRule rule4 = unit_rule(" (%lambda(a b)( -DimsLikeDiv b a ) ) ");
UnitRule rule5 = unit_rule(" (%lambda(a b)( -EqDimsDimless a ) ) ");
UnitRule rule6 = unit_rule(" (%lambda (a)( -DimsLikeRoot a 2 ) ) ");
UnitRule rule7 = unit_rule(" (%lambda (a)( -DimsLikePower a -1 ) ) ");

std::int32_t text_length(const char* text) {
  return static_cast<std::int32_t>(std::strlen(text));
}

template <class... Arguments>
FunctionEntry row(const sString* name, sFunctionInfo* signature, const sCons* context,
                  std::uint8_t flags, Anyval* (*handler)(EfiCallContext*, Arguments...),
                  const sString* rule) {
  return {signature, context, flags, {}, name, 0, reinterpret_cast<AnyHandler>(handler), rule};
}

// Names and unit checks count the terminating NUL; the rules below do not.
void fill_counted_length(sString* record) {
  record->length = text_length(record->text) + 1;
}

void fill_check_lengths() {
  for (sString* check : {&check_eq_dims, &check_eq_dims_dimless, &check_v_dimless,
                         &check_dims_like_div, &check_dims_like_root})
    fill_counted_length(check);
}

void fill_name_lengths() {
  sName* const names[] = {
      &string_rows,    &string_cols,     &string_identity,  &string_last,      &string_length,
      &string_max,     &string_min,      &string_reverse,   &string_submatrix, &string_tr,
      &string_augment, &string_stack,    &string_cond1,     &string_cond2,     &string_conde,
      &string_condi,   &string_cholesky, &string_eigenvals, &string_eigenvecs, &string_eigenvec,
      &string_genvals, &string_genvecs,  &string_geninv,    &string_lsolve,    &string_lu,
      &string_norm1,   &string_norm2,    &string_norme,     &string_normi,     &string_qr,
      &string_rank,    &string_rref,     &string_svd,       &string_svds,      &string_matrix};
  for (sName* name : names) fill_counted_length(name);
}

void fill_rules() {
  for (UnitRule* rule : {&rule1, &rule2, &rule3, &rule4, &rule5, &rule6, &rule7}) {
    rule->string.text = rule->text;
    rule->string.length = text_length(rule->text);
  }
}

void fill_rows() {
  theEfi[0] = row(&string_rows, Any_to_Any, nullptr, 8, matrix_pack::rows, StripUnit_sString);
  theEfi[1] = row(&string_cols, Any_to_Any, nullptr, 8, matrix_pack::cols, StripUnit_sString);
  theEfi[2] = row(&string_identity, Any_to_Mat, nullptr, 8, matrix_pack::identity, nullptr);
  theEfi[3] =
      row(&string_last, Any_Any_to_Num, &ORIGINLIST, 12, matrix_pack::last, StripUnit_sString);
  theEfi[4] = row(&string_length, Any_to_Num, nullptr, 12, matrix_pack::length, StripUnit_sString);
  theEfi[5] = row(&string_max, Any_to_Num, nullptr, 12, matrix_pack::max, &rule1.string);
  theEfi[6] = row(&string_min, Any_to_Num, nullptr, 12, matrix_pack::min, &rule1.string);
  theEfi[7] = row(&string_reverse, Any_to_Mat, nullptr, 12, matrix_pack::reverse, &rule1.string);
  theEfi[8] = row(&string_submatrix, Any_Any_Any_Any_Any_Any_to_Any, &ORIGINLIST, 12,
                  matrix_pack::submatrix, &rule3.string);
  theEfi[9] =
      row(Transpose_sString, Any_to_Mat, nullptr, 12, matrix_pack::transpose, &check_eq_dims);
  theEfi[10] = row(&string_tr, Any_to_Any, nullptr, 12, matrix_pack::tr, &check_eq_dims);
  theEfi[11] =
      row(&string_augment, Any_Any_to_Mat, nullptr, 12, matrix_pack::augment, &check_eq_dims);
  theEfi[12] = row(&string_stack, Mat_Mat_to_Mat, nullptr, 12, matrix_pack::stack, &check_eq_dims);
  theEfi[13] =
      row(&string_matrix, Any_Any_Any_to_Mat, nullptr, 0, matrix_pack::matrix, &rule2.string);
  theEfi[14] =
      row(&string_cond1, Any_to_Any, nullptr, 12, matrix_pack::cond1, &check_eq_dims_dimless);
  theEfi[15] =
      row(&string_cond2, Any_to_Any, nullptr, 12, matrix_pack::cond2, &check_eq_dims_dimless);
  theEfi[16] =
      row(&string_conde, Any_to_Any, nullptr, 12, matrix_pack::conde, &check_eq_dims_dimless);
  theEfi[17] =
      row(&string_condi, Any_to_Any, nullptr, 12, matrix_pack::condi, &check_eq_dims_dimless);
  theEfi[18] = row(&string_cholesky, Any_to_Mat, nullptr, 12, matrix_pack::cholesky, &rule6.string);
  theEfi[19] = row(diag_sString, Any_to_Mat, nullptr, 12, matrix_pack::diag, nullptr);
  theEfi[20] =
      row(&string_eigenvals, Any_Any_to_Any, &TOLLIST, 12,
          static_cast<Anyval* (*)(EfiCallContext*, Anyval*, Anyval*)>(eigenvals), &rule1.string);
  theEfi[21] =
      row(&string_eigenvecs, Any_to_Any, nullptr, 12,
          static_cast<Anyval* (*)(EfiCallContext*, Anyval*)>(eigenvecs), &check_eq_dims_dimless);
  theEfi[22] = row(&string_eigenvec, Any_Any_to_Mat, nullptr, 12, matrix_pack::eigenvec,
                   &check_eq_dims_dimless);
  theEfi[23] = row(&string_genvals, Any_Any_Any_to_Any, &TOLLIST, 12, matrix_pack::genvals,
                   &check_dims_like_div);
  theEfi[24] =
      row(&string_genvecs, Any_Any_Any_to_Any, &TOLLIST, 12, matrix_pack::genvecs, &rule5.string);
  theEfi[25] =
      row(&string_geninv, Any_Any_to_Mat, &TOLLIST, 12, matrix_pack::geninv, &rule7.string);
  theEfi[26] = row(&string_lsolve, Any_Any_to_Mat, nullptr, 12, matrix_pack::lsolve, &rule4.string);
  theEfi[27] = row(&string_lu, Any_to_Mat, nullptr, 12, matrix_pack::lu, nullptr);
  theEfi[28] = row(&string_norm1, Any_to_Num, nullptr, 12, matrix_pack::norm1, &check_eq_dims);
  theEfi[29] = row(&string_norm2, Any_to_Num, nullptr, 12, matrix_pack::norm2, &check_eq_dims);
  theEfi[30] = row(&string_norme, Any_to_Any, nullptr, 12, matrix_pack::norme, &check_eq_dims);
  theEfi[31] = row(&string_normi, Any_to_Any, nullptr, 12, matrix_pack::normi, &check_eq_dims);
  theEfi[32] = row(&string_qr, Any_to_Any, nullptr, 12, matrix_pack::qr, nullptr);
  theEfi[33] =
      row(&string_rank, Any_to_Any, nullptr, 12, matrix_pack::rank, &check_eq_dims_dimless);
  theEfi[34] = row(&string_rref, Any_to_Mat, nullptr, 12, matrix_pack::rref, nullptr);
  theEfi[35] = row(&string_svd, Any_to_Any, nullptr, 12, matrix_pack::svd, nullptr);
  theEfi[36] = row(&string_svds, Any_to_Any, nullptr, 12, matrix_pack::svds, nullptr);
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
