// What a call leaves behind in the process besides memory: the evaluator, the floating-point
// environment, and everything that processes have.
#include <fmt/format.h>

#include <cfenv>
#include <cstdio>
#include <cstring>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/process/output_watch.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

namespace {

// The floating-point environments in which hosts may call: as programs find it, with flags that
// earlier arithmetic raised, and with another rounding direction.
void (*const kFpSettings[])() = {
    [] { std::feclearexcept(FE_ALL_EXCEPT); },
    [] { std::feraiseexcept(FE_INEXACT | FE_UNDERFLOW | FE_DIVBYZERO); },
    [] { std::fesetround(FE_UPWARD); },
    [] { std::fesetround(FE_TOWARDZERO); },
};

}  // namespace

void check_evaluator(Session& session) {
  session.for_each_call([&](const Call& call) {
    Trial trial(session, call);
    trial.invoke();
    if (!trial.frame_fault.empty()) session.report("frame", trial.frame_fault);
  });
}

void check_floating_point(Session& session) {
  session.for_each_call([&](const Call& call) {
    for (const auto& setting : kFpSettings) {
      Trial trial(session, call);
      setting();
      trial.invoke();
      if (trial.escaped.empty() && trial.fp_before != trial.fp_after)
        session.report("changed", "changed " + fp_difference(trial.fp_before, trial.fp_after));
    }
  });
}

void check_environment(Session& session) {
  const auto rows = session.pack().rows();
  const std::vector<FunctionEntry> table(rows.begin(), rows.end());
  const Snapshot ready_made(sError_OutOfMemory);
  session.for_each_call([&](const Call& call) {
    const Environment before = environment();
    Trial trial(session, call);
    trial.invoke();
    Environment after = environment();
    after.fp = before.fp;  // Another check's business.
    for (const std::string& difference : differences(before, after))
      session.report("changed", difference);
    if (trial.escaped.empty() && trial.errno_after != trial.errno_before)
      session.report("errno", fmt::format("set errno to {} ({})", trial.errno_after,
                                          std::strerror(trial.errno_after)));
    if (const std::string change = ready_made.change(); !change.empty())
      session.report("host", change + " the host's value for exhausted memory");
    if (std::memcmp(table.data(), rows.data(), rows.size_bytes()) != 0)
      session.report("table", "changed its function table");
  });
}

void check_output(Session& session) {
  // What is written while the pack is loaded is another check's business.
  session.pack();
  std::fflush(nullptr);
  OutputWatch output;
  session.for_each_call([&](const Call& call) {
    Trial(session, call).invoke();
    if (const std::string words = output.take(); !words.empty()) session.report("wrote", words);
  });
}

}  // namespace packcheck
