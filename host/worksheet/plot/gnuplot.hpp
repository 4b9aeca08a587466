// gnuplot, as a child process.
#pragma once

#include <stdexcept>
#include <string>

#include "host/efiutils/system/streams.hpp"

namespace worksheet {

// Why there is no picture.
struct PlotError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// What gnuplot writes to its standard output for the script. Once *interrupted is set, it is
// killed. Throws PlotError.
std::string run_gnuplot(const std::string& script, efi::StopFlag interrupted);

}  // namespace worksheet
