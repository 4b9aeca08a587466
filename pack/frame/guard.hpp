// The frames in which handlers run their bodies.
//
// guarded(ctx, body)    the body runs with round-to-nearest arithmetic in which invalid operation,
//                       division by zero and overflow are faults; a fault, a thrown message or any
//                       other exception becomes an error value tied to the call
// contained(ctx, body)  the body runs in the host's own floating-point environment; exceptions
//                       become values in the same way, exhausted memory the host's ready-made one
//
// Both return what the body returns otherwise, and leave the floating-point environment as it was.
// The body is called through a pointer into another translation unit: the compiler does not know
// that arithmetic depends on the control register and must not move any across its loads.
#pragma once

#include "pack/host_interface.hpp"

namespace matrix_pack {

// A body without its type.
using FrameBody = Anyval* (*)(void* closure);

// The frames themselves, in a translation unit of their own.
Anyval* run_guarded(EfiCallContext* context, FrameBody body, void* closure);
Anyval* run_contained(EfiCallContext* context, FrameBody body, void* closure);

// Calls the body that `closure` points to.
template <class Body>
Anyval* call_closure(void* closure) {
  return (*static_cast<Body*>(closure))();
}

// Runs `body` in guarded arithmetic; see above.
template <class Body>
Anyval* guarded(EfiCallContext* context, Body body) {
  return run_guarded(context, call_closure<Body>, &body);
}

// Runs `body` in the host's own arithmetic; see above.
template <class Body>
Anyval* contained(EfiCallContext* context, Body body) {
  return run_contained(context, call_closure<Body>, &body);
}

}  // namespace matrix_pack
