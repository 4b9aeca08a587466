#include "host/worksheet/functions/digits.hpp"

#include <cmath>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

Value digits_held(Machine& machine, const Call& call) {
  const TrustNotes::Question* const question = machine.trust.question();
  if (question == nullptr || !question->was_checked())
    return machine.fail(call.span, "no call in it is checked");
  if (!question->digits()) return machine.fail(call.span, "its digits cannot be known");
  return number_value(std::round(*question->digits() * 10.0) / 10.0);
}

}  // namespace worksheet
