#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After it.
#include <shellapi.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "host/efiutils/system/platform.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"

namespace efi {

// --- Memory ---

void* map_low(std::size_t bytes) {
  constexpr std::uint64_t kLimit = std::uint64_t{1} << 32, kGrain = 1 << 16;
  MEMORY_BASIC_INFORMATION region;
  for (std::uint64_t at = kGrain; at + bytes <= kLimit;) {
    auto* const hint = reinterpret_cast<void*>(static_cast<std::uintptr_t>(at));
    if (VirtualQuery(hint, &region, sizeof region) == 0) return nullptr;
    const auto end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    if (region.State == MEM_FREE && at + bytes <= end)
      if (void* const got = VirtualAlloc(hint, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE))
        return got;
    at = std::max<std::uint64_t>(at + kGrain, (end + kGrain - 1) / kGrain * kGrain);
  }
  return nullptr;
}

void unmap_low(void* memory, std::size_t) {
  VirtualFree(memory, 0, MEM_RELEASE);
}

// --- The user's surroundings ---

std::string environment(const char* name) {
  const wchar_t* const value = _wgetenv(wide(name).c_str());
  return value == nullptr ? "" : narrow(value);
}

std::vector<std::string> program_arguments(int, char**) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int k = 0; k < count; ++k) arguments.push_back(narrow(words[k]));
  LocalFree(words);
  return arguments;
}

bool is_terminal(int descriptor) {
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
}

namespace {

std::string file_of(HMODULE module) {
  constexpr DWORD kMost = 1 << 15;
  std::wstring path(kMost, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), kMost));
  return narrow(path);
}

}  // namespace

std::string program_path() {
  return file_of(nullptr);
}

std::string user_data() {
  for (const char* name : {"LOCALAPPDATA", "USERPROFILE"})
    if (std::string data = environment(name); !data.empty()) return data;
  return ".";
}

std::string library_of(const void* address) {
  HMODULE module = nullptr;
  constexpr DWORD kKind =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (GetModuleHandleExW(kKind, static_cast<const wchar_t*>(address), &module) == 0) return "";
  return file_of(module);
}

// --- Locks ---

Descriptor open_lock(const std::string& path) {
  const HANDLE handle =
      CreateFileW(system_path(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    errno = last_error();
    return Descriptor();
  }
  return Descriptor(_open_osfhandle(reinterpret_cast<std::intptr_t>(handle), O_BINARY));
}

bool take_lock(int descriptor) {
  OVERLAPPED from_the_start = {};
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  if (LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &from_the_start) != 0) return true;
  errno = last_error();
  return false;
}

// --- Waiting ---

// A write waits as long as it takes: the system does not tell.
int wait_for_room(int, int) {
  return 1;
}

int wait_for_input(int descriptor, int milliseconds) {
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  const DWORD type = GetFileType(handle);
  if (type == FILE_TYPE_CHAR)
    return WaitForSingleObject(handle, static_cast<DWORD>(milliseconds)) == WAIT_TIMEOUT ? 0 : 1;
  if (type != FILE_TYPE_PIPE) return 1;
  constexpr int kPause = 5;
  for (int waited = 0; waited < milliseconds; waited += kPause) {
    DWORD ready = 0;
    // What cannot be asked is at its end, and reading says so.
    if (PeekNamedPipe(handle, nullptr, 0, nullptr, &ready, nullptr) == 0 || ready != 0) return 1;
    Sleep(kPause);
  }
  return 0;
}

}  // namespace efi
