// The fast path may only succeed: where it fails, the plain algorithm says which failure it is.
//
// Blocked and vectorised loops give the bits of the plain ones, but where several failures are due
// they may meet another one first.
#pragma once

#include "pack/frame/faults.hpp"
#include "pack/frame/fp_scope.hpp"

namespace matrix_pack {

// Runs `fast`, which returns null or a message. Where that is `failure`, or a fault unwinds it,
// `plain` is run, in the floating-point environment in which `fast` began, and its outcome counts.
// Both work on storage of the caller's: `plain` begins with what it needs.
template <class Fast, class Plain>
const char* fast_or_plain(const char* failure, Fast fast, Plain plain) {
  const FpState before;
  try {
    const char* const message = fast();
    if (message != failure) return message;
  } catch (const SE_FPE_Exception&) {
  }
  // A fault leaves all faults masked, and either leaves flags.
  before.restore();
  return plain();
}

}  // namespace matrix_pack
