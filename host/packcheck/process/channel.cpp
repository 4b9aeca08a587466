#include "host/packcheck/process/channel.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

#include "host/efiutils/system/files.hpp"
#include "host/packcheck/watch/environment.hpp"

namespace packcheck {

namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Channel::Channel() {
  void* const page =
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) fail("mmap");
  progress = new (page) Progress{};
  progress->call = -1;
  if (pipe2(ends_, O_CLOEXEC) != 0) fail("pipe");
}

Channel::~Channel() {
  for (const int end : ends_)
    if (end >= 0) close(end);
  munmap(progress, sizeof(Progress));
}

void Channel::become_writer() {
  close(ends_[0]);
  const int moved = fcntl(ends_[1], F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  if (moved < 0) fail("fcntl");
  close(ends_[1]);
  ends_[0] = -1;
  ends_[1] = moved;
}

void Channel::become_reader() {
  close(ends_[1]);
  ends_[1] = -1;
}

void Channel::send(const Message& message) const {
  if (efi::write_all(ends_[1], line_of(message)) != 0) _exit(1);
}

void Channel::begin(int call, std::string_view doing) {
  progress->call = call;
  const std::size_t length = std::min(doing.size(), sizeof progress->doing - 1);
  std::memcpy(progress->doing, doing.data(), length);
  progress->doing[length] = '\0';
}

}  // namespace packcheck
