// What a check works with, in the process that runs it: the pack, the function at hand, a host for
// it to call into, and the way to say what was found.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "host/packcheck/arguments/calls.hpp"
#include "host/packcheck/pack.hpp"
#include "host/packcheck/process/channel.hpp"
#include "host/packcheck/watch/fp_state.hpp"
#include "host/packcheck/watch/snapshot.hpp"

namespace packcheck {

struct Options {
  std::string pack;       // The library, by an absolute path,
  std::string pack_name;  // and as it was given.
  std::uint64_t seed = 1;
  Depth depth = Depth::quick;
  bool strict = false;
  double time_limit = 2.0;   // Seconds of processor time for one call.
  double check_limit = 0.0;  // Seconds by the clock for one check; 0: as the depth has it.
  int only_call = -1;        // If not negative, the one call to make.
};

class Session;

// One call: makes its arguments, calls the handler, and takes everything back. While it lives,
// values of the host's own stand around the arguments, so that a value that a pack remembered from
// an earlier call is not taken for one of this.
class Trial {
 public:
  // `placement` is where the arrays of the arguments and all memory that the call asks for lie.
  Trial(Session& session, const Call& call, heap::Placement placement = heap::Placement::guarded);
  ~Trial();
  Trial(const Trial&) = delete;
  Trial& operator=(const Trial&) = delete;

  // Calls the handler in the floating-point environment that is in force, and puts that back. Null,
  // with `escaped` set, when an exception left the handler.
  Anyval* invoke();

  std::span<Anyval* const> arguments() const { return arguments_; }
  // Whether the value was made by the host since the arguments were.
  bool is_new(const Anyval* value) const;

  // What was done to argument `k`, counted from 0; empty if nothing.
  std::string change_of(std::size_t k) const { return snapshots_[k].change(); }

  // --- About the invocation ---

  std::string escaped;   // The exception that left the handler; empty if none did.
  bool refused = false;  // Whether an allocation was.
  FpState fp_before, fp_after;
  int errno_before = 0, errno_after = 0;
  std::string frame_fault;  // What was wrong with the evaluator bracket.

 private:
  Anyval* call_guarded();

  Session& session_;
  const heap::Placement placement_;
  std::vector<const Anyval*> older_;  // The host's values when the call begins.
  std::vector<Anyval*> arguments_;
  std::vector<Snapshot> snapshots_;
};

class Session {
 public:
  Session(const Options& options, Channel& channel, const std::vector<Target>& targets,
          const Target* target, const std::set<int>& skipped, int first_call);
  ~Session();

  const Options& options;
  const std::vector<Target>& targets;  // In a check of the pack as a whole: what can be called.
  const Target* target;                // The one at hand; null in a check of the pack as a whole.

  // The pack; loaded with the first use.
  Pack& pack();
  void load();
  void unload();
  const Function& function() const { return target->function; }
  AnyHandler handler();

  efi::Store& store() { return store_; }
  efi::Evaluator& evaluator() { return evaluator_; }
  EfiCallContext* context() { return &context_; }
  Channel& channel() { return channel_; }

  // Says what the process does from here on, so that a crash is told by it.
  void step(const std::string& doing) { channel_.begin(-1, doing); }

  // `rule` names the promise, `message` says what was seen.
  void report(const std::string& rule, const std::string& message);
  void report_about(const std::string& function, const std::string& rule,
                    const std::string& message);

  // Calls `check` with each call in turn, or with those that `wanted` picks; leaves out calls that
  // are known to end the process.
  using Wanted = std::function<bool(const Call&)>;
  void for_each_call(const std::function<void(const Call&)>& check, const Wanted& wanted = {});

  // The call with which to begin: those before it have been made by an earlier process.
  int first_call() const { return first_call_; }

  // The number of calls made so far.
  int calls_made = 0;

 private:
  friend class Trial;

  // Whether the call in hand is one to make.
  bool is_due(const Call& call, const Wanted& wanted) const;

  Channel& channel_;
  const std::set<int>& skipped_;
  const int first_call_;
  std::unique_ptr<Pack> pack_;
  efi::Store store_;
  efi::Evaluator evaluator_;
  EfiCallContext context_;
  std::string arguments_;  // Of the call in hand.
  int call_ = -1;
};

}  // namespace packcheck
