#include "host/worksheet/data/data_file.hpp"

#include <algorithm>
#include <utility>

#include "fmt/format.h"
#include "host/text/text.hpp"
#include "host/text/utf8.hpp"

namespace worksheet {

DataFile::DataFile(const std::string& path, std::string content, efi::StopFlag interrupted)
    : path_(path), content_(std::move(content)), interrupted_(interrupted) {
  if (content_.starts_with("\xFF\xFE") || content_.starts_with("\xFE\xFF"))
    fail_whole("is text in UTF-16; save it as UTF-8");
  if (content_.starts_with(kByteOrderMark)) content_.erase(0, kByteOrderMark.size());
  if (content_.empty()) fail_whole("the file is empty");
  // Lines may end as they did on old machines, with a carriage return alone.
  if (content_.find('\n') == std::string::npos)
    std::replace(content_.begin(), content_.end(), '\r', '\n');
}

const std::string_view* DataFile::next_line() {
  heed_interruption();
  if (at_ >= content_.size()) return nullptr;
  const std::size_t end = std::min(content_.find('\n', at_), content_.size());
  line_ = std::string_view(content_).substr(at_, end - at_);
  at_ = end + 1;
  ++number_;
  return &line_;
}

void DataFile::fail_at(int line, const std::string& what) const {
  throw DataError(fmt::format("{}, line {}: {}", path_, line, what));
}

void DataFile::fail_whole(const std::string& what) const {
  throw DataError(fmt::format("{}: {}", path_, what));
}

std::string excerpt(std::string_view text) {
  constexpr std::size_t kMostShown = 40;
  std::vector<std::string> shown = characters(text.substr(0, 8 * kMostShown));
  if (shown.size() > kMostShown) {
    shown.resize(kMostShown);
    shown.emplace_back("...");
  }
  return joined(shown, "");
}

}  // namespace worksheet
