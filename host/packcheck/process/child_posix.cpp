#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <system_error>

#include "host/efiutils/fault_translation.hpp"
#include "host/packcheck/memory/heap.hpp"
#include "host/packcheck/process/child.hpp"

namespace packcheck {

namespace {

Progress* crash_progress = nullptr;

// Notes where the address lies, and lets the instruction fault again, for good.
void on_refused_address(int signal, siginfo_t* info, void*) {
  crash_progress->faulted = true;
  crash_progress->place = heap::locate(info->si_addr);
  ::signal(signal, SIG_DFL);
}

void watch_for_refused_addresses(Progress* progress) {
  static char stack[1 << 16];
  const stack_t alternate = {.ss_sp = stack, .ss_flags = 0, .ss_size = sizeof stack};
  sigaltstack(&alternate, nullptr);
  crash_progress = progress;
  struct sigaction action = {};
  action.sa_sigaction = on_refused_address;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  for (const int signal : {SIGSEGV, SIGBUS}) sigaction(signal, &action, nullptr);
}

void be_silent() {
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (int stream = 0; stream <= 2; ++stream) dup2(nowhere, stream);
  close(nowhere);
}

[[noreturn]] void be_child(Channel& channel, const std::string& task, Perform perform) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  channel.become_writer();
  be_silent();
  efi::install_fault_translation();
  watch_for_refused_addresses(channel.progress);
  try {
    perform(task, channel);
  } catch (const std::exception& error) {
    channel.send({.kind = Message::failed, .text = error.what()});
  }
  _exit(kDone);
}

}  // namespace

const char* const kLeftOut = "";

struct Child::Process {
  pid_t id;
  clockid_t clock;  // Of its processor time.
};

Child::Child(Channel& channel, const std::string& task, Perform perform) {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) be_child(channel, task, perform);
  channel.become_reader();
  process_ = new Process{child, CLOCK_MONOTONIC};
  if (clockid_t clock; clock_getcpuclockid(child, &clock) == 0) process_->clock = clock;
}

Child::~Child() {
  delete process_;
}

bool Child::has_ended() {
  int status = 0;
  if (waitpid(process_->id, &status, WNOHANG) != process_->id) return false;
  crashed_ = WIFSIGNALED(status);
  status_ = crashed_ ? WTERMSIG(status) : WEXITSTATUS(status);
  return true;
}

void Child::kill() {
  ::kill(process_->id, SIGKILL);
}

double Child::processor_seconds() const {
  timespec time = {};
  clock_gettime(process_->clock, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::string crash_words(int status) {
  return strsignal(status);
}

std::optional<int> run_as_child(int, char**, Perform) {
  return std::nullopt;
}

}  // namespace packcheck
