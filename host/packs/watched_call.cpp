#include "host/packs/watched_call.hpp"

#include <algorithm>

#include "host/packs/leave.hpp"

namespace worksheet {

namespace {

// Whether a matrix without part arrays is among the arguments. It has no elements to work on: packs
// may answer with nothing.
bool holds_bare_matrix(std::span<Anyval* const> arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](const Anyval* argument) {
    const auto* const m = static_cast<const aMatrix*>(argument);
    return argument->kind == kMatrixKind && m->re == nullptr && m->im == nullptr;
  });
}

}  // namespace

CallOutcome call_watched(const std::function<Anyval*()>& entry, std::span<Anyval* const> arguments,
                         const efi::Store& store, efi::Evaluator& evaluator, efi::Care care) {
  efi::PackWatch watch(store, evaluator, arguments, care);
  CallOutcome outcome;
  bool threw = false;
  try {
    outcome.left = !run_to_leave(entry, &outcome.result);
  } catch (...) {
    threw = true;
  }
  const std::string verdict = watch.verdict(outcome.result);
  if (outcome.left)
    outcome.result = nullptr;
  else if (threw)
    outcome.complaint = "the pack let an exception escape";
  else if (!verdict.empty())
    outcome.complaint = "the pack " + verdict;
  else if (outcome.result == nullptr && !holds_bare_matrix(arguments))
    outcome.complaint = "the pack gave no value";
  return outcome;
}

}  // namespace worksheet
