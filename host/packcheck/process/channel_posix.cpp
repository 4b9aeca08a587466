#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <system_error>

#include "host/packcheck/process/channel.hpp"
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
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail("pipe");
  reading_ = efi::Descriptor(ends[0]);
  writing_ = efi::Descriptor(ends[1]);
}

Channel::~Channel() {
  munmap(progress, sizeof(Progress));
}

void Channel::become_writer() {
  reading_.close();
  const int moved = fcntl(writing_.get(), F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  if (moved < 0) fail("fcntl");
  writing_ = efi::Descriptor(moved);
}

void Channel::become_reader() {
  writing_.close();
  fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
}

void Channel::wait(int milliseconds) const {
  pollfd ready = {reading_.get(), POLLIN, 0};
  poll(&ready, 1, milliseconds);
}

bool Channel::read_some(std::string& text) const {
  char bytes[1 << 14];
  const ssize_t got = read(reading_.get(), bytes, sizeof bytes);
  if (got <= 0) return got < 0 && errno == EINTR;
  text.append(bytes, static_cast<std::size_t>(got));
  return true;
}

}  // namespace packcheck
