// How a handler ends: with a number, or with an error value. Each returns the host's ready-made
// value for exhausted memory when the host cannot make the value itself.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// A new scalar.
Anyval* scalar_result(EfiCallContext* context, double re, double im = 0.0);

// An error value with the given mark and argument number. The mark is 0 at all but three sites,
// which say so.
Anyval* error_result(EfiCallContext* context, const char* message, int mark, int arg);

// An error value tied to argument `arg`, counted from 1.
inline Anyval* argument_error(EfiCallContext* context, int arg, const char* message) {
  return error_result(context, message, 0, arg);
}

// An error value tied to the call as a whole.
inline Anyval* call_error(EfiCallContext* context, const char* message) {
  return error_result(context, message, 0, 0);
}

// `matrix`, or the value for exhausted memory when it is null.
inline Anyval* matrix_result(aMatrix* matrix) {
  return matrix != nullptr ? matrix : sError_OutOfMemory;
}

}  // namespace matrix_pack
