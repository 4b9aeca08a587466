#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <locale>

#include "host/packcheck/watch/environment.hpp"

extern char** environ;

namespace packcheck {

namespace {

namespace fs = std::filesystem;

using Things = std::map<std::string, std::string>;

void add_signals(Things& things) {
  sigset_t mask;
  sigprocmask(SIG_BLOCK, nullptr, &mask);
  for (int number = 1; number < NSIG; ++number) {
    if (sigismember(&mask, number) == 1)
      things[fmt::format("the mask of signal {}", number)] = "on";
    struct sigaction action;
    if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_DFL) continue;
    things[fmt::format("the action of signal {}", number)] =
        fmt::format("{:#x} with the flags {:#x}",
                    reinterpret_cast<std::uintptr_t>(action.sa_handler), action.sa_flags);
  }
}

void add_variables(Things& things) {
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    const std::size_t end = std::min(text.find('='), text.size());
    things["the variable " + text.substr(0, end)] = text.substr(end);
  }
}

// The numbers in a directory of /proc, but for the descriptor by which it is read.
std::vector<int> numbers_in(const char* path) {
  std::vector<int> numbers;
  DIR* const directory = opendir(path);
  if (directory == nullptr) return numbers;
  while (const dirent* entry = readdir(directory)) {
    const int number = std::atoi(entry->d_name);
    if (entry->d_name[0] != '.' && number != dirfd(directory)) numbers.push_back(number);
  }
  closedir(directory);
  return numbers;
}

void add_descriptors(Things& things) {
  for (const int descriptor : numbers_in("/proc/self/fd"))
    if (descriptor < kFirstOwnDescriptor)
      things[fmt::format("the descriptor {}", descriptor)] = "open";
}

std::string file_mask() {
  const mode_t mask = umask(0);
  umask(mask);
  return fmt::format("{:o}", mask);
}

std::string alarm_timer() {
  itimerval timer;
  getitimer(ITIMER_REAL, &timer);
  return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0 ? "set" : "not set";
}

}  // namespace

Environment environment() {
  std::error_code ignored;
  Environment now;
  now.fp = fp_state();
  now.things = {
      {"the C locale", std::setlocale(LC_ALL, nullptr)},
      {"the C++ locale", std::locale().name()},
      {"the thread's locale", fmt::format("{}", static_cast<const void*>(uselocale(nullptr)))},
      {"the working directory", fs::current_path(ignored).string()},
      {"the file mode mask", file_mask()},
      {"the number of threads", fmt::format("{}", numbers_in("/proc/self/task").size())},
      {"the alarm timer", alarm_timer()}};
  add_signals(now.things);
  add_variables(now.things);
  add_descriptors(now.things);
  return now;
}

}  // namespace packcheck
