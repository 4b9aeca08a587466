// The characters and words of which statements are made: one definition for all who read them.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "host/text/text.hpp"

namespace worksheet {

// The words that are no names. A matter of the grammar: editors colour them.
inline constexpr std::array<std::string_view, 10> kKeywords = {
    "for", "while", "if", "elseif", "else", "end", "break", "continue", "in", "help"};

inline bool is_keyword(std::string_view name) {
  return std::find(kKeywords.begin(), kKeywords.end(), name) != kKeywords.end();
}

inline bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
// All characters beyond ASCII are letters.
inline bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c & 0x80) != 0;
}
inline bool is_name_character(char c) {
  return is_letter(c) || is_digit(c);
}

// The length of the name or word that stands at `at`; 0 for none.
inline std::size_t name_length(std::string_view text, std::size_t at) {
  std::size_t end = at;
  if (at < text.size() && is_letter(text[at]))
    while (end < text.size() && is_name_character(text[end])) ++end;
  return end - at;
}

// The first place from `at` on that is no blank; the size of the text if there is none.
inline std::size_t skip_blanks(std::string_view text, std::size_t at) {
  while (at < text.size() && is_blank(text[at])) ++at;
  return at;
}

// Whether a '=' that is part of no comparison stands at `at`.
inline bool is_assignment_sign(std::string_view text, std::size_t at) {
  if (at >= text.size() || text[at] != '=') return false;
  const bool doubled = at + 1 < text.size() && text[at + 1] == '=';
  const bool ends_operator =
      at > 0 && std::string_view("<>=!").find(text[at - 1]) != std::string_view::npos;
  return !doubled && !ends_operator;
}

// The last place of the text or unit that begins at `at`; neither goes beyond its line.
inline std::size_t end_of_quoted(std::string_view text, std::size_t at) {
  const char closing = text[at] == '{' ? '}' : '"';
  for (++at; at < text.size() && text[at] != closing && text[at] != '\n'; ++at)
    if (text[at] == '\\' && closing == '"') ++at;
  return std::min(at, text.size());
}

}  // namespace worksheet
