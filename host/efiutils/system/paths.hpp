// Paths as the system has them, made of text as we have it, in UTF-8. (A path made of a plain
// string would be read in whatever encoding the platform takes strings to be in.)
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace efi {

inline std::filesystem::path path_of(std::string_view utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

inline std::string utf8_of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

}  // namespace efi
