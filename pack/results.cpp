#include "pack/results.hpp"

namespace matrix_pack {

Anyval* scalar_result(EfiCallContext* context, double re, double im) {
  aComplex* scalar = nullptr;
  context->allocator->new_scalar(&scalar);
  if (scalar == nullptr) return sError_OutOfMemory;
  scalar->kind = kScalarKind;
  scalar->re = re;
  scalar->im = im;
  return scalar;
}

Anyval* error_result(EfiCallContext* context, const char* message, int mark, int arg) {
  const aString* text = aString::mk(context->allocator, message);
  if (text == nullptr) return sError_OutOfMemory;
  aError* error = aError::mk(context->allocator, text, mark, arg, nullptr);
  return error != nullptr ? error : sError_OutOfMemory;
}

}  // namespace matrix_pack
