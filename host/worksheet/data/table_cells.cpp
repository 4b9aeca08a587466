#include "host/worksheet/data/table_cells.hpp"

#include <algorithm>

#include "host/text/text.hpp"
#include "host/text/utf8.hpp"
#include "host/worksheet/engine/limits.hpp"

namespace worksheet {

std::string_view separator_named_in(std::string_view line) {
  constexpr std::string_view kKey = "sep=";
  line = line.substr(0, line.find_last_not_of("\r\n") + 1);
  return line.starts_with(kKey) && line.size() == kKey.size() + 1 ? line.substr(kKey.size()) : "";
}

bool CellReader::next() {
  cells_.clear();
  unescaped_.clear();
  file_.heed_interruption();
  if (!skip_to_cells()) return false;
  line_ = lines_ + 1;
  for (;;) {
    if (cells_.size() == kColumnLimit.most) file_.fail_at(line_, kColumnLimit.message);
    skip_blanks();
    if (!at_line_end() && content_[at_] == '"')
      read_quoted();
    else
      read_bare();
    if (separator_ == kBlanks) skip_blanks();
    if (at_line_end()) break;
    if (separator_ != kBlanks) ++at_;
  }
  ++at_;
  ++lines_;
  return true;
}

// Goes to the next line that has cells.
bool CellReader::skip_to_cells() {
  while (at_ < content_.size()) {
    const std::size_t end = std::min(content_.find('\n', at_), content_.size());
    const std::string_view line = trimmed(content_.substr(at_, end - at_));
    const bool names_separator = at_ == 0 && !separator_named_in(line).empty();
    if (!line.empty() && line.front() != '#' && !names_separator) return true;
    at_ = end + 1;
    ++lines_;
  }
  return false;
}

void CellReader::skip_blanks() {
  auto is_blank = [&](char c) {
    return (c == ' ' || c == '\t' || c == '\r') && (c != separator_ || separator_ == kBlanks);
  };
  while (at_ < content_.size() && is_blank(content_[at_])) ++at_;
}

void CellReader::read_quoted() {
  const std::size_t first = ++at_;
  bool escaped = false;
  for (;; at_ += 2, escaped = true) {
    at_ = content_.find('"', at_);
    if (at_ == std::string_view::npos)
      file_.fail_at(line_, "a quotation mark is opened here and never closed");
    if (content_.substr(at_ + 1, 1) != "\"") break;
  }
  std::string_view text = content_.substr(first, at_ - first);
  ++at_;
  lines_ += static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  if (escaped) {
    std::string& plain = unescaped_.emplace_back();
    for (std::size_t k = 0; k < text.size(); k += text[k] == '"' ? 2 : 1) plain += text[k];
    text = plain;
  }
  cells_.push_back({trimmed(text), true});
  const std::size_t behind = at_;
  skip_blanks();
  const bool apart =
      at_line_end() || content_[at_] == separator_ || (separator_ == kBlanks && at_ > behind);
  if (!apart) file_.fail_at(lines_ + 1, "there is text behind a closing quotation mark");
}

void CellReader::read_bare() {
  const std::size_t first = at_;
  auto is_end = [&](char c) {
    return c == '\n' || (separator_ == kBlanks ? c == ' ' || c == '\t' || c == '\r'
                                               : separator_ != kNoSeparator && c == separator_);
  };
  while (at_ < content_.size() && !is_end(content_[at_])) ++at_;
  cells_.push_back({trimmed(content_.substr(first, at_ - first)), false});
}

namespace {

// The characters of Windows-1252 from 0x80 to 0x9F; 0 where there is none.
constexpr char16_t kWindows1252[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void append_utf8(std::string& text, unsigned code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
  } else {
    text += {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
             static_cast<char>(0x80 | (code & 0x3F))};
  }
}

}  // namespace

std::string cell_text(std::string_view text) {
  std::string plain(text);
  for (char& c : plain)
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) c = ' ';
  if (sound_length(plain) == plain.size()) return std::string(trimmed(plain));
  std::string result;
  for (const char c : plain) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80)
      result += c;
    else if (byte >= 0xA0)
      append_utf8(result, byte);
    else
      append_utf8(result, kWindows1252[byte - 0x80] != 0 ? kWindows1252[byte - 0x80] : '?');
  }
  return std::string(trimmed(result));
}

}  // namespace worksheet
