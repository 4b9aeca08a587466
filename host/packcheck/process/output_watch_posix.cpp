#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "host/packcheck/process/message.hpp"
#include "host/packcheck/process/output_watch.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

OutputWatch::OutputWatch() {
  for (int k = 0; k < 2; ++k) {
    streams_[k] = memfd_create("output", 0);
    if (streams_[k] < 0 || dup2(streams_[k], k + 1) < 0)
      throw std::system_error(errno, std::generic_category(), "memfd_create");
    const int moved = fcntl(streams_[k], F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
    close(streams_[k]);
    streams_[k] = moved;
  }
}

std::string OutputWatch::take() {
  std::fflush(nullptr);
  std::string found;
  for (int k = 0; k < 2; ++k) {
    char text[80];
    const ssize_t length = pread(streams_[k], text, sizeof text, 0);
    if (length <= 0) continue;
    found = fmt::format("wrote {} on standard {}", quoted({text, static_cast<std::size_t>(length)}),
                        k == 0 ? "output" : "error");
    if (ftruncate(streams_[k], 0) == 0) lseek(streams_[k], 0, SEEK_SET);
  }
  return found;
}

}  // namespace packcheck
