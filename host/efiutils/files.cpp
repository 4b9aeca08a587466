#include "host/efiutils/files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace efi {

namespace {

namespace fs = std::filesystem;

// The file that is meant, links followed; *error is set where something else stands there: a
// directory, or a device, which must never be replaced.
std::string target_of(const std::string& path, int* error) {
  std::error_code failed;
  const fs::file_status status = fs::status(path, failed);
  if (status.type() == fs::file_type::not_found) return path;
  if (failed)
    *error = failed.value();
  else if (fs::is_directory(status))
    *error = EISDIR;
  else if (!fs::is_regular_file(status))
    *error = EINVAL;
  const fs::path target = fs::canonical(path, failed);
  return failed ? path : target.string();
}

}  // namespace

void Descriptor::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

int write_all(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

std::optional<std::string> read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

int replace_file(const std::string& path, std::string_view content) {
  int error = 0;
  const std::string target = target_of(path, &error);
  if (error != 0) return error;
  std::string temporary = target + ".XXXXXX";
  const int file = mkstemp(temporary.data());
  if (file < 0) return errno;
  const mode_t mask = umask(0);
  umask(mask);
  error = fchmod(file, 0666 & ~mask) == 0 ? write_all(file, content) : errno;
  if (error == 0 && fsync(file) != 0) error = errno;
  if (close(file) != 0 && error == 0) error = errno;
  if (error == 0 && rename(temporary.c_str(), target.c_str()) != 0) error = errno;
  if (error != 0) unlink(temporary.c_str());
  return error;
}

}  // namespace efi
