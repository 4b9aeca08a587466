// Characters in UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace worksheet {

// With which files of some programs begin.
inline constexpr std::string_view kByteOrderMark = "\uFEFF";

// The length in bytes of the character with which the text begins; 0 where that is none, or one
// that no text of ours may hold: a control character other than tab and newline, or one that
// Unicode keeps out of texts.
std::size_t character_length(std::string_view text);

// The length of the text up to the first byte that is no such character; all of it if there is
// none.
std::size_t sound_length(std::string_view text);

// What stands for a byte that is no such character, and the text with it in their places.
inline constexpr std::string_view kReplacementCharacter = "\uFFFD";
std::string mended(std::string_view text);

}  // namespace worksheet
