// Stream buffers over file descriptors. They tell why they failed, and once they are to stop they
// wait for nobody: a full pipe, or a terminal where nothing is typed.
#pragma once

#include <csignal>
#include <cstddef>
#include <streambuf>
#include <vector>

namespace efi {

#pragma GCC visibility push(default)

// Set from a signal handler to anything but 0: whoever waits gives up.
using StopFlag = const volatile std::sig_atomic_t*;

class OutputBuffer : public std::streambuf {
 public:
  // The descriptor stays the caller's. Without a flag nothing stops it.
  explicit OutputBuffer(int descriptor, StopFlag stop = nullptr);
  ~OutputBuffer() override;
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  void stop_at(StopFlag stop) { stop_ = stop; }

  // Why something that was written did not come out; 0 if all did, EINTR if it was stopped.
  int error() const { return error_; }

  // Begins anew: a flag that is set already stops nothing that comes now, but long waits.
  void resume();

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  bool flush();
  bool wait();

  int descriptor_;
  StopFlag stop_;
  bool stopped_before_ = false;
  bool is_file_;
  int error_ = 0;
  std::vector<char> buffer_;
};

class InputBuffer : public std::streambuf {
 public:
  // The descriptor stays the caller's. What is stopped is at its end.
  InputBuffer(int descriptor, StopFlag stop);

  // Why there is no more to be read; 0 at the end, and where it was stopped. Such an error also is
  // an exception (std::system_error), which a stream keeps to itself.
  int error() const { return error_; }

 protected:
  int_type underflow() override;

 private:
  int descriptor_;
  StopFlag stop_;
  int error_ = 0;
  std::vector<char> buffer_;
};

#pragma GCC visibility pop

}  // namespace efi
