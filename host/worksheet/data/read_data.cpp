#include "host/worksheet/data/read_data.hpp"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "fmt/format.h"
#include "host/efiutils/files.hpp"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

DataFile::DataFile(const std::string& path) : path_(path) {
  // A device such as /dev/zero may have no end.
  std::error_code ignored;
  std::optional<std::string> content;
  if (!std::filesystem::is_directory(path, ignored) &&
      !std::filesystem::is_character_file(path, ignored))
    content = efi::read_file(path);
  if (!content) throw DataError(fmt::format("{}: cannot be read", path));
  content_ = std::move(*content);
}

const std::string_view* DataFile::next_line() {
  if (at_ >= content_.size()) return nullptr;
  const std::size_t end = std::min(content_.find('\n', at_), content_.size());
  line_ = std::string_view(content_).substr(at_, end - at_);
  at_ = end + 1;
  ++number_;
  return &line_;
}

void DataFile::fail(const std::string& what) const {
  throw DataError(fmt::format("{}, line {}: {}", path_, number_, what));
}

aMatrix* read_data(Machine& machine, const std::string& name) {
  const auto path = std::filesystem::path(machine.directory) / name;
  DataFile file(path.lexically_normal().string());
  const std::string_view* const first = file.next_line();
  if (first == nullptr) throw DataError(fmt::format("{}: the file is empty", path.string()));
  try {
    MatrixBuilder matrix =
        first->starts_with("%%") ? read_matrix_market(file, *first) : read_table(file, *first);
    return matrix.finish(machine.store);
  } catch (const std::bad_alloc&) {
    throw DataError(fmt::format("{}: not enough memory", path.string()));
  }
}

Value read(Machine& machine, const Call& call) {
  if (!is_text(call.arguments[0]))
    return machine.fail(call.places[0], "must be text: the name of a file");
  try {
    return object_value(read_data(machine, text(call.arguments[0])));
  } catch (const DataError& error) {
    return machine.fail(call.span, error.what());
  }
}

}  // namespace worksheet
