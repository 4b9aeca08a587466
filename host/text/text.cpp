#include "host/text/text.hpp"

#include <algorithm>

namespace worksheet {

namespace {

bool is_continuation_byte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::vector<std::string_view> words_of(std::string_view text) {
  std::vector<std::string_view> words;
  for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
    words.push_back(text.substr(0, text.find_first_of(" \t")));
    text.remove_prefix(words.back().size());
  }
  return words;
}

std::string_view take_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

std::string joined(std::span<const std::string> pieces, std::string_view between) {
  std::string text;
  for (const std::string& piece : pieces) {
    if (&piece != &pieces.front()) text += between;
    text += piece;
  }
  return text;
}

void wrap(std::string& text, std::string_view words, std::size_t width, std::size_t indent) {
  std::size_t column = character_count(std::string_view(text).substr(text.rfind('\n') + 1));
  bool begun = false;
  for (words = trimmed(words); !words.empty(); words = trimmed(words)) {
    const std::string_view word = words.substr(0, words.find(' '));
    words.remove_prefix(word.size());
    const std::size_t length = character_count(word);
    if (begun && column + 1 + length > width) {
      text.append("\n").append(indent, ' ');
      column = indent;
      begun = false;
    }
    if (begun) text += ' ';
    column += length + (begun ? 1 : 0);
    text += word;
    begun = true;
  }
  text += '\n';
}

std::string counted(std::int64_t count, std::string_view what) {
  return std::to_string(count).append(" ").append(what).append(count == 1 ? "" : "s");
}

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !is_continuation_byte(c); }));
}

std::vector<std::string> characters(std::string_view text) {
  std::vector<std::string> characters;
  for (const char c : text) {
    const bool control = static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    if (is_continuation_byte(c) && !characters.empty())
      characters.back() += c;
    else
      characters.emplace_back(1, c == '\t' ? ' ' : control ? '?' : c);
  }
  return characters;
}

}  // namespace worksheet
