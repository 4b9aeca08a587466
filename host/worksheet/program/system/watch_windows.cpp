#include <windows.h>

#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/worksheet/program/system/watch.hpp"

namespace worksheet {

namespace {

unsigned long long joined(DWORD high, DWORD low) {
  constexpr int kBits = 32;
  return static_cast<unsigned long long>(high) << kBits | low;
}

}  // namespace

FileWatch::State FileWatch::look(const std::string& path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileW(efi::system_path(path).c_str(), FILE_READ_ATTRIBUTES, kShared,
                                  nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return {};
  BY_HANDLE_FILE_INFORMATION found = {};
  const bool known = GetFileInformationByHandle(file, &found) != 0;
  CloseHandle(file);
  if (!known) return {};
  const FILETIME& written = found.ftLastWriteTime;
  return {true,
          found.dwVolumeSerialNumber,
          joined(found.nFileIndexHigh, found.nFileIndexLow),
          joined(found.nFileSizeHigh, found.nFileSizeLow),
          static_cast<long long>(joined(written.dwHighDateTime, written.dwLowDateTime)),
          0};
}

}  // namespace worksheet
