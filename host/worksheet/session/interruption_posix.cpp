#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <string_view>

#include "host/packs/leave.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/session/interruption.hpp"

namespace worksheet {

namespace {

// While something is to end, the handler looks again so often whether a pack can be left.
constexpr int kTicksPerSecond = 100;
// After these the user is told that it takes a moment.
constexpr int kTicksUntilTold = kTicksPerSecond / 5;

constexpr int kInterruptedStatus = 130;
constexpr int kLostStatus = 2;

// What the signal handler reaches.
Machine* interruptible = nullptr;
pthread_t evaluating_thread;
volatile std::sig_atomic_t ticks = 0;      // Since the machine is to stop.
volatile std::sig_atomic_t asked = 0;      // How often SIGINT came since then.
volatile std::sig_atomic_t has_limit = 0;  // Whether the timer stands for a TimeLimit.

void say(std::string_view words) {
  [[maybe_unused]] const ssize_t ignored = ::write(STDERR_FILENO, words.data(), words.size());
}

// Lets the timer signal after `seconds`, and then with every tick; 0 stops it.
void set_timer(double seconds) {
  itimerval timer = {};
  timer.it_value.tv_sec = static_cast<time_t>(seconds);
  timer.it_value.tv_usec = static_cast<suseconds_t>((seconds - std::floor(seconds)) * 1e6);
  if (seconds > 0.0) {
    timer.it_interval.tv_usec = 1'000'000 / kTicksPerSecond;
    if (timer.it_value.tv_sec == 0 && timer.it_value.tv_usec == 0) timer.it_value.tv_usec = 1;
  }
  setitimer(ITIMER_REAL, &timer, nullptr);
}

void on_interrupt() {
  if (interruptible->interrupted != Machine::kInterrupted) {
    interruptible->interrupted = Machine::kInterrupted;
    ticks = 0;
    asked = 0;
    has_limit = 0;
    set_timer(1.0 / kTicksPerSecond);
  }
  asked = asked + 1;
  if (asked > 1 && ticks >= kTicksUntilTold) _exit(kInterruptedStatus);
}

void on_tick() {
  volatile std::sig_atomic_t& stop = interruptible->interrupted;
  if (stop == Machine::kGoOn && has_limit) {
    stop = Machine::kOutOfTime;
    ticks = 0;
  }
  if (stop == Machine::kGoOn) return set_timer(0.0);
  ticks = ticks + 1;
  if (stop == Machine::kInterrupted && ticks == kTicksUntilTold) {
    if (asked > 1) _exit(kInterruptedStatus);
    say("\nworksheet: interrupted, but not at its end yet; Ctrl-C again ends the program\n");
  }
  if (stop == Machine::kOutOfTime && is_in_pack_call() &&
      ticks >= TimeLimit::kGrace * kTicksPerSecond) {
    say("worksheet: out of time, and a function of a pack does not end\n");
    _exit(kLostStatus);
  }
}

void on_signal(int signal, siginfo_t*, void* context) {
  if (!pthread_equal(pthread_self(), evaluating_thread)) {
    pthread_kill(evaluating_thread, signal);  // A pack may have threads of its own.
    return;
  }
  const int before = errno;
  (signal == SIGINT ? on_interrupt : on_tick)();
  if (interruptible->interrupted) leave_pack_call(context);
  errno = before;
}

}  // namespace

void let_interrupt(Machine& machine) {
  interruptible = &machine;
  evaluating_thread = pthread_self();
  struct sigaction action = {};
  action.sa_sigaction = on_signal;
  action.sa_flags = SA_SIGINFO;
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGALRM);
  sigaction(SIGALRM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
}

TimeLimit::TimeLimit(Machine& machine) : machine_(machine) {
  if (machine.seconds_allowed <= 0.0 || machine.interrupted) return;
  has_limit = 1;
  set_timer(machine.seconds_allowed);
}

TimeLimit::~TimeLimit() {
  if (!has_limit) return;
  has_limit = 0;
  set_timer(0.0);
  if (machine_.interrupted == Machine::kOutOfTime) machine_.interrupted = Machine::kGoOn;
}

}  // namespace worksheet
