// There a signal comes in a thread of its own.
#include "host/worksheet/session/signals_held.hpp"

namespace worksheet {

struct SignalsHeld::Mask {};

SignalsHeld::SignalsHeld() = default;

SignalsHeld::~SignalsHeld() = default;

}  // namespace worksheet
