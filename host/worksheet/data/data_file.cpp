#include "host/worksheet/data/data_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "fmt/format.h"
#include "host/efiutils/files.hpp"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void refuse(const std::string& path, const char* reason) {
  throw DataError(fmt::format("{}: cannot be read: {}", path, reason));
}

const char* reason_of(int error) {
  return error == ENOENT ? "no such file" : error == EISDIR ? "it is a directory" : strerror(error);
}

// The content of a regular file: a device or a pipe may have no end.
std::string whole_content(const std::string& path) {
  const efi::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status = {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) refuse(path, reason_of(errno));
  if (S_ISDIR(status.st_mode)) refuse(path, reason_of(EISDIR));
  if (!S_ISREG(status.st_mode)) refuse(path, "it is no regular file");
  std::string content;
  constexpr std::size_t kPiece = 1 << 16;
  content.reserve(static_cast<std::size_t>(status.st_size) + kPiece);
  for (std::size_t size = 0;;) {
    content.resize(size + kPiece);
    const ssize_t count = read(file.get(), content.data() + size, kPiece);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) refuse(path, reason_of(errno));
    size += static_cast<std::size_t>(count);
    content.resize(size);
    if (count == 0) return content;
  }
}

}  // namespace

DataFile::DataFile(const std::string& path) : path_(path), content_(whole_content(path)) {
  if (content_.starts_with("\xFF\xFE") || content_.starts_with("\xFE\xFF"))
    fail_whole("is text in UTF-16; save it as UTF-8");
  if (content_.starts_with(kByteOrderMark)) content_.erase(0, kByteOrderMark.size());
  if (content_.empty()) fail_whole("the file is empty");
  // Lines may end as they did on old machines, with a carriage return alone.
  if (content_.find('\n') == std::string::npos)
    std::replace(content_.begin(), content_.end(), '\r', '\n');
}

const std::string_view* DataFile::next_line() {
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
