// A pack of two functions that keeps every promise, but for the one fault that it is linked with:
//
//   twice(A)     A with every element doubled
//   pick(v, k)   element k of the column v, counted from ORIGIN
//
// The places at which it goes wrong are the lines with `has`.
#include <unistd.h>

#include <cerrno>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "pack/host_interface.hpp"
#include "tests/packs/broken_packs/platform.hpp"

// The name of the fault: fault.cpp.
extern const char tiny_pack_fault[];

namespace {

// Whether this is the pack with that fault.
bool has(std::string_view fault) {
  return fault == tiny_pack_fault;
}

// The compiler cannot tell that what is done through it has no use.
double* volatile kept_array = nullptr;
Anyval* kept_value = nullptr;
volatile double read_back = 0.0;
volatile double calls = 0.0;
const volatile double kZero = 0.0;

// Leaves the floating-point environment as it was.
struct FpKeeper {
  FpKeeper() { std::fegetenv(&saved); }
  ~FpKeeper() {
    std::fesetenv(&saved);
    if (has("rounds_upwards")) std::fesetround(FE_UPWARD);
    if (has("raises_flags")) read_back = kZero / kZero;
  }
  FpKeeper(const FpKeeper&) = delete;
  FpKeeper& operator=(const FpKeeper&) = delete;

  std::fenv_t saved;
};

struct Bracket {
  Bracket(EfiCallContext* context, Anyval** root) : evaluator(context->evaluator) {
    evaluator->push_root(root);
  }
  ~Bracket() {
    if (!has("forgets_the_bracket")) evaluator->pop_frame();
    if (has("pops_too_often")) evaluator->pop_frame();
  }
  Bracket(const Bracket&) = delete;
  Bracket& operator=(const Bracket&) = delete;

