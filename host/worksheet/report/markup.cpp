#include "host/worksheet/report/markup.hpp"

#include <cstdint>

namespace worksheet {

namespace {

constexpr std::string_view kReplacement = "\uFFFD";

// The length of the character that begins the text; 0 if it is none that XML allows.
std::size_t character_length(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return lead >= 0x20 || lead == '\t' || lead == '\n' ? 1 : 0;
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
  const bool control = code < 0xA0 || code == 0xFFFE || code == 0xFFFF;
  return code < kFirstOfLength[length] || code > 0x10FFFF || surrogate || control ? 0 : length;
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t length = character_length(text);
    const char c = text[0];
    if (length == 0)
      result += kReplacement;
    else if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else
      result += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

}  // namespace worksheet
