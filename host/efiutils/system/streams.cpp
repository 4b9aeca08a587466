#include "host/efiutils/system/streams.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/platform.hpp"

namespace efi {

namespace {

constexpr unsigned kBufferSize = 1 << 16;

// How long is waited before the flag is looked at again: a signal may come just before the wait.
constexpr int kTick = 100;  // Milliseconds.
// The ticks that a reader has for what is said about a stop.
constexpr int kMostTicks = 10;

bool is_set(StopFlag flag) {
  return flag != nullptr && *flag != 0;
}

}  // namespace

// --- Output ---

OutputBuffer::OutputBuffer(int descriptor, StopFlag stop)
    : descriptor_(descriptor),
      stop_(stop),
      is_file_(file_error(descriptor) == 0),
      buffer_(kBufferSize) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

OutputBuffer::~OutputBuffer() {
  flush();
}

void OutputBuffer::resume() {
  error_ = 0;
  stopped_before_ = is_set(stop_);
}

// Waits until there is room; false when it is given up.
bool OutputBuffer::wait() {
  for (int tick = 0;;) {
    if (is_set(stop_) && !stopped_before_) break;
    const int count = wait_for_room(descriptor_, kTick);
    if (count > 0) return true;
    if (count == 0 && is_set(stop_) && ++tick == kMostTicks) break;
  }
  error_ = EINTR;
  return false;
}

bool OutputBuffer::flush() {
  const char* from = pbase();
  while (from != pptr() && error_ == 0 && wait()) {
    auto size = static_cast<unsigned>(pptr() - from);
    if (!is_file_) size = std::min(size, kPipeRoom);
    const ssize_t written = write(descriptor_, from, size);
    if (written > 0) from += written;
    if (written < 0 && errno != EINTR && errno != EAGAIN) error_ = errno;
  }
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  return error_ == 0;
}

OutputBuffer::int_type OutputBuffer::overflow(int_type c) {
  if (!flush()) return traits_type::eof();
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  return sputc(traits_type::to_char_type(c));
}

int OutputBuffer::sync() {
  return flush() ? 0 : -1;
}

// --- Input ---

InputBuffer::InputBuffer(int descriptor, StopFlag stop)
    : descriptor_(descriptor), stop_(stop), buffer_(kBufferSize) {}

InputBuffer::int_type InputBuffer::underflow() {
  while (!is_set(stop_)) {
    if (wait_for_input(descriptor_, kTick) <= 0) continue;
    const ssize_t count = read(descriptor_, buffer_.data(), kBufferSize);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) {
      error_ = errno;
      throw std::system_error(error_, std::generic_category());
    }
    if (count == 0) break;
    setg(buffer_.data(), buffer_.data(), buffer_.data() + count);
    return traits_type::to_int_type(buffer_.front());
  }
  return traits_type::eof();
}

}  // namespace efi
