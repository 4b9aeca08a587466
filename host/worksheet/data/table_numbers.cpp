#include "host/worksheet/data/table_numbers.hpp"

#include <algorithm>
#include <string>

#include "host/text/numbers.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

constexpr std::string_view kMinusSign = "\u2212";

// Signs between groups of digits, besides the comma or the point: apostrophes, and spaces that do
// not break, the last one as Windows-1252 has it.
constexpr std::string_view kGroupSigns[] = {"'", "\u2019", "\u00A0", "\u202F", "\xA0"};

std::size_t digit_count(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_digit) -
                                  text.begin());
}

// The length of the sign between groups with which the text begins; 0 if there is none.
std::size_t group_sign(std::string_view text, char decimal) {
  if (text.starts_with(decimal == '.' ? ',' : '.')) return 1;
  for (const std::string_view sign : kGroupSigns)
    if (text.starts_with(sign)) return sign.size();
  return 0;
}

// Takes digits off the text, those of further groups too, and adds them to `plain`.
void take_digits(std::string_view& text, char decimal, std::string& plain) {
  std::size_t count = digit_count(text);
  const bool groups = count >= 1 && count <= 3 && text[0] != '0';
  for (std::string_view sign;;) {
    plain += text.substr(0, count);
    text.remove_prefix(count);
    const std::size_t length = groups ? group_sign(text, decimal) : 0;
    const bool same = sign.empty() || text.starts_with(sign);
    if (length == 0 || !same || digit_count(text.substr(length)) != 3) return;
    sign = text.substr(0, length);
    text.remove_prefix(length);
    count = 3;
  }
}

// The number as this program writes it; empty where it cannot be one.
std::string plain_number(std::string_view text, char decimal) {
  std::string plain;
  while (!text.empty()) {
    if (is_digit(text[0])) take_digits(text, decimal, plain);
    if (text.empty()) break;
    if (text.starts_with(kMinusSign)) {
      plain += '-';
      text.remove_prefix(kMinusSign.size());
      continue;
    }
    const char c = text[0];
    text.remove_prefix(1);
    const std::size_t fraction = c == decimal ? digit_count(text) : 0;
    if ((c == '.' || c == ',') && fraction == 0) return {};
    plain += fraction > 0 ? '.' : c;
    plain += text.substr(0, fraction);
    text.remove_prefix(fraction);
  }
  return plain;
}

}  // namespace

bool is_missing(std::string_view cell) {
  constexpr std::string_view kMarks[] = {"", "na", "n/a", "#n/a", "<na>", "null", "none", "nan"};
  if (cell.size() > 4) return false;
  char small[4];
  std::transform(cell.begin(), cell.end(), small, [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return std::find(std::begin(kMarks), std::end(kMarks), std::string_view(small, cell.size())) !=
         std::end(kMarks);
}

std::optional<Number> number_in(std::string_view cell, char decimal) {
  // As some programs write complex numbers: (1+2j).
  if (cell.starts_with('(') && (cell.ends_with("j)") || cell.ends_with("i)")))
    cell = cell.substr(1, cell.size() - 2);
  if (decimal == '.' || cell.find_first_of(".,") == std::string_view::npos)
    if (const auto z = parse_number(cell)) return z;
  // What begins otherwise is text, of any length.
  if (cell.empty() || cell.find_first_of("0123456789") == std::string_view::npos) return {};
  return parse_number(plain_number(cell, decimal));
}

}  // namespace worksheet
