#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <vector>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/worksheet/plot/gnuplot.hpp"

extern char** environ;

namespace worksheet {

namespace {

constexpr const char* kNoGnuplot =
    "there is no gnuplot to draw with: install the Debian package gnuplot-nox";

// The longest wait for output before the flag of an interruption is looked at again.
constexpr int kLongestWait = 100;  // Milliseconds.

[[noreturn]] void fail_with_errno(int error) {
  throw PlotError(fmt::format("gnuplot cannot be started: {}", std::strerror(error)));
}

// The descriptor that a call into the system gave.
efi::Descriptor made(int descriptor) {
  if (descriptor < 0) fail_with_errno(errno);
  return efi::Descriptor(descriptor);
}

// A file in memory, which is gone when its descriptor is closed.
efi::Descriptor memory_file(std::string_view content = {}) {
  efi::Descriptor file = made(memfd_create("gnuplot", MFD_CLOEXEC));
  if (const int error = efi::write_all(file.get(), content)) fail_with_errno(error);
  lseek(file.get(), 0, SEEK_SET);
  return file;
}

// The environment without the variables by which gnuplot is configured.
std::vector<char*> plain_environment() {
  static char locale[] = "LC_ALL=C";
  std::vector<char*> plain = {locale};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    if (!text.starts_with("LC_") && !text.starts_with("GNUPLOT") && !text.starts_with("GNUTERM") &&
        !text.starts_with("GDFONTPATH"))
      plain.push_back(*entry);
  }
  plain.push_back(nullptr);
  return plain;
}

// What gnuplot begins with.
struct Start {
  std::array<int, 3> streams;
  std::vector<char*> environment = plain_environment();
  pid_t parent = getpid();
  sigset_t signals = {};   // The mask.
  volatile int error = 0;  // Why it did not begin.
};

// In the child, which has the memory of its parent until gnuplot begins: nothing but system calls.
[[noreturn]] void become_gnuplot(Start& start) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != start.parent) _exit(1);  // It died before that.
  for (int stream = 0; stream <= 2; ++stream)
    dup2(start.streams[static_cast<std::size_t>(stream)], stream);
  for (const int signal : {SIGINT, SIGALRM, SIGPIPE, SIGXFSZ}) ::signal(signal, SIG_DFL);
  sigprocmask(SIG_SETMASK, &start.signals, nullptr);
  char program[] = "gnuplot", defaults[] = "--default-settings", from_input[] = "-";
  char* const arguments[] = {program, defaults, from_input, nullptr};
  execvpe(program, arguments, start.environment.data());
  start.error = errno;
  _exit(1);
}

// A running gnuplot: killed and waited for on every way out, and when this program is killed.
class Child {
 public:
  Child(int input, int output, int errors) {
    Start start = {{input, output, errors}};
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &start.signals);
    pid_ = vfork();
    if (pid_ == 0) become_gnuplot(start);
    if (pid_ < 0) start.error = errno;
    sigprocmask(SIG_SETMASK, &start.signals, nullptr);
    if (start.error == 0) return;
    if (pid_ > 0) wait();
    if (start.error == ENOENT || start.error == EACCES) throw PlotError(kNoGnuplot);
    fail_with_errno(start.error);
  }
  ~Child() {
    if (pid_ < 0) return;
    kill(pid_, SIGKILL);
    wait();
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Its status, once it has ended.
  int wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
    pid_ = -1;
    return status;
  }

 private:
  pid_t pid_ = -1;
};

// All that comes until the other end is closed.
std::string read_all(int from, efi::StopFlag interrupted) {
  std::string content;
  std::vector<char> buffer(1 << 16);
  for (;;) {
    if (*interrupted) throw PlotError("interrupted");
    pollfd ready = {from, POLLIN, 0};
    if (poll(&ready, 1, kLongestWait) <= 0) continue;
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count == 0) return content;
    if (count > 0) content.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

// The last line of what gnuplot complains of: the reason why it stopped.
std::string complaint(int file) {
  std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
  const ssize_t count = pread(file, text.data(), text.size(), 0);
  text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  const std::size_t end = text.find_last_not_of(" \n");
  if (end == std::string::npos) return "it failed";
  text.resize(end + 1);
  text.erase(0, text.rfind('\n') + 1);
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

}  // namespace

std::string run_gnuplot(const std::string& script, efi::StopFlag interrupted) {
  const efi::Descriptor input = memory_file(script), errors = memory_file();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail_with_errno(errno);
  const efi::Descriptor result(ends[0]);
  efi::Descriptor output(ends[1]);
  Child child(input.get(), output.get(), errors.get());
  output.close();
  std::string content = read_all(result.get(), interrupted);
  const int status = child.wait();
  if (*interrupted) throw PlotError("interrupted");
  if (status != 0) throw PlotError("gnuplot: " + complaint(errors.get()));
  return content;
}

}  // namespace worksheet
