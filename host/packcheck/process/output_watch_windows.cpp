#include <fcntl.h>
#include <fmt/format.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <stdexcept>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packcheck/process/message.hpp"
#include "host/packcheck/process/output_watch.hpp"

namespace packcheck {

OutputWatch::OutputWatch() {
  constexpr DWORD kStreams[] = {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  for (int k = 0; k < 2; ++k) {
    const HANDLE file =
        CreateFileW(efi::system_path(efi::temporary_path("")).c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw std::runtime_error(efi::last_error_words());
    const int opened = _open_osfhandle(reinterpret_cast<std::intptr_t>(file), O_BINARY);
    _dup2(opened, k + 1);
    _close(opened);
    streams_[k] = k + 1;
    SetStdHandle(kStreams[k], reinterpret_cast<HANDLE>(_get_osfhandle(k + 1)));
  }
}

std::string OutputWatch::take() {
  std::fflush(nullptr);
  std::string found;
  for (int k = 0; k < 2; ++k) {
    const auto file = reinterpret_cast<HANDLE>(_get_osfhandle(streams_[k]));
    if (SetFilePointer(file, 0, nullptr, FILE_CURRENT) == 0) continue;
    char text[80];
    DWORD length = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (ReadFile(file, text, sizeof text, &length, nullptr) == 0 || length == 0) continue;
    found =
        fmt::format("wrote {} on standard {}", quoted({text, length}), k == 0 ? "output" : "error");
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    SetEndOfFile(file);
  }
  return found;
}

}  // namespace packcheck
