#include <windows.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

#include "host/efiutils/system/files.hpp"
#include "host/packs/leave.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/session/interruption.hpp"

namespace worksheet {

namespace {

using Clock = std::chrono::steady_clock;

// While something is to end, the watcher looks again so often whether a pack can be left.
constexpr int kTicksPerSecond = 100;
// After these the user is told that it takes a moment.
constexpr int kTicksUntilTold = kTicksPerSecond / 5;

constexpr UINT kInterruptedStatus = 130;
constexpr UINT kLostStatus = 2;
constexpr int kStandardError = 2;

// What the thread of Ctrl-C and the watcher's reach. The mutex is for all of it.
std::mutex mutex;
Machine* interruptible = nullptr;
HANDLE evaluating_thread = nullptr;
HANDLE changed = nullptr;  // Wakes the watcher.
int ticks = 0;             // Since the machine is to stop.
int asked = 0;             // How often Ctrl-C came since then.
std::optional<Clock::time_point> limit;

void say(std::string_view words) {
  efi::write_all(kStandardError, words);
}

[[noreturn]] void end_program(UINT status) {
  TerminateProcess(GetCurrentProcess(), status);
  for (;;) Sleep(INFINITE);
}

BOOL WINAPI on_control(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  const std::lock_guard lock(mutex);
  if (interruptible->interrupted != Machine::kInterrupted) {
    interruptible->interrupted = Machine::kInterrupted;
    ticks = 0;
    asked = 0;
    limit.reset();
    SetEvent(changed);
  }
  asked = asked + 1;
  if (asked > 1 && ticks >= kTicksUntilTold) end_program(kInterruptedStatus);
  return TRUE;
}

// Lets the thread that evaluates go on behind the pack's call that it is in. While it stands still
// nothing is taken from memory: it may be the one that holds the lock.
void leave_call() {
  if (SuspendThread(evaluating_thread) == static_cast<DWORD>(-1)) return;
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_FULL | CONTEXT_FLOATING_POINT;
  if (interruptible->interrupted && GetThreadContext(evaluating_thread, &context) != 0 &&
      leave_pack_call(&context))
    SetThreadContext(evaluating_thread, &context);
  ResumeThread(evaluating_thread);
}

void on_tick() {
  volatile std::sig_atomic_t& stop = interruptible->interrupted;
  if (stop == Machine::kGoOn) {
    if (!limit || Clock::now() < *limit) return;
    stop = Machine::kOutOfTime;
    ticks = 0;
  }
  ticks = ticks + 1;
  if (stop == Machine::kInterrupted && ticks == kTicksUntilTold) {
    if (asked > 1) end_program(kInterruptedStatus);
    say("\nworksheet: interrupted, but not at its end yet; Ctrl-C again ends the program\n");
  }
  if (stop == Machine::kOutOfTime && is_in_pack_call() &&
      ticks >= TimeLimit::kGrace * kTicksPerSecond) {
    say("worksheet: out of time, and a function of a pack does not end\n");
    end_program(kLostStatus);
  }
  leave_call();
}

// How long the watcher may wait, in milliseconds.
DWORD time_to_wait() {
  constexpr DWORD kTick = 1000 / kTicksPerSecond;
  const std::lock_guard lock(mutex);
  if (interruptible->interrupted != Machine::kGoOn) return kTick;
  if (!limit) return INFINITE;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*limit - Clock::now()).count();
  constexpr long long kMost = 1 << 30;
  return static_cast<DWORD>(std::clamp<long long>(left, 0, kMost));
}

[[noreturn]] void watch() {
  for (;;)
    if (WaitForSingleObject(changed, time_to_wait()) == WAIT_TIMEOUT) {
      const std::lock_guard lock(mutex);
      on_tick();
    }
}

void begin_watch() {
  if (changed != nullptr) return;
  changed = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &evaluating_thread,
                  0, FALSE, DUPLICATE_SAME_ACCESS);
  std::thread(watch).detach();
}

}  // namespace

void let_interrupt(Machine& machine) {
  {
    const std::lock_guard lock(mutex);
    interruptible = &machine;
  }
  begin_watch();
  SetConsoleCtrlHandler(on_control, TRUE);
}

TimeLimit::TimeLimit(Machine& machine) : machine_(machine) {
  if (machine.seconds_allowed <= 0.0 || machine.interrupted) return;
  const std::lock_guard lock(mutex);
  limit = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                             std::chrono::duration<double>(machine.seconds_allowed));
  SetEvent(changed);
}

TimeLimit::~TimeLimit() {
  const std::lock_guard lock(mutex);
  if (!limit) return;
  limit.reset();
  if (machine_.interrupted == Machine::kOutOfTime) machine_.interrupted = Machine::kGoOn;
}

}  // namespace worksheet
