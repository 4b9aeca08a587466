// A file's bytes, read with care: every offset in it may be wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "host/efiutils/system/files.hpp"

namespace packcheck {

class FileImage {
 public:
  // Empty when the file cannot be read.
  explicit FileImage(const std::string& path) : bytes_(efi::read_file(path).value_or("")) {}

  // `count` records from `offset` on; none when they do not all lie in the file.
  template <class Record>
  std::vector<Record> records(std::uint64_t offset, std::uint64_t count) const {
    if (offset > bytes_.size() || count > (bytes_.size() - offset) / sizeof(Record)) return {};
    std::vector<Record> found(static_cast<std::size_t>(count));
    std::memcpy(found.data(), bytes_.data() + offset, found.size() * sizeof(Record));
    return found;
  }

  // The NUL-terminated text at an offset; empty beyond the end.
  std::string text(std::uint64_t offset) const {
    if (offset >= bytes_.size()) return {};
    const auto begin = static_cast<std::size_t>(offset);
    return bytes_.substr(begin, bytes_.find('\0', begin) - begin);
  }

 private:
  std::string bytes_;
};

}  // namespace packcheck
