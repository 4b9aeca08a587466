#include "host/kernel/kernel_signals.hpp"

#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <thread>

namespace worksheet_kernel {

namespace {

sigset_t held_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGALRM);
  return signals;
}

}  // namespace

void hold_signals() {
  const sigset_t signals = held_signals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

SignalsLetIn::SignalsLetIn(worksheet::Machine& machine) : machine_(machine) {
  const sigset_t signals = held_signals();
  constexpr timespec kAtOnce = {0, 0};
  while (sigtimedwait(&signals, nullptr, &kAtOnce) > 0) continue;
  machine_.interrupted = worksheet::Machine::kGoOn;
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

SignalsLetIn::~SignalsLetIn() {
  hold_signals();
  machine_.interrupted = worksheet::Machine::kGoOn;
}

void end_with_parent() {
  // The system's own notice comes when the thread ends that started the process, and no sooner or
  // later: the server may have many.
  const pid_t parent = getppid();
  std::thread([parent] {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    pollfd end = {static_cast<int>(syscall(SYS_pidfd_open, parent, 0)), POLLIN, 0};
    // Where a sandbox keeps the system from telling, we look again and again.
    while (getppid() == parent) poll(&end, 1, end.fd < 0 ? 1000 : -1);
    _exit(0);
  }).detach();
}

}  // namespace worksheet_kernel
