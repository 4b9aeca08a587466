#include <windows.h>
// After it.
#include <shellapi.h>

#include "host/efiutils/system/files.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/worksheet/program/system/viewer.hpp"

namespace worksheet {

std::string picture_file(const std::string& svg) {
  const std::string path = efi::temporary_path(".svg");
  if (path.empty() || efi::replace_file(path, svg) != 0) return {};
  return path;
}

bool open_in_viewer(const std::string& path) {
  constexpr INT_PTR kLeastSuccess = 33;  // Smaller ones are errors.
  const HINSTANCE answer =
      ShellExecuteW(nullptr, L"open", efi::wide(path).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(answer) >= kLeastSuccess;
}

}  // namespace worksheet
