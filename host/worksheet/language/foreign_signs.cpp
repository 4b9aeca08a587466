#include "host/worksheet/language/foreign_signs.hpp"

#include <algorithm>
#include <utility>

#include "host/text/nearest.hpp"
#include "host/worksheet/language/words.hpp"

namespace worksheet {

namespace {

// Signs, and what is written here; those that begin with others come first.
constexpr std::pair<std::string_view, std::string_view> kSigns[] = {
    {"===", "=="},
    {"**", "x^n"},
    {"~=", "!="},
    {"<>", "!="},
    {"=<", "<="},
    {"=>", ">="},
    {"++", "x += 1"},
    {"--", "x -= 1"},
    {":=", "="},
    {"->", "f(x) = ..."},
    {"//", "floor(x / y), or # before a comment"},
    {":,", "A[:, j]"},
    {":)", "A[i, :]"},
    {"%", "mod(x, y), or # before a comment"},
    {"&", "&&"},
    {"|", "||"},
    {"~", "!x"},
    {"!", "gamma(n + 1)"},
    {"?", "if(c, x, y)"},
    {"'", "\"text\""},
    {"@", "f(x) = ..."},
    {"≠", "!="},
    {"≤", "<="},
    {"≥", ">="},
    {"×", "*"},
    {"·", "*"},
    {"÷", "/"},
    {"²", "^2"},
    {"³", "^3"},
};

constexpr std::pair<std::string_view, std::string_view> kWords[] = {
    {"and", "&&"},        {"or", "||"},          {"not", "!x"},
    {"mod", "mod(x, y)"}, {"def", "f(x) = ..."}, {"function", "f(x) = ..."},
    {"let", "x = ..."},   {"var", "x = ..."},
};

std::string_view word_before(std::string_view text, std::size_t at) {
  std::size_t end = at;
  while (end > 0 && is_blank(text[end - 1])) --end;
  std::size_t begin = end;
  while (begin > 0 && is_name_character(text[begin - 1])) --begin;
  return text.substr(begin, end - begin);
}

// The first half of a sign may have been read as an operator.
constexpr std::size_t kLongestSign = 3;

std::string_view written_here(std::string_view text, std::size_t at) {
  const std::string_view words[] = {text.substr(at, name_length(text, at)), word_before(text, at)};
  for (const std::string_view word : words)
    for (const auto& [other, here] : kWords)
      if (word == other) return here;
  for (std::size_t back = 0; back < kLongestSign && back <= at; ++back)
    for (const auto& [other, here] : kSigns)
      if (other.size() > back && text.substr(at - back, other.size()) == other) return here;
  return {};
}

}  // namespace

std::string suggested_sign(std::string_view text, std::size_t at) {
  const std::string_view here = written_here(text, std::min(at, text.size()));
  return here.empty() ? "" : suggestion({std::string(here)});
}

}  // namespace worksheet
