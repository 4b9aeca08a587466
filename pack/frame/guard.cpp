#include "pack/frame/guard.hpp"

#include <new>

#include "pack/frame/fault_message.hpp"
#include "pack/frame/faults.hpp"
#include "pack/frame/fp_scope.hpp"
#include "pack/messages.hpp"

namespace matrix_pack {

Anyval* run_guarded(EfiCallContext* context, FrameBody body, void* closure) {
  Anyval* result = nullptr;
  const char* message = nullptr;
  {
    const FpScope scope;
    try {
      result = body(closure);
    } catch (const char* thrown) {
      message = thrown;
    } catch (const SE_FPE_Exception& fault) {
      message = fault_message(fault.code);
    } catch (...) {
      message = kUnknownError;
    }
    // A trapping processor would have stopped the body here, whatever it went on to say.
    if (!faults_trap())
      if (const std::uint32_t code = pending_fault()) message = fault_message(code);
  }
  return message == nullptr ? result : mkError(context, message, 0);
}

Anyval* run_contained(EfiCallContext* context, FrameBody body, void* closure) {
  const FpKeeper keeper;
  try {
    return body(closure);
  } catch (const char* thrown) {
    return mkError(context, thrown, 0);
  } catch (const SE_FPE_Exception& fault) {
    return mkError(context, fault_message(fault.code), 0);
  } catch (const std::bad_alloc&) {
    return sError_OutOfMemory;
  } catch (...) {
    return mkError(context, kUnknownError, 0);
  }
}

}  // namespace matrix_pack
