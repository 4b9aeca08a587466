// How numbers are shown.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace worksheet {

struct NumberFormat {
  enum class Kind {
    automatic,    // As many significant digits, without zeros at the end.
    fixed,        // As many digits behind the point.
    scientific,   // As many significant digits, and a power of ten.
    engineering,  // As many significant digits, and a power of 1000 or a prefix of the unit.
  };

  Kind kind = Kind::automatic;
  int digits = 6;
  double factor = 1.0;  // What numbers are multiplied by, for the prefix of their unit.
};

inline constexpr int kMostDigits = 17;

// The format that words such as "fix 3", "sci 4", "eng 4" or "auto 6" name, and the words for one.
// Nothing for other words, more than kMostDigits digits, and none, but for fix.
std::optional<NumberFormat> parse_format(std::string_view words);
std::string format_words(const NumberFormat& format);
// What is said where words name no format.
inline constexpr const char* kFormatWanted =
    "a format is fix, sci, eng or auto and a number of digits, up to 17: eng 4";

// What follows the word in a statement "format eng 4", or the empty text of "format" alone; nothing
// for other statements, such as "format = 3".
std::optional<std::string_view> format_statement(std::string_view statement);

}  // namespace worksheet
