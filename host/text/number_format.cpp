#include "host/text/number_format.hpp"

#include <charconv>
#include <iterator>

#include "fmt/format.h"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

// In the order of the kinds.
constexpr std::string_view kKinds[] = {"auto", "fix", "sci", "eng"};

}  // namespace

std::optional<NumberFormat> parse_format(std::string_view text) {
  const auto words = words_of(text);
  if (words.size() != 2) return std::nullopt;
  for (std::size_t k = 0; k < std::size(kKinds); ++k) {
    if (words[0] != kKinds[k]) continue;
    NumberFormat format = {static_cast<NumberFormat::Kind>(k)};
    const char* const end = words[1].data() + words[1].size();
    const auto read = std::from_chars(words[1].data(), end, format.digits);
    const int least = format.kind == NumberFormat::Kind::fixed ? 0 : 1;
    if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
    if (format.digits < least || format.digits > kMostDigits) return std::nullopt;
    return format;
  }
  return std::nullopt;
}

std::string format_words(const NumberFormat& format) {
  return fmt::format("{} {}", kKinds[static_cast<int>(format.kind)], format.digits);
}

std::optional<std::string_view> format_statement(std::string_view statement) {
  constexpr std::string_view kWord = "format";
  if (!statement.starts_with(kWord)) return std::nullopt;
  std::string_view rest = statement.substr(kWord.size());
  const bool apart = rest.empty() || rest[0] == ' ' || rest[0] == '\t';
  rest = trimmed(rest);
  const bool is_words = rest.empty() || (rest[0] >= 'a' && rest[0] <= 'z');
  // "format in {mm}" is about a variable.
  return apart && is_words && !rest.starts_with("in") ? std::optional(rest) : std::nullopt;
}

}  // namespace worksheet
