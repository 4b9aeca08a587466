#include "host/packcheck/process/process.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <system_error>

#include "host/efiutils/fault_translation.hpp"
#include "host/packcheck/watch/heap.hpp"

namespace packcheck {

namespace {

// How often the watcher looks at the clock.
constexpr int kTickMilliseconds = 20;

// A call that sleeps uses no processor time: it may take this much longer by the clock. A machine
// with other work to do gives a process less than the clock says.
constexpr double kClockAllowance = 10.0;

// The exit status of a process whose work is done; an unlikely one for a pack that calls exit.
constexpr int kDone = 117;

// --- In the child ---

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

[[noreturn]] void be_child(Channel& channel, const std::function<void(Channel&)>& work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  channel.become_writer();
  be_silent();
  efi::install_fault_translation();
  watch_for_refused_addresses(channel.progress);
  try {
    work(channel);
  } catch (const std::exception& error) {
    channel.send({.kind = Message::failed, .text = error.what()});
  }
  _exit(kDone);
}

// --- In the parent ---

// Whether the call that a process is in has lasted too long.
class Watchdog {
 public:
  Watchdog(pid_t process, const Progress* progress, double limit)
      : progress_(progress), limit_(limit), processor_(processor_clock(process)) {}

  bool expired() {
    const double used = seconds(processor_);
    const double now = seconds(CLOCK_MONOTONIC);
    if (!progress_->inside || progress_->beat != beat_) {
      beat_ = progress_->beat;
      used_ = used;
      since_ = now;
    }
    return used - used_ > limit_ || now - since_ > kClockAllowance * limit_;
  }

 private:
  static clockid_t processor_clock(pid_t process) {
    clockid_t clock;
    return clock_getcpuclockid(process, &clock) == 0 ? clock : CLOCK_MONOTONIC;
  }

  static double seconds(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  }

  const Progress* progress_;
  const double limit_;
  const clockid_t processor_;
  std::uint64_t beat_ = 0;
  double used_ = seconds(processor_);
  double since_ = seconds(CLOCK_MONOTONIC);
};

// Takes the lines that come through the channel apart.
class LineReader {
 public:
  LineReader(int descriptor, const std::function<void(const Message&)>& receive)
      : descriptor_(descriptor), receive_(receive) {
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
  }

  // Takes what has come so far; not for ever, should more come all the time.
  void read_all() {
    constexpr int kMostPieces = 256;
    for (int k = 0; k < kMostPieces && read_some(); ++k) {
    }
  }

 private:
  bool read_some() {
    char bytes[1 << 14];
    const ssize_t got = read(descriptor_, bytes, sizeof bytes);
    if (got <= 0) return got < 0 && errno == EINTR;
    text_.append(bytes, static_cast<std::size_t>(got));
    for (std::size_t end; (end = text_.find('\n')) != std::string::npos; text_.erase(0, end + 1)) {
      if (const auto message = message_of(text_.substr(0, end))) receive_(*message);
    }
    return true;
  }

  int descriptor_;
  const std::function<void(const Message&)>& receive_;
  std::string text_;
};

std::string place_words(const Progress& progress) {
  if (!progress.faulted) return {};
  const heap::Place& place = progress.place;
  switch (place.where) {
    case heap::Place::behind:
      return fmt::format("{} bytes behind a block of {} bytes", place.distance, place.size);
    case heap::Place::before:
      return fmt::format("{} bytes in front of a block of {} bytes", place.distance, place.size);
    case heap::Place::freed:
      return fmt::format("byte {} of a block of {} bytes that was freed", place.distance,
                         place.size);
    default:
      return {};
  }
}

// `killed` tells why the process was killed; done: it was not.
End end_of(int status, decltype(End::how) killed, const Progress& progress) {
  End end = {killed, 0, progress.call, progress.doing, progress.inside, place_words(progress)};
  if (killed != End::done) return end;
  if (WIFSIGNALED(status)) {
    end.how = End::crashed;
    end.status = WTERMSIG(status);
  } else if (WEXITSTATUS(status) != kDone) {
    end.how = End::exited;
    end.status = WEXITSTATUS(status);
  }
  return end;
}

}  // namespace

End run_in_process(const std::function<void(Channel&)>& work,
                   const std::function<void(const Message&)>& receive, const TimeLimits& limits) {
  Channel channel;
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) be_child(channel, work);
  channel.become_reader();
  LineReader reader(channel.descriptor(), receive);
  Watchdog watchdog(child, channel.progress, limits.call);
  int status = 0;
  auto killed = End::done;
  // A process that the pack left behind may hold the pipe open: the child's end is the end.
  while (waitpid(child, &status, WNOHANG) != child) {
    pollfd ready = {channel.descriptor(), POLLIN, 0};
    poll(&ready, 1, kTickMilliseconds);
    reader.read_all();
    if (killed != End::done) continue;
    if (TimeLimits::Clock::now() >= limits.end)
      killed = End::late;
    else if (watchdog.expired())
      killed = End::hung;
    if (killed != End::done) kill(child, SIGKILL);
  }
  reader.read_all();
  return end_of(status, killed, *channel.progress);
}

}  // namespace packcheck
