#include "host/worksheet/output/json_writer.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <ostream>

#include "host/text/utf8.hpp"

namespace worksheet {

void JsonWriter::flush() {
  out_.write(held_.data(), static_cast<std::streamsize>(used_));
  used_ = 0;
  refused_ = !out_.good();
}

void JsonWriter::need(std::size_t room) {
  if (held_.size() - used_ < room) flush();
}

void JsonWriter::raw(std::string_view text) {
  while (!text.empty()) {
    need(1);
    const std::size_t length = std::min(text.size(), held_.size() - used_);
    std::copy_n(text.begin(), length, held_.begin() + static_cast<std::ptrdiff_t>(used_));
    used_ += length;
    text.remove_prefix(length);
  }
}

void JsonWriter::string(std::string_view text) {
  constexpr std::string_view kEscaped = "\"\\\b\f\n\r\t";
  constexpr std::string_view kLetters = "\"\\bfnrt";
  constexpr std::string_view kDigits = "0123456789abcdef";
  raw("\"");
  while (!text.empty()) {
    const auto c = static_cast<unsigned char>(text[0]);
    std::size_t length = 1;
    if (const std::size_t at = kEscaped.find(text[0]); at != std::string_view::npos) {
      raw("\\");
      raw(kLetters.substr(at, 1));
    } else if (c < 0x20) {
      raw("\\u00");
      raw(kDigits.substr(c >> 4, 1));
      raw(kDigits.substr(c & 15, 1));
    } else {
      length = c < 0x80 ? 1 : character_length(text);
      raw(length == 0 ? kReplacementCharacter : text.substr(0, length));
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  raw("\"");
}

void JsonWriter::integer(long long value) {
  need(kMostNumber);
  char* const start = held_.data() + used_;
  used_ =
      static_cast<std::size_t>(std::to_chars(start, start + kMostNumber, value).ptr - held_.data());
}

void JsonWriter::number(double value) {
  if (std::isnan(value)) return raw("\"nan\"");
  if (std::isinf(value)) return raw(value > 0.0 ? "\"inf\"" : "\"-inf\"");
  need(kMostNumber);
  char* const start = held_.data() + used_;
  // As the library writes the numbers of its own objects.
  used_ = static_cast<std::size_t>(nlohmann::detail::to_chars(start, start + kMostNumber, value) -
                                   held_.data());
}

}  // namespace worksheet
