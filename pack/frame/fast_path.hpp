// The fast path may only succeed: where it fails, the plain algorithm says which failure it is.
//
// Blocked and vectorised loops give the bits of the plain ones, but where several failures are due
// they may meet another one first.
#pragma once

#include <string_view>

#include "pack/frame/faults.hpp"
#include "pack/frame/fp_scope.hpp"

namespace matrix_pack {

// Runs `fast`, which returns null or a message. Where that is `failure`, or a fault unwinds it,
// `plain` is run, in the floating-point environment `before`, that in which `fast` begins, and its
// outcome counts. Both work on storage of the caller's: `plain` begins with what it needs.
template <class Fast, class Plain>
const char* fast_or_plain(const char* failure, Fast fast, Plain plain,
                          const FpState& before = FpState()) {
  try {
    const char* const message = fast();
    // By its words: a literal may stand at several addresses.
    if (message == nullptr || std::string_view(message) != failure) return message;
  } catch (const SE_FPE_Exception&) {
  }
  // A fault leaves all faults masked, and either leaves flags.
  before.restore();
  return plain();
}

}  // namespace matrix_pack
