#include "host/worksheet/program/system/standard_output.hpp"

#include <unistd.h>

#include <cerrno>
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

}  // namespace worksheet
