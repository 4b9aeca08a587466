// Standard output. What is lost there is told, and not passed over.
#pragma once

#include <stdexcept>

#include "host/efiutils/system/streams.hpp"

namespace worksheet {

// Output that could not be written.
struct OutputError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// While it lives, std::cout writes through it.
class StandardOutput {
 public:
  StandardOutput();
  ~StandardOutput();
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  // Once the flag is set, output that is under way ends.
  void stop_at(efi::StopFlag stop) { buffer_.stop_at(stop); }

  // Writes what is waiting. Throws OutputError when something was lost since `resume`.
  void flush();
  // Whether that was because of the flag.
  bool was_stopped() const;
  void resume();

 private:
  efi::OutputBuffer buffer_;
  std::streambuf* before_;
};

}  // namespace worksheet
