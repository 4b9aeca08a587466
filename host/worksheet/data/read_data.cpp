#include "host/worksheet/data/read_data.hpp"

#include <optional>
#include <stdexcept>

#include "fmt/format.h"
#include "host/worksheet/data/read_table.hpp"
#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

namespace {

// What a call asks for.
struct ReadRequest {
  std::string file;
  std::optional<std::string> column;
  TableOptions options;
};

ReadRequest request_of(const Call& call, bool with_column) {
  ReadRequest request;
  if (call.arguments.empty()) throw WrongArgument(call.span, "needs the name of a file");
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const Value& value = call.arguments[k];
    const Span place = call.places[k];
    if (!is_text(value))
      throw WrongArgument(place, k == 0 ? "must be text: the name of a file"
                                        : "must be text: a heading or an option");
    try {
      if (k == 0)
        request.file = text(value);
      else if (read_table_option(text(value), request.options))
        continue;
      else if (!with_column)
        throw WrongArgument(place, "must be an option");
      else if (request.column)
        throw WrongArgument(place, "one column is read at a time");
      else
        request.column = text(value);
    } catch (const std::invalid_argument& error) {
      throw WrongArgument(place, error.what());
    }
  }
  return request;
}

bool is_matrix_market(const DataFile& file) {
  return file.content().starts_with("%%");
}

DataFile opened(const Machine& machine, const std::string& name) {
  return {machine.files.path(name), machine.files.read(name), &machine.interrupted};
}

DataMatrix matrix_of(DataFile& file, const ReadRequest& request) {
  if (!is_matrix_market(file)) return read_table(file, request.options, request.column);
  if (request.column) file.fail_whole("a Matrix Market file has no columns by name");
  return read_matrix_market(file);
}

// What `act` gives for the request; bad files and arguments become error values.
template <class Act>
Value answer(Machine& machine, const Call& call, bool with_column, Act act) {
  try {
    const ReadRequest request = request_of(call, with_column);
    try {
      return act(request);
    } catch (const std::bad_alloc&) {
      return machine.fail(call.span, machine.files.path(request.file) + ": not enough memory");
    }
  } catch (const Stopped&) {
    return machine.stopped(call.span);
  } catch (const WrongArgument& error) {
    return machine.fail(error.span, error.what());
  } catch (const FileError& error) {
    return machine.fail(call.span, error.what());
  } catch (const DataError& error) {
    return machine.fail(call.span, error.what());
  }
}

// Texts below one another.
Value text_column(Machine& machine, const std::vector<std::string>& texts) {
  MatrixBuilder matrix(static_cast<std::ptrdiff_t>(texts.size()), 1);
  for (std::size_t k = 0; k < texts.size(); ++k) {
    const aString* const text = machine.store.new_string(texts[k].c_str());
    if (text == nullptr) throw std::bad_alloc();
    matrix.re()[k] = efi::nested_element(text);
  }
  aMatrix* const made = matrix.finish(machine.store);
  made->flags |= kHoldsNested;
  return object_value(made);
}

}  // namespace

aMatrix* read_data(Machine& machine, const std::string& name) {
  try {
    DataFile file = opened(machine, name);
    return matrix_of(file, {}).matrix.finish(machine.store);
  } catch (const std::bad_alloc&) {
    throw DataError(machine.files.path(name) + ": not enough memory");
  }
}

Value read(Machine& machine, const Call& call) {
  return answer(machine, call, true, [&](const ReadRequest& request) {
    DataFile file = opened(machine, request.file);
    DataMatrix data = matrix_of(file, request);
    for (std::string& note : data.notes) machine.note(std::move(note));
    return object_value(data.matrix.finish(machine.store), data.unit);
  });
}

Value columns(Machine& machine, const Call& call) {
  return answer(machine, call, false, [&](const ReadRequest& request) {
    const DataFile file = opened(machine, request.file);
    if (is_matrix_market(file)) file.fail_whole("a Matrix Market file has no columns by name");
    return text_column(machine, table_headings(file, request.options));
  });
}

}  // namespace worksheet
