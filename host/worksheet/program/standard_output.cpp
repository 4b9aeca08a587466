#include "host/worksheet/program/standard_output.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iostream>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"

namespace worksheet {

StandardOutput::StandardOutput() : buffer_(STDOUT_FILENO), before_(std::cout.rdbuf(&buffer_)) {}

StandardOutput::~StandardOutput() {
  std::cout.rdbuf(before_);
}

void StandardOutput::flush() {
  std::cout.flush();
  const int error = buffer_.error();
  if (error == 0) return;
  throw OutputError(fmt::format("standard output: {}",
                                error == EINTR ? "interrupted" : efi::file_error_words(error)));
}

bool StandardOutput::was_stopped() const {
  return buffer_.error() == EINTR;
}

void StandardOutput::resume() {
  buffer_.resume();
  std::cout.clear();
}

void guard_standard_streams() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0)
      open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // Of no use: an error.
}

}  // namespace worksheet