  EfiEvaluator* evaluator;
};

void no_action(int) {}

void touch_process() {
  if (has("sets_errno")) errno = ERANGE;
  if (has("sets_the_locale")) std::setlocale(LC_ALL, kSomeLocale);
  if (has("changes_directory")) [[maybe_unused]]
    const int status = chdir("/");
  if (has("opens_a_file")) dup(0);
  if (has("prints")) std::puts("twice");
  if (has("handles_a_signal")) std::signal(kSomeSignal, no_action);
  if (has("blocks_a_signal")) block_signal();
}

void spin() {
  while (calls >= 0.0) calls = calls + 1.0;
}

void not_return() {
  if (has("throws")) throw std::runtime_error("a matter of chance");
  if (has("crashes")) crash();
  if (has("exits")) std::_Exit(0);
  if (has("spins")) spin();
  if (has("sleeps"))
    while (calls >= 0.0) sleep(1);
}

double* new_array(std::size_t count) {
  auto* const array = static_cast<double*>(::operator new(count * sizeof(double), std::nothrow));
  if (has("trusts_memory") && count > 0) *array = 0.0;
  return array;
}

void touch_memory(double* array, std::size_t count) {
  if (has("leaks")) kept_array = new_array(9);
  if (has("leaks_malloc")) kept_array = static_cast<double*>(std::malloc(72));
  if (has("writes_behind")) kept_array = array, kept_array[count] = 1.0;
  if (has("writes_in_front")) kept_array = array, kept_array[-1] = 1.0;
  if (has("writes_freed") || has("frees_twice")) {
    kept_array = new_array(4);
    if (kept_array == nullptr) return;
    ::operator delete(kept_array);
    if (has("writes_freed")) kept_array[1] = 1.0;
    if (has("frees_twice")) ::operator delete(kept_array);
  }
}

void touch_argument(const aMatrix* a, std::size_t count) {
  kept_array = a->re;
  if (kept_array == nullptr) return;
  if (has("modifies_an_argument") && count > 0) kept_array[count / 2] = 0.5;
  if (has("writes_beside_an_argument")) kept_array[count] = 0.0;
  if (has("reads_behind")) read_back = kept_array[count];
}

Anyval* error(EfiCallContext* context, const char* message, int arg) {
  if (has("numbers_no_argument")) arg = 7;
  const aString* const text = aString::mk(context->allocator, message);
  if (text == nullptr) return sError_OutOfMemory;
  aError* const made = aError::mk(context->allocator, text, 0, arg, nullptr);
  return made != nullptr ? made : sError_OutOfMemory;
}

std::size_t element_count(const aMatrix* a) {
  return static_cast<std::size_t>(a->rows) * static_cast<std::size_t>(a->cols);
}

// One doubled part array, without the gaps between its columns; null without memory.
double* doubled(const aMatrix* a, const double* part) {
  const std::size_t count = element_count(a), rows = static_cast<std::size_t>(a->rows),
                    step = static_cast<std::size_t>(a->leading_dimension);
  double* const array = new_array(count);
  if (array == nullptr) return nullptr;
  for (std::size_t k = has("reads_new_memory") ? 1 : 0; k < count; ++k)
    array[k] = 2.0 * part[k / rows * step + k % rows];
  if (has("remembers_a_call") && count > 0) array[0] += calls;
  return array;
}

aMatrix* new_matrix(EfiCallContext* context, const aMatrix* shape, double* re, double* im) {
  auto bytes = static_cast<unsigned>(element_count(shape) * sizeof(double));
  if (has("wraps_a_size")) bytes = static_cast<std::uint8_t>(bytes + 200);
  return aMatrix::mk(context->allocator, shape->rows, shape->cols, re, im, bytes);
}

Anyval* doubled_matrix(EfiCallContext* context, const aMatrix* a) {
  double* re = nullptr;
  double* im = nullptr;
  if (a->re != nullptr && (re = doubled(a, a->re)) == nullptr) return sError_OutOfMemory;
  if (a->im != nullptr && (im = doubled(a, a->im)) == nullptr) {
    if (!has("leaks_without_memory")) ::operator delete(re);
    return sError_OutOfMemory;
  }
  if (re != nullptr) touch_memory(re, element_count(a));
  if (has("shares_an_array")) ::operator delete(std::exchange(re, a->re));
  aMatrix* const made = new_matrix(context, a, re, im);
  if (made == nullptr) {
    if (!has("leaks_without_memory")) {
      ::operator delete(re);
      ::operator delete(im);
    }
    return sError_OutOfMemory;
  }
  if (has("frees_what_it_returns")) ::operator delete(made->re);
  return made;
}

Anyval* twice(EfiCallContext* context, Anyval* value) {
  calls = calls + 1.0;
  const FpKeeper keeper;
  const Bracket bracket(context, &value);
  if (value->kind != kMatrixKind) return error(context, "must be array", 1);
  const auto* const a = static_cast<const aMatrix*>(value);
  const auto count = a->byte_size / sizeof(double);
  touch_process();
  touch_argument(a, count);
  not_return();
  if (has("returns_null")) return nullptr;
  static aComplex foreign = {{kScalarKind}, 0, 1.0, 0.0};
  if (has("returns_foreign_value")) return &foreign;
  Anyval* result = doubled_matrix(context, a);
  if (has("changes_a_record")) const_cast<aMatrix*>(a)->rows += 1;
  if (has("returns_stale_value")) {
    if (kept_value == nullptr) kept_value = result;
    result = kept_value;
  }
  return result;
}

Anyval* pick(EfiCallContext* context, Anyval* vector, Anyval* index, Anyval* origin) {
  const FpKeeper keeper;
  if (vector->kind != kMatrixKind) return error(context, "must be array", 1);
  if (index->kind != kScalarKind) return error(context, "non-scalar value", 2);
  if (origin->kind != kScalarKind) return error(context, "illegal context", 3);
  const auto* const v = static_cast<const aMatrix*>(vector);
  const double k = static_cast<aComplex*>(index)->re - static_cast<aComplex*>(origin)->re;
  if (v->cols != 1) return error(context, "must be vector", 1);
  if (!(k >= 0 && k < v->rows)) return error(context, "invalid index", 2);
  const auto at = static_cast<std::size_t>(k);
  aComplex* made = nullptr;
  context->allocator->new_scalar(&made);
  if (made == nullptr) return sError_OutOfMemory;
  made->kind = kScalarKind;
  made->re = v->re == nullptr ? 0.0 : v->re[at];
  if (!has("forgets_a_part")) made->im = v->im == nullptr ? 0.0 : v->im[at];
  return made;
}

sString name(const char* text) {
  const auto length = static_cast<std::int32_t>(std::strlen(text));
  return {{kStringKind}, text, has("wrong_name_length") ? length : length + 1};
}

sString rule(const char* text) {
  return {{kStringKind}, text, static_cast<std::int32_t>(std::strlen(text))};
}

sString twice_name = name("twice");
sString pick_name = name("pick");
sString twice_rule =
    rule(has("bad_unit_rule") ? "(%lambda (a) (-EqDims b))" : "(%lambda (a) (-EqDims a))");
sString pick_rule = rule("(%lambda (a b) (%sequence ((-VDimless b) (-EqDims a))))");
sCons origin = {nullptr, nullptr};

const PackIdentifier identifier = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};

template <class Handler>
AnyHandler any(Handler handler) {
  return reinterpret_cast<AnyHandler>(handler);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

FunctionEntry theEfi[2];
extern const std::int32_t numFuncs = has("too_many_rows") ? 3 : 2;

std::int32_t DllRegisterServer() {
  return has("cannot_register") ? 5 : RegisterEfiFunctionPack(theEfi, &identifier);
}

std::int32_t DllUnregisterServer() {
  return has("never_unregisters") ? 0 : UnregisterEfiFunctionPack(&identifier);
}

}  // extern "C"
#pragma GCC visibility pop

namespace {

[[maybe_unused]] const bool filled = [] {
  origin.car = ORIGIN_sUnIdent;
  theEfi[0] = {Any_to_Mat, nullptr, 12, {}, &twice_name, 0, any(twice), &twice_rule};
  theEfi[1] = {Any_Any_Any_to_Any, &origin, 12, {}, &pick_name, 0, any(pick), &pick_rule};
  if (has("no_handler")) theEfi[0].handler = nullptr;
  if (has("reserved_word")) theEfi[0].reserved = 1;
  if (has("foreign_signature")) theEfi[0].signature = reinterpret_cast<sFunctionInfo*>(&twice_name);
  if (has("bad_context")) origin.car = &twice_name;
  if (has("prints_when_loaded")) std::puts("tiny pack");
  if (has("handles_a_signal_when_loaded")) std::signal(kSomeSignal, SIG_IGN);
  if (has("exits_when_loaded")) std::exit(0);
  if (has("aborts_when_loaded")) std::abort();
  if (has("spins_when_loaded")) spin();
  return true;
}();

}  // namespace
