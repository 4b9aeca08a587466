// Files where names, links and permissions are POSIX's.
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/files_platform.hpp"

#ifdef SYS_openat2
#include <linux/openat2.h>
#endif

namespace efi {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // In a row, as the system has it.

constexpr int kReading = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr int kEntering = O_PATH | O_DIRECTORY | O_CLOEXEC;
constexpr int kWriting = O_WRONLY | O_CLOEXEC;
constexpr mode_t kMode = 0666;  // Of a new file, less the user's mask.

// 0 for a file, else why it is none.
int kind_error(const struct stat& status) {
  if (S_ISREG(status.st_mode)) return 0;
  if (S_ISLNK(status.st_mode)) return ELOOP;
  return S_ISDIR(status.st_mode) ? EISDIR : kNoFile;
}

std::string link_of(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

Mark random_mark() {
  Mark mark = {};
  if (getrandom(mark.data(), mark.size(), 0) < 0) mark[0] = static_cast<unsigned char>(getpid());
  return mark;
}

fs::path target_of(fs::path path) {
  std::error_code failed;
  for (int k = 0; k < kMostLinks && fs::is_symlink(path, failed); ++k) {
    const fs::path next = fs::read_symlink(path, failed);
    if (failed) break;
    path = path.parent_path() / next;
  }
  return path;
}

Descriptor open_to_read(const std::string& path) {
  return Descriptor(open(path.c_str(), kReading));
}

Descriptor open_to_wait(const std::string& path) {
  return Descriptor(open(path.c_str(), kReading & ~O_NONBLOCK));
}

Descriptor open_directory(const std::string& path) {
  return Descriptor(open(path.c_str(), kEntering));
}

// Where the system is too old to promise it, the last name at least is no link.
Descriptor open_beneath(const Descriptor& directory, const std::string& path,
                        const std::string& whole, Opened what) {
  const int flags = what == Opened::file ? kReading : kEntering;
#ifdef SYS_openat2
  constexpr int kMostAttempts = 10;  // Directories that are moved meanwhile interrupt.
  open_how how = {};
  how.flags = static_cast<std::uint64_t>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  for (int k = 0; k < kMostAttempts; ++k) {
    const auto opened =
        static_cast<int>(syscall(SYS_openat2, directory.get(), path.c_str(), &how, sizeof how));
    if (opened >= 0) return Descriptor(opened);
    if (errno == ENOSYS || errno == EPERM) break;
    if (errno != EAGAIN) return Descriptor();
  }
#endif
  return Descriptor(open(whole.c_str(), flags | O_NOFOLLOW));
}

int file_error(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 ? kind_error(status) : errno;
}

// --- New files ---

NewFile::~NewFile() {
  if (!temporary_.empty()) unlinkat(directory_.get(), temporary_.c_str(), 0);
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

}  // namespace efi
