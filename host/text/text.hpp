// Text: cutting it, joining it, counting its characters. All of it is UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace worksheet {

inline bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Without the blanks around it.
std::string_view trimmed(std::string_view text);

// The words between blanks and tabs.
std::vector<std::string_view> words_of(std::string_view text);

// The text up to the next newline, which is taken off together with it.
std::string_view take_line(std::string_view& text);

// The pieces in one text, `between` between them.
std::string joined(std::span<const std::string> pieces, std::string_view between);

// Adds words to lines of `width` characters; all lines but the first begin with `indent` blanks.
void wrap(std::string& text, std::string_view words, std::size_t width, std::size_t indent);

// "1 curve", "2 curves".
std::string counted(std::int64_t count, std::string_view what);

// The number of characters.
std::size_t character_count(std::string_view text);

// Each character by itself, fit to be shown: a tab as a blank, other control characters as question
// marks.
std::vector<std::string> characters(std::string_view text);

}  // namespace worksheet
