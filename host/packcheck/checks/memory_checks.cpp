// What a call does to memory: to its arguments, to blocks that it does not own, to blocks that it
// leaves behind, and what it does when there is none.
#include <fmt/format.h>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/memory/heap.hpp"
#include "host/text/text.hpp"

namespace packcheck {

namespace {

// Allocations of one call beyond these are let through: a function that asks for so many is not
// swept to its end.
int most_refusals(Depth depth) {
  return depth == Depth::full ? 5000 : 120;
}

using worksheet::counted;

std::string held_words(const heap::Usage& before, const heap::Usage& after) {
  if (after.blocks != before.blocks)
    return fmt::format("{} of {}", counted(after.blocks - before.blocks, "block"),
                       counted(after.bytes - before.bytes, "byte"));
  return counted(after.mallocs - before.mallocs, "block") + " of malloc";
}

std::vector<std::string> changed_arguments(const Trial& trial) {
  std::vector<std::string> changes;
  for (std::size_t k = 0; k < trial.arguments().size(); ++k)
    if (const std::string change = trial.change_of(k); !change.empty())
      changes.push_back(fmt::format("{} argument {}", change, k + 1));
  return changes;
}

// A call, and all that was wrong with it by the rules of the other checks.
struct Outcome {
  std::vector<Complaint> complaints;
  std::vector<std::uint64_t> meaning;  // Of the result; empty when there are complaints.
  bool refused;                        // Whether an allocation was.
};

// The `nth` allocation, or all from there, are refused; 0: none.
Outcome outcome_of(Session& session, const Call& call, int nth, heap::Failing how) {
  Outcome outcome;
  {
    Trial trial(session, call);
    heap::fail(nth, how);
    const Anyval* const result = trial.invoke();
    outcome.refused = trial.refused;
    outcome.complaints = complaints_about(session, trial, result);
    if (outcome.complaints.empty()) outcome.meaning = meaning(session.store(), result);
    if (!trial.frame_fault.empty()) outcome.complaints.push_back({"evaluator", trial.frame_fault});
    if (trial.escaped.empty() && trial.fp_before != trial.fp_after)
      outcome.complaints.push_back(
          {"floating-point", "changed " + fp_difference(trial.fp_before, trial.fp_after)});
    for (const std::string& change : changed_arguments(trial))
      outcome.complaints.push_back({"arguments", change});
  }
  if (const char* complaint = heap::take_complaint())
    outcome.complaints.push_back({"memory", complaint});
  return outcome;
}

Outcome undisturbed(Session& session, const Call& call) {
  return outcome_of(session, call, 0, heap::Failing::once);
}

// Whether a call for which there is memory has nothing wrong with it, and gives `meaning` again.
bool is_clean(Session& session, const Call& call, const std::vector<std::uint64_t>& meaning) {
  const heap::Usage before = heap::usage();
  const bool well = [&] {
    const Outcome outcome = undisturbed(session, call);
    return outcome.complaints.empty() && outcome.meaning == meaning;
  }();
  return well && heap::usage() == before;
}

// Reports what was wrong with a call for which an allocation failed. False when none did: the call
// makes fewer.
bool call_with_refusal(Session& session, const Call& call, int nth, heap::Failing how) {
  const Outcome outcome = outcome_of(session, call, nth, how);
  for (const Complaint& complaint : outcome.complaints)
    session.report(
        complaint.rule,
        fmt::format("when allocation {}{} fails: {}", nth,
                    how == heap::Failing::once ? "" : " and every later one", complaint.message));
  return outcome.refused;
}

void sweep(Session& session, const Call& call, heap::Failing how) {
  for (int nth = 1; nth <= most_refusals(session.options.depth); ++nth) {
    const heap::Usage before = heap::usage();
    const bool refused = call_with_refusal(session, call, nth, how);
    if (const heap::Usage after = heap::usage(); after != before)
      session.report("leak", fmt::format("when allocation {} fails: keeps {}", nth,
                                         held_words(before, after)));
    if (!refused) return;
  }
}

}  // namespace

void check_arguments(Session& session) {
  session.for_each_call([&](const Call& call) {
    Trial trial(session, call);
    trial.invoke();
    for (const std::string& change : changed_arguments(trial)) session.report("changed", change);
  });
}

void check_memory(Session& session) {
  using heap::Placement;
  session.for_each_call([&](const Call& call) {
    for (const auto placement :
         {Placement::guarded, Placement::fenced_behind, Placement::fenced_before}) {
      Trial(session, call, placement).invoke();
      if (const char* complaint = heap::take_complaint()) session.report("block", complaint);
    }
  });
}

void check_leaks(Session& session) {
  session.for_each_call([&](const Call& call) {
    const auto run = [&] {
      Trial trial(session, call);
      trial.invoke();
      return trial.escaped.empty();
    };
    // What is set up once, at the first call, is no leak.
    run();
    const heap::Usage before = heap::usage();
    const bool returned = run();
    const heap::Usage after = heap::usage();
    if (returned && after != before)
      session.report("kept", fmt::format("keeps {} each time", held_words(before, after)));
  });
}

void check_out_of_memory(Session& session) {
  int seen = 0;
  const int one_in = session.options.depth == Depth::full ? 8 : 40;
  const auto wanted = [&](const Call& call) {
    return ++seen % one_in == 0 || call.family == Family::base;
  };
  session.for_each_call(
      [&](const Call& call) {
        // What is wrong in any case is for the other checks.
        const auto reference = undisturbed(session, call).meaning;
        if (!is_clean(session, call, reference)) return;
        sweep(session, call, heap::Failing::once);
        sweep(session, call, heap::Failing::from_then_on);
        if (undisturbed(session, call).meaning != reference)
          session.report("differs", "gives another result after allocations have failed");
      },
      wanted);
}

}  // namespace packcheck
