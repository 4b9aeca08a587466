// Text as Windows has it, in UTF-16, and as we have it, in UTF-8; and errors as both have them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace efi {

#pragma GCC visibility push(default)

// What is no text becomes U+FFFD.
std::wstring wide(std::string_view utf8);
std::string narrow(std::wstring_view utf16);

// A path of any length for the system's functions.
std::wstring system_path(const std::filesystem::path& path);
std::wstring system_path(const std::string& utf8);

// The errno that says what GetLastError says, and the system's words for it.
int last_error();
std::string last_error_words();

#pragma GCC visibility pop

}  // namespace efi
