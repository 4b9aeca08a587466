// The smallest useful pack: one function, rms(A), the root mean square of a real array's elements.
//
//   worksheet --pack libminimal_pack.so -e 'rms([3; 4])'
#include <cfenv>
#include <cmath>
#include <cstddef>

#include "pack/host_interface.hpp"

namespace {

// The host gets its floating-point environment back as it was, status flags included.
struct KeptEnvironment {
  std::fenv_t environment;
  KeptEnvironment() { std::feholdexcept(&environment); }
  ~KeptEnvironment() { std::fesetenv(&environment); }
};

// Checks in the order of the arguments: the kind, then the shape, then the values.
Anyval* rms(EfiCallContext* context, Anyval* argument) {
  if (argument->kind != kMatrixKind) return patch_error(context, "must be array", argument, 1);
  auto* const a = static_cast<aMatrix*>(argument);
  if (a->im != nullptr) return mkError(context, "must be real", 1);
  if (contains_ptrs(a)) return mkError(context, "may not be nested", 1);

  const KeptEnvironment kept;
  const auto count = static_cast<std::size_t>(a->rows) * static_cast<std::size_t>(a->cols);
  double sum = 0.0;
  for (std::size_t k = 0; a->re != nullptr && k < count; ++k) sum += a->re[k] * a->re[k];

  aComplex* result = nullptr;
  context->allocator->new_scalar(&result);
  if (result == nullptr) return sError_OutOfMemory;
  result->kind = kScalarKind;
  result->re = std::sqrt(sum / static_cast<double>(count));
  result->im = 0.0;
  return result;
}

// The lengths of names count the terminating NUL, those of rules do not.
sString name = {{kStringKind}, "rms", sizeof "rms"};
sString same_unit = {
    {kStringKind}, "(%lambda (a) (-EqDims a))", sizeof "(%lambda (a) (-EqDims a))" - 1};

// Yours alone: make a new one for each pack.
const PackIdentifier identifier = {{0x3b, 0x8e, 0x91, 0x1c, 0x52, 0x6d, 0x4f, 0x47, 0xa2, 0x0e,
                                    0x6f, 0xd9, 0x14, 0xc8, 0x70, 0x25}};

}  // namespace

#pragma GCC visibility push(default)

// The host's records are variables of its library: the row is written while the pack is loaded.
FunctionEntry theEfi[] = {
    {Any_to_Num, nullptr, 12, {}, &name, 0, reinterpret_cast<AnyHandler>(rms), &same_unit}};
extern const std::int32_t numFuncs = 1;

extern "C" std::int32_t DllRegisterServer() {
  return RegisterEfiFunctionPack(&name, &identifier);
}
extern "C" std::int32_t DllUnregisterServer() {
  return UnregisterEfiFunctionPack(&identifier);
}

#pragma GCC visibility pop
