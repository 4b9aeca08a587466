// The records that packs take from the host's variables while they are loaded.
#include "host/efiutils/function_info.hpp"
#include "pack/host_interface.hpp"

namespace {

constexpr ArgumentKind Any = ArgumentKind::any;
constexpr ArgumentKind Num = ArgumentKind::number;
constexpr ArgumentKind Mat = ArgumentKind::matrix;

sFunctionInfo any_to_any = {1, {Any}, Any};
sFunctionInfo any_to_mat = {1, {Any}, Mat};
sFunctionInfo any_to_num = {1, {Any}, Num};
sFunctionInfo any_any_to_num = {2, {Any, Any}, Num};
sFunctionInfo any_any_to_any = {2, {Any, Any}, Any};
sFunctionInfo any_any_to_mat = {2, {Any, Any}, Mat};
sFunctionInfo any_any_any_to_any = {3, {Any, Any, Any}, Any};
sFunctionInfo any_any_any_to_mat = {3, {Any, Any, Any}, Mat};
sFunctionInfo mat_mat_to_mat = {2, {Mat, Mat}, Mat};
sFunctionInfo six_any_to_any = {6, {Any, Any, Any, Any, Any, Any}, Any};

// The length counts the terminating NUL, as in the name records of packs.
template <int N>
constexpr sString name_record(const char (&text)[N]) {
  return {{kStringKind}, text, N};
}

sString origin_name = name_record("ORIGIN");
sString diag_name = name_record("diag");
sString transpose_name = name_record("transpose");
sString strip_unit_rule = name_record("-StripUnit");

sIdentifier origin_identifier = {{kIdentifierKind}, 0, &origin_name, 2};

constexpr char kMemoryExhausted[] = "memory exhausted";
aString out_of_memory_text = {{{kStringKind}, kMemoryExhausted, sizeof kMemoryExhausted - 1}};
aError out_of_memory_error = {{kErrorKind}, 0, 0, &out_of_memory_text, nullptr};

}  // namespace

Anyval* sError_OutOfMemory = &out_of_memory_error;

sIdentifier* ORIGIN_sUnIdent = &origin_identifier;
sString* diag_sString = &diag_name;
sString* Transpose_sString = &transpose_name;
sString* StripUnit_sString = &strip_unit_rule;

sFunctionInfo* Any_to_Any = &any_to_any;
sFunctionInfo* Any_to_Mat = &any_to_mat;
sFunctionInfo* Any_to_Num = &any_to_num;
sFunctionInfo* Any_Any_to_Num = &any_any_to_num;
sFunctionInfo* Any_Any_to_Any = &any_any_to_any;
sFunctionInfo* Any_Any_to_Mat = &any_any_to_mat;
sFunctionInfo* Any_Any_Any_to_Any = &any_any_any_to_any;
sFunctionInfo* Any_Any_Any_to_Mat = &any_any_any_to_mat;
sFunctionInfo* Mat_Mat_to_Mat = &mat_mat_to_mat;
sFunctionInfo* Any_Any_Any_Any_Any_Any_to_Any = &six_any_to_any;
