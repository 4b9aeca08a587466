// How far the answers of the pack's functions can be trusted. Each is checked after its call, on
// copies scaled by powers of two, so that nothing overflows; the pack itself is left as it is.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>

#include "host/efiutils/store.hpp"
#include "host/efiutils/system/streams.hpp"
#include "host/packs/packs.hpp"

namespace audit {

// Which checks are made: none; those that cost at most about half the call, and all up to order
// kCheapOrder; all.
enum class Effort { off, on, full };
inline constexpr int kCheapOrder = 100;

// With fewer digits than these a result deserves a warning.
inline constexpr double kDigitsWanted = 6.0;
// More are never told.
inline constexpr double kMostDigits = 15.0;

enum class Level { ok, note, warning };

// What came of a check.
struct Finding {
  std::string function;
  std::optional<double> digits;  // That hold, 0 to kMostDigits; nothing where that cannot be known.
  Level level = Level::ok;
  std::string text;  // One line without the function's name.
};

// A call that gave a value. The arguments are followed by the context values.
struct Request {
  std::span<Anyval* const> arguments;
  const Anyval* result;
  efi::Store& store;
  // Calls the same function with other arguments; null where that was stopped.
  std::function<Anyval*(std::span<Anyval* const>)> again;
  bool full = false;                 // Whatever it costs.
  bool tolerance_is_chosen = false;  // The worksheet has set TOL itself.
  efi::StopFlag stop = nullptr;      // Set when there is no more time.
};

struct Check;
// The check of a row: its name, signature and context are those of a function that we know. Null if
// there is none.
const Check* find_check(const worksheet::Row& row);
// The check of the inverse, a host's own operator.
const Check* inverse_check();

// Checks the call. Nothing where there is nothing to say: no numbers, NaN or infinity among the
// arguments, no memory, no time.
std::optional<Finding> run(const Check& check, const Request& request);

// Of a call that ended with an error: a note where the same call has a result once the matrices are
// brought near 1 together. The request's result is the error.
std::optional<Finding> hint(const Check& check, const Request& request);

}  // namespace audit
