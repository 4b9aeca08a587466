#include <cstdlib>
#include <stdexcept>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packcheck/process/surroundings.hpp"

namespace packcheck {

// The directory of temporary files is the user's only.
std::filesystem::path new_directory() {
  const std::filesystem::path path = efi::path_of(efi::temporary_path(""));
  std::error_code failed;
  if (path.empty() || !std::filesystem::create_directory(path, failed))
    throw std::runtime_error("no temporary directory");
  return path;
}

void set_variable(const char* name, const std::string& value) {
  _wputenv_s(efi::wide(name).c_str(), efi::wide(value).c_str());
}

void tell_of_lost_output() {}

}  // namespace packcheck
