#include "host/efiutils/system/wide_text_windows.hpp"

#include <windows.h>

#include <cerrno>

#include "host/efiutils/system/paths.hpp"

namespace efi {

std::wstring wide(std::string_view utf8) {
  const auto size = static_cast<int>(utf8.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), length);
  return text;
}

std::string narrow(std::wstring_view utf16) {
  const auto size = static_cast<int>(utf16.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, text.data(), length, nullptr, nullptr);
  return text;
}

std::wstring system_path(const std::filesystem::path& path) {
  // Longer ones need a prefix, behind which the system takes every character as it stands.
  constexpr std::size_t kMostPlain = 240;
  if (path.native().size() < kMostPlain || path.native().starts_with(L"\\\\")) return path.native();
  std::error_code failed;
  const auto whole = std::filesystem::absolute(path, failed).lexically_normal().make_preferred();
  return failed ? path.native() : L"\\\\?\\" + whole.native();
}

std::string last_error_words() {
  constexpr DWORD kMost = 512;
  wchar_t words[kMost];
  const DWORD error = GetLastError();
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                      nullptr, error, 0, words, kMost, nullptr);
  std::string text = narrow({words, length});
  text.resize(text.find_last_not_of(" .\r\n") + 1);
  return text.empty() ? "error " + std::to_string(error) : text;
}

std::wstring system_path(const std::string& utf8) {
  return system_path(path_of(utf8));
}

int last_error() {
  switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
      return ENOENT;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return EEXIST;
    case ERROR_DIRECTORY:
      return ENOTDIR;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return ENOSPC;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
      return ENOMEM;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
      return EACCES;
    default:
      return EIO;
  }
}

}  // namespace efi
