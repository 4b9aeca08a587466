#include "host/packcheck/checks/session.hpp"

#include <cxxabi.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <typeinfo>

#include "host/packcheck/memory/heap.hpp"
#include "pack/frame/faults.hpp"

namespace packcheck {

namespace {

// Values made before the arguments: more than a call leaves behind, so that the arguments do not
// get the freed records of the call before.
constexpr int kDecoys = 64;

// With the brief depth, one call in this many is made, beside those of the base family.
constexpr int kBriefStride = 20;

// An errno that the C library does not use.
constexpr int kMarkedErrno = 7777;

// Where blocks are fenced, an array ends at its fence.
double* new_exact_array(std::size_t count) {
  heap::place_exactly(true);
  double* const array = arguments::new_array(count);
  heap::place_exactly(false);
  return array;
}

// The exception in hand: its type, and its words if it has any.
std::string exception_words() {
  std::string words = "an exception";
  if (const std::type_info* type = abi::__cxa_current_exception_type()) {
    int status = 0;
    char* const name = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
    words = status == 0 ? name : type->name();
    std::free(name);
  }
  try {
    throw;
  } catch (const std::exception& error) {
    words += std::string(": ") + error.what();
  } catch (const char* text) {
    words += std::string(": ") + text;
  } catch (const SE_FPE_Exception&) {
    words += " (a floating-point fault)";
  } catch (...) {
  }
  return words;
}

}  // namespace

Trial::Trial(Session& session, const Call& call, heap::Placement placement)
    : session_(session), placement_(placement) {
  efi::Store& store = session.store();
  for (int k = 0; k < kDecoys; ++k) older_.push_back(store.new_scalar(0.0, 0.0));
  arguments_.reserve(call.arguments.size());
  heap::place(placement);
  for (const Recipe& recipe : call.arguments)
    arguments_.push_back(make(store, recipe, nullptr, new_exact_array));
  heap::place(heap::Placement::guarded);
  older_.insert(older_.end(), arguments_.begin(), arguments_.end());
  for (const Anyval* value : arguments_) snapshots_.emplace_back(value);
}

Trial::~Trial() {
  session_.store().collect({});
  reset_fp();
}

bool Trial::is_new(const Anyval* value) const {
  return session_.store().owns(value) && std::ranges::find(older_, value) == older_.end();
}

Anyval* Trial::call_guarded() {
  const AnyHandler handler = session_.handler();
  Anyval* result = nullptr;
  session_.channel().enter();
  heap::place(placement_);
  errno = errno_before = kMarkedErrno;
  fp_before = fp_state();
  try {
    result = worksheet::call_handler(handler, session_.context(), arguments_);
    fp_after = fp_state();
    errno_after = errno;
    refused = heap::end_failing();
  } catch (...) {
    refused = heap::end_failing();
    heap::place(heap::Placement::guarded);
    escaped = exception_words();
  }
  heap::place(heap::Placement::guarded);
  session_.channel().leave();
  return result;
}

Anyval* Trial::invoke() {
  efi::Evaluator& evaluator = session_.evaluator();
  evaluator.complaints.clear();
  escaped.clear();
  ++session_.calls_made;
  std::fenv_t environment;
  std::fegetenv(&environment);
  Anyval* const result = call_guarded();
  std::fesetenv(&environment);
  frame_fault = !evaluator.complaints.empty() ? evaluator.complaints.front()
                : evaluator.depth() > 0       ? "left an evaluator frame open"
                                              : "";
  evaluator.unwind(0);
  return result;
}

Session::Session(const Options& session_options, Channel& channel,
                 const std::vector<Target>& session_targets, const Target* session_target,
                 const std::set<int>& skipped, int first_call)
    : options(session_options),
      targets(session_targets),
      target(session_target),
      channel_(channel),
      skipped_(skipped),
      first_call_(first_call),
      context_{&store_, &evaluator_} {
  store_.refuse = heap::refuses;
  evaluator_.apply_function = [this](Anyval* function, const sCons* arguments) {
    return arguments::apply(store_, function, arguments);
  };
  // The store's first memory is its own, not the first call's.
  store_.new_scalar(0.0, 0.0);
  store_.collect({});
}

Session::~Session() = default;

Pack& Session::pack() {
  if (!pack_) load();
  return *pack_;
}

void Session::load() {
  channel_.enter();
  pack_ = std::make_unique<Pack>(options.pack);
  channel_.leave();
}

void Session::unload() {
  channel_.enter();
  pack_.reset();
  channel_.leave();
}

AnyHandler Session::handler() {
  return handler_of(pack(), function());
}

void Session::report(const std::string& rule, const std::string& message) {
  Finding finding = {.function = target == nullptr ? "" : function().name,
                     .rule = rule,
                     .message = message,
                     .arguments = arguments_,
                     .call = call_};
  channel_.send({.kind = Message::found, .finding = finding});
}

void Session::report_about(const std::string& function, const std::string& rule,
                           const std::string& message) {
  Finding finding = {.function = function, .rule = rule, .message = message};
  channel_.send({.kind = Message::found, .finding = finding});
}

bool Session::is_due(const Call& call, const Wanted& wanted) const {
  if (options.depth == Depth::brief && call.family != Family::base && call_ % kBriefStride != 0)
    return false;
  return !skipped_.contains(call_) && (!wanted || wanted(call));
}

void Session::for_each_call(const std::function<void(const Call&)>& check, const Wanted& wanted) {
  pack();
  const std::vector<Call> calls = calls_of(*target, options.depth, options.seed);
  const int count = static_cast<int>(calls.size());
  for (call_ = first_call_; call_ < count; ++call_) {
    const Call& call = calls[static_cast<std::size_t>(call_)];
    if (options.only_call >= 0 ? call_ != options.only_call : !is_due(call, wanted)) continue;
    arguments_ = describe(function(), call);
    channel_.begin(call_, arguments_);
    check(call);
  }
  call_ = -1;
  arguments_.clear();
}

}  // namespace packcheck
