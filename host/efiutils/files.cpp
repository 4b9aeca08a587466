#include "host/efiutils/files.hpp"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace efi {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;      // In a row, as the system has it.
constexpr int kMostAttempts = 100;  // At a name that is not taken.
constexpr std::size_t kMarkLength = 6;

constexpr int kWriting = O_WRONLY | O_CLOEXEC;
constexpr mode_t kMode = 0666;  // Of a new file, less the user's mask.

// 0 for a file, else why it is none.
int kind_error(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return 0;
  if (S_ISLNK(status.st_mode)) return ELOOP;
  return S_ISDIR(status.st_mode) ? EISDIR : kNoFile;
}

// The path with links in its last place followed, also where they lead to no file yet.
fs::path target_of(fs::path path) {
  std::error_code failed;
  for (int k = 0; k < kMostLinks && fs::is_symlink(path, failed); ++k) {
    const fs::path next = fs::read_symlink(path, failed);
    if (failed) break;
    path = path.parent_path() / next;
  }
  return path;
}

// The start of the names of temporary files for `name`: no other program makes such names.
std::string temporary_start(const std::string& name) {
  constexpr std::size_t kMostOfName = 200;
  return std::string(".").append(name, 0, kMostOfName).append(".worksheet-");
}

std::string temporary_name(const std::string& name) {
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz012345";
  unsigned char random[kMarkLength] = {};
  if (getrandom(random, sizeof random, 0) < 0) random[0] = static_cast<unsigned char>(getpid());
  std::string made = temporary_start(name);
  for (const unsigned char byte : random) made += kLetters[byte % kLetters.size()];
  return made;
}

std::string link_of(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

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
    const ssize_t written = write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int read_all(int descriptor, std::string& content) {
  std::vector<char> buffer(1 << 16);
  for (;;) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

int file_error(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 ? kind_error(status) : errno;
}

std::optional<std::string> read_file(const std::string& path, int* error) {
  int ignored = 0;
  if (error == nullptr) error = &ignored;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  *error = file.get() < 0 ? errno : file_error(file.get());
  std::string content;
  if (*error == 0) *error = read_all(file.get(), content);
  if (*error != 0) return std::nullopt;
  return content;
}

// --- New files ---

NewFile::NewFile(const std::string& path) {
  const fs::path target = target_of(path);
  const fs::path parent = target.has_parent_path() ? target.parent_path() : ".";
  directory_ = Descriptor(open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  name_ = target.filename().string();
  if (directory_.get() < 0)
    error_ = errno;
  else
    begin();
}

NewFile::NewFile(Descriptor directory, const std::string& name)
    : directory_(std::move(directory)), name_(name) {
  begin();
}

NewFile::~NewFile() {
  if (!temporary_.empty()) unlinkat(directory_.get(), temporary_.c_str(), 0);
}

void NewFile::begin() {
  error_ = look();
  if (error_ == 0) open_temporary();
}

// What stands in the place: 0 if a new file may, else why not.
int NewFile::look() {
  if (name_.empty()) return EISDIR;
  struct stat status;
  replaces_ = fstatat(directory_.get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  if (!replaces_) return errno == ENOENT ? 0 : errno;
  mode_ = status.st_mode & 0777;
  return kind_error(status);
}

void NewFile::open_temporary() {
  file_ = Descriptor(openat(directory_.get(), ".", O_TMPFILE | kWriting, kMode));
  if (file_.get() >= 0 && access(link_of(file_.get()).c_str(), F_OK) == 0) return;
  // Not every file system has files without a name, and not every system a /proc.
  error_ = with_free_name([this](const std::string& name) {
    file_ = Descriptor(openat(directory_.get(), name.c_str(), O_CREAT | O_EXCL | kWriting, kMode));
    return file_.get() < 0 ? errno : 0;
  });
}

// Lets `make` make a file of a temporary name, and again where that is taken.
template <class Make>
int NewFile::with_free_name(Make make) {
  int error = EEXIST;
  for (int k = 0; k < kMostAttempts && error == EEXIST; ++k) {
    temporary_ = temporary_name(name_);
    error = make(temporary_);
  }
  if (error != 0) temporary_.clear();
  return error;
}

int NewFile::link_as(const std::string& name) const {
  const std::string source = link_of(file_.get());
  const int made =
      linkat(AT_FDCWD, source.c_str(), directory_.get(), name.c_str(), AT_SYMLINK_FOLLOW);
  return made == 0 ? 0 : errno;
}

int NewFile::take_place() {
  // Nothing stands there: it gets its name at once.
  if (temporary_.empty() && !replaces_)
    if (const int error = link_as(name_); error != EEXIST) return error;
  if (const int error = look()) return error;
  if (temporary_.empty())
    if (const int error = with_free_name([this](const std::string& name) { return link_as(name); }))
      return error;
  const int directory = directory_.get();
  if (renameat(directory, temporary_.c_str(), directory, name_.c_str()) != 0) return errno;
  temporary_.clear();
  return 0;
}

int NewFile::commit() {
  if (error_ == 0 && replaces_ && fchmod(file_.get(), mode_) != 0) error_ = errno;
  if (error_ == 0 && fsync(file_.get()) != 0) error_ = errno;
  if (error_ == 0) error_ = take_place();
  return error_;
}

int replace_file(const std::string& path, std::string_view content) {
  NewFile file(path);
  if (file.error() != 0) return file.error();
  const int error = write_all(file.descriptor(), content);
  return error != 0 ? error : file.commit();
}

void remove_leavings(const std::string& path) {
  const fs::path target = target_of(path);
  const fs::path parent = target.has_parent_path() ? target.parent_path() : ".";
  const std::string start = temporary_start(target.filename().string());
  std::error_code ignored;
  std::vector<fs::path> leavings;
  for (const auto& entry : fs::directory_iterator(parent, ignored)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(start) && name.size() == start.size() + kMarkLength)
      leavings.push_back(entry.path());
  }
  for (const fs::path& leaving : leavings)
    if (fs::symlink_status(leaving, ignored).type() == fs::file_type::regular)
      fs::remove(leaving, ignored);
}

}  // namespace efi
