#include "host/worksheet/data/read_data.hpp"

#include <algorithm>
#include <stdexcept>

#include "fmt/format.h"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

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
  const std::string path = machine.files.path(name);
  try {
    DataFile file(path, machine.files.read(name));
    const std::string_view* const first = file.next_line();
    if (first == nullptr) throw DataError(fmt::format("{}: the file is empty", path));
    MatrixBuilder matrix =
        first->starts_with("%%") ? read_matrix_market(file, *first) : read_table(file, *first);
    return matrix.finish(machine.store);
  } catch (const std::bad_alloc&) {
    throw DataError(fmt::format("{}: not enough memory", path));
  }
}

Value read(Machine& machine, const Call& call) {
  if (!is_text(call.arguments[0]))
    return machine.fail(call.places[0], "must be text: the name of a file");
  try {
    return object_value(read_data(machine, text(call.arguments[0])));
  } catch (const std::runtime_error& error) {
    return machine.fail(call.span, error.what());
  }
}

}  // namespace worksheet
