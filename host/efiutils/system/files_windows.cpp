// Files where a path is UTF-16, a file in use may not be replaced, and a directory passes its
// permissions on.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <random>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/files_platform.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"

namespace efi {

namespace {

namespace fs = std::filesystem;

// Others may read, replace and remove what we have open.
constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE handle_of(int descriptor) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

// The C library's descriptor of a file. Negative: errno says why there is none.
Descriptor opened(const fs::path& path, DWORD access, DWORD disposition, DWORD flags = 0) {
  const HANDLE handle = CreateFileW(system_path(path).c_str(), access, kShared, nullptr,
                                    disposition, FILE_ATTRIBUTE_NORMAL | flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    errno = last_error();
    return Descriptor();
  }
  return Descriptor(_open_osfhandle(reinterpret_cast<std::intptr_t>(handle), O_BINARY));
}

// Where an open file stands; empty when that is not known.
fs::path path_of(HANDLE handle) {
  const DWORD size = GetFinalPathNameByHandleW(handle, nullptr, 0, FILE_NAME_NORMALIZED);
  std::wstring path(size, L'\0');
  path.resize(GetFinalPathNameByHandleW(handle, path.data(), size, FILE_NAME_NORMALIZED));
  return path;
}

// 0 for what a file may replace, else why not.
int kind_error(const fs::path& path) {
  const DWORD kind = GetFileAttributesW(system_path(path).c_str());
  if (kind == INVALID_FILE_ATTRIBUTES) return last_error();
  return (kind & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EISDIR : 0;
}

}  // namespace

Mark random_mark() {
  std::random_device device;
  Mark mark;
  for (unsigned char& byte : mark) byte = static_cast<unsigned char>(device());
  return mark;
}

fs::path target_of(fs::path path) {
  std::error_code failed;
  if (!fs::is_regular_file(path, failed)) return path;
  const Descriptor file = opened(path, 0, OPEN_EXISTING);
  const fs::path target = file.get() < 0 ? fs::path() : path_of(handle_of(file.get()));
  return target.empty() ? path : target;
}

Descriptor open_to_read(const std::string& path) {
  return opened(path_of(path), GENERIC_READ, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
}

Descriptor open_to_wait(const std::string& path) {
  return open_to_read(path);
}

Descriptor open_directory(const std::string& path) {
  return opened(path_of(path), FILE_LIST_DIRECTORY, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
}

// What has been opened says where it stands.
Descriptor open_beneath(const Descriptor& directory, const std::string&, const std::string& whole,
                        Opened what) {
  Descriptor found = what == Opened::file ? open_to_read(whole) : open_directory(whole);
  if (found.get() < 0) return found;
  const fs::path root = path_of(handle_of(directory.get())), path = path_of(handle_of(found.get()));
  if (!root.empty() &&
      std::mismatch(root.begin(), root.end(), path.begin(), path.end()).first == root.end())
    return found;
  errno = EACCES;
  return Descriptor();
}

int file_error(int descriptor) {
  const HANDLE handle = handle_of(descriptor);
  if (handle == INVALID_HANDLE_VALUE) return EBADF;
  if (GetFileType(handle) != FILE_TYPE_DISK) return kNoFile;
  BY_HANDLE_FILE_INFORMATION information;
  if (GetFileInformationByHandle(handle, &information) == 0) return last_error();
  return (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EISDIR : 0;
}

// --- New files: beside the place, under a temporary name ---

NewFile::~NewFile() {
  if (temporary_.empty()) return;
  file_.close();
  DeleteFileW(system_path(path_of(handle_of(directory_.get())) / path_of(temporary_)).c_str());
}

int NewFile::look() {
  if (name_.empty()) return EISDIR;
  const int error = kind_error(path_of(handle_of(directory_.get())) / path_of(name_));
  replaces_ = error == 0;
  return error == ENOENT ? 0 : error;
}

void NewFile::open_temporary() {
  error_ = with_free_name([this](const std::string& name) {
    file_ = opened(path_of(handle_of(directory_.get())) / path_of(name), GENERIC_WRITE, CREATE_NEW);
    return file_.get() < 0 ? errno : 0;
  });
}

int NewFile::take_place() {
  if (const int error = look()) return error;
  const fs::path directory = path_of(handle_of(directory_.get()));
  const std::wstring from = system_path(directory / path_of(temporary_));
  const std::wstring to = system_path(directory / path_of(name_));
  file_.close();
  // Who reads the old file holds its name for a moment.
  constexpr int kMostTries = 200;
  constexpr DWORD kPause = 10;  // Milliseconds.
  for (int k = 0; k < kMostTries; ++k) {
    if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
        0) {
      temporary_.clear();
      return 0;
    }
    if (const int error = last_error(); error != EACCES) return error;
    Sleep(kPause);
  }
  return EACCES;
}

int NewFile::commit() {
  if (error_ == 0 && FlushFileBuffers(handle_of(file_.get())) == 0) error_ = last_error();
  if (error_ == 0) error_ = take_place();
  return error_;
}

}  // namespace efi
