// A call of a pack's function as a host makes it: watched, and with a way out.
#pragma once

#include <functional>
#include <span>
#include <string>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "host/efiutils/watch.hpp"
#include "pack/host_interface.hpp"

namespace worksheet {

// The value of the variable TOL where nobody has set another.
inline constexpr double kDefaultTolerance = 1e-9;

// What came of a call: one of these.
struct CallOutcome {
  Anyval* result = nullptr;  // A value of the store or an argument; it may be an error value. Null
                             // where the pack gave nothing and none is due.
  std::string complaint;     // What the pack did wrong, in words that follow the function's name.
  bool left = false;         // The call was left, as leave_pack_call has it.
};

// Makes the call that `entry` is. `arguments` are the values that the pack receives; store and
// evaluator are those of the call's context.
CallOutcome call_watched(const std::function<Anyval*()>& entry, std::span<Anyval* const> arguments,
                         const efi::Store& store, efi::Evaluator& evaluator, efi::Care care);

}  // namespace worksheet
