#include <windows.h>

#include <filesystem>
#include <system_error>

#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/wide_text_windows.hpp"
#include "host/packs/library.hpp"

namespace worksheet {

const char* const kLibraryEnding = ".dll";

void* open_library(const std::string& path, std::string* reason) {
  std::error_code failed;
  const auto whole = std::filesystem::absolute(efi::path_of(path), failed).make_preferred();
  // What the library needs is looked for beside it and beside the program.
  constexpr DWORD kPlaces = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
  const HMODULE library = LoadLibraryExW(whole.c_str(), nullptr, kPlaces);
  if (library == nullptr) *reason = path + ": " + efi::last_error_words();
  return reinterpret_cast<void*>(library);
}

void close_library(void* library) {
  FreeLibrary(static_cast<HMODULE>(library));
}

void* find_symbol(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace worksheet
