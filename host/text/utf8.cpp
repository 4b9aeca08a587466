#include "host/text/utf8.hpp"

#include <cstdint>

namespace worksheet {

std::size_t character_length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return (lead >= 0x20 && lead != 0x7F) || lead == '\t' || lead == '\n' ? 1 : 0;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  std::uint32_t code = lead & (0x7Fu >> length);
  for (std::size_t k = 1; k < length; ++k) {
    const auto next = static_cast<unsigned char>(text[k]);
    if ((next & 0xC0) != 0x80) return 0;
    code = code << 6 | (next & 0x3F);
  }
  constexpr std::uint32_t kFirstOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  const bool control = code < 0xA0;
  const bool no_character = (code & 0xFFFE) == 0xFFFE || (code >= 0xFDD0 && code < 0xFDF0);
  return code < kFirstOfLength[length] || code > 0x10FFFF || surrogate || control || no_character
             ? 0
             : length;
}

std::size_t sound_length(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t length = character_length(text.substr(at));
    if (length == 0) break;
    at += length;
  }
  return at;
}

std::string mended(std::string_view text) {
  std::string result;
  for (;;) {
    const std::size_t sound = sound_length(text);
    result += text.substr(0, sound);
    if (sound == text.size()) return result;
    result += kReplacementCharacter;
    text.remove_prefix(sound + 1);
  }
}

}  // namespace worksheet
