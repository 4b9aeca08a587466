#include "host/efiutils/system/files.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "host/efiutils/system/files_platform.hpp"
#include "host/efiutils/system/paths.hpp"

namespace efi {

namespace {

namespace fs = std::filesystem;

// At once, so that the size fits the word that any platform has for it.
constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

constexpr int kMostAttempts = 100;  // At a name that is not taken.

// The start of the names of temporary files for `name`: no other program makes such names.
std::string temporary_start(const std::string& name) {
  constexpr std::size_t kMostOfName = 200;
  return std::string(".").append(name, 0, kMostOfName).append(".worksheet-");
}

std::string random_letters() {
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz012345";
  std::string letters;
  for (const unsigned char byte : random_mark()) letters += kLetters[byte % kLetters.size()];
  return letters;
}

}  // namespace

std::string temporary_name(const std::string& name) {
  return temporary_start(name) + random_letters();
}

std::string temporary_path(const std::string& ending) {
  std::error_code failed;
  const fs::path directory = fs::temp_directory_path(failed);
  return failed ? "" : utf8_of(directory / path_of("worksheet-" + random_letters() + ending));
}

std::string file_error_words(int error) {
  if (error == ENOENT) return "no such file or directory";
  return error == kNoFile ? "a pipe or a device, not a file" : std::strerror(error);
}

// --- Descriptors ---

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  if (this != &other) close();
  fd_ = std::exchange(other.fd_, -1);
  return *this;
}

void Descriptor::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

int write_all(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(),
                                  static_cast<unsigned>(std::min(content.size(), kMostAtOnce)));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int read_all(int descriptor, std::string& content) {
  constexpr unsigned kBufferSize = 1 << 16;
  std::vector<char> buffer(kBufferSize);
  for (;;) {
    const ssize_t count = read(descriptor, buffer.data(), kBufferSize);
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

std::optional<std::string> read_file(const std::string& path, int* error) {
  int ignored = 0;
  if (error == nullptr) error = &ignored;
  const Descriptor file = open_to_read(path);
  *error = file.get() < 0 ? errno : file_error(file.get());
  std::string content;
  if (*error == 0) *error = read_all(file.get(), content);
  if (*error != 0) return std::nullopt;
  return content;
}

// --- New files ---

NewFile::NewFile(const std::string& path) {
  const fs::path target = target_of(path_of(path));
  const fs::path parent = target.has_parent_path() ? target.parent_path() : ".";
  directory_ = open_directory(utf8_of(parent));
  name_ = utf8_of(target.filename());
  if (directory_.get() < 0)
    error_ = errno;
  else
    begin();
}

NewFile::NewFile(Descriptor directory, const std::string& name)
    : directory_(std::move(directory)), name_(name) {
  begin();
}

void NewFile::begin() {
  error_ = look();
  if (error_ == 0) open_temporary();
}

// Lets `make` make a file of a temporary name, and again where that is taken.
int NewFile::with_free_name(const std::function<int(const std::string&)>& make) {
  int error = EEXIST;
  for (int k = 0; k < kMostAttempts && error == EEXIST; ++k) {
    temporary_ = temporary_name(name_);
    error = make(temporary_);
  }
  if (error != 0) temporary_.clear();
  return error;
}

int replace_file(const std::string& path, std::string_view content) {
  NewFile file(path);
  if (file.error() != 0) return file.error();
  const int error = write_all(file.descriptor(), content);
  return error != 0 ? error : file.commit();
}

void remove_leavings(const std::string& path) {
  const fs::path target = target_of(path_of(path));
  const fs::path parent = target.has_parent_path() ? target.parent_path() : ".";
  const std::string start = temporary_start(utf8_of(target.filename()));
  std::error_code ignored;
  std::vector<fs::path> leavings;
  for (const auto& entry : fs::directory_iterator(parent, ignored)) {
    const std::string name = utf8_of(entry.path().filename());
    if (name.starts_with(start) && name.size() == start.size() + kMarkLength)
      leavings.push_back(entry.path());
  }
  for (const fs::path& leaving : leavings)
    if (fs::symlink_status(leaving, ignored).type() == fs::file_type::regular)
      fs::remove(leaving, ignored);
}

}  // namespace efi
