#include "calc/pack_calls.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "fmt/format.h"
#include "host/efiutils/fault_translation.hpp"
#include "host/packs/reference.hpp"
#include "host/packs/watched_call.hpp"
#include "nlohmann/json.hpp"

namespace calc {

namespace {

using nlohmann::json;

constexpr const char* kInverse = "inverse";
constexpr const char* kNonScalar = "non-scalar value";
constexpr std::size_t kShownText = 400;  // Bytes of a heading or a sentence.

// What a pack says need not be UTF-8.
Message message_of(const json& text) {
  return {text.dump(-1, ' ', false, json::error_handler_t::replace), {}};
}

Message failure(const std::string& words, int argument = 0) {
  return message_of({{"error", words}, {"argument", argument}});
}

// --- Arguments ---

// Takes the next part array of a request off its numbers.
double* take_part(std::span<const double>& numbers, std::size_t count) {
  if (count > numbers.size()) throw std::invalid_argument("a request with too few numbers");
  auto* const part = static_cast<double*>(::operator new(count * sizeof(double)));
  std::copy_n(numbers.begin(), count, part);
  numbers = numbers.subspan(count);
  return part;
}

Anyval* matrix_argument(efi::Store& store, const json& shape, std::span<const double>& numbers) {
  const auto rows = shape.at("rows").get<std::uint32_t>(),
             cols = shape.at("cols").get<std::uint32_t>();
  if (rows < 1 || cols < 1 || rows > kMostNumbers / cols)
    throw std::invalid_argument("a request with a wrong shape");
  const std::size_t count = std::size_t{rows} * cols;
  double* const re = take_part(numbers, count);
  double* const im = shape.at("complex").get<bool>() ? take_part(numbers, count) : nullptr;
  return store.new_matrix(static_cast<int>(rows), static_cast<int>(cols), re, im,
                          static_cast<unsigned>(count * sizeof(double)));
}

// The argument at fault as the scalar that it can also be; null if it cannot. A cell is an array of
// one element as well as a number: only the function knows which it wants.
Anyval* as_scalar(efi::Store& store, const Anyval* result, std::span<Anyval* const> arguments) {
  if (result == nullptr || result->kind != kErrorKind) return nullptr;
  const auto* const error = static_cast<const aError*>(result);
  const auto at = static_cast<std::size_t>(error->arg) - 1;
  if (std::strcmp(error->message->text, kNonScalar) != 0 || at >= arguments.size()) return nullptr;
  const auto* const m = static_cast<const aMatrix*>(arguments[at]);
  if (m->kind != kMatrixKind || m->rows != 1 || m->cols != 1) return nullptr;
  return store.new_scalar(m->re[0], m->im == nullptr ? 0.0 : m->im[0]);
}

// --- Results ---

void append_part(std::vector<double>& numbers, const aMatrix& m, const double* part) {
  const auto rows = static_cast<std::size_t>(m.rows);
  for (std::ptrdiff_t j = 0; j < m.cols; ++j)
    if (part == nullptr)
      numbers.insert(numbers.end(), rows, 0.0);
    else
      numbers.insert(numbers.end(), part + j * m.leading_dimension,
                     part + j * m.leading_dimension + m.rows);
}

Message matrix_message(aMatrix& m) {
  if (contains_ptrs(&m)) return failure("the result holds values that are no numbers");
  const bool is_complex = m.im != nullptr;
  const std::uint64_t count =
      static_cast<std::uint64_t>(m.rows) * static_cast<std::uint64_t>(m.cols);
  if (count > kMostNumbers / (is_complex ? 2 : 1)) return failure("the result is too large");
  Message message = message_of({{"rows", m.rows}, {"cols", m.cols}, {"complex", is_complex}});
  append_part(message.numbers, m, m.re);
  if (is_complex) append_part(message.numbers, m, m.im);
  return message;
}

Message part_message(const efi::Store& store, Anyval* result, std::size_t part) {
  const auto parts = store.parts(result);
  if (part == 0 && result->kind == kMatrixKind)
    return matrix_message(static_cast<aMatrix&>(*result));
  if (parts.empty()) return failure("the result has no parts: leave the number of the part out");
  if (part > parts.size())
    return failure(fmt::format("the result has {} parts, but no part {}", parts.size(), part));
  return matrix_message(*parts[part - 1]);
}

Message result_message(const efi::Store& store, Anyval* result, std::size_t part) {
  if (result->kind == kErrorKind) {
    const auto* const error = static_cast<const aError*>(result);
    return failure(error->message->text, error->arg);
  }
  if (result->kind == kScalarKind && part == 0) {
    const auto* const z = static_cast<const aComplex*>(result);
    Message message = message_of({{"rows", 1}, {"cols", 1}, {"complex", z->im != 0.0}});
    message.numbers = {z->re};
    if (z->im != 0.0) message.numbers.push_back(z->im);
    return message;
  }
  if (result->kind == kStringKind)
    return message_of({{"text", static_cast<aString*>(result)->text}});
  if (result->kind != kMatrixKind && result->kind != kScalarKind)
    return failure("the result is no number, no matrix and no text");
  return part_message(store, result, part);
}

}  // namespace

PackCalls::PackCalls() {
  efi::install_fault_translation();
  evaluator_.apply_function = [this](Anyval*, const sCons*) {
    return mkError(&context_, "must be function", 0);
  };
}

Message PackCalls::load(const std::string& path) {
  auto pack = std::make_unique<worksheet::Pack>(path);
  const auto reference = worksheet::pack_reference(*pack);
  json functions = json::array();
  const auto add = [&](const std::string& name, std::size_t arguments, const json& context) {
    const auto* const entry = worksheet::find_entry(reference, name);
    functions.push_back(
        {{"name", name},
         {"arguments", arguments},
         {"context", context},
         {"heading", entry == nullptr ? name : entry->heading.substr(0, kShownText)},
         {"summary", entry == nullptr ? "" : entry->summary.substr(0, kShownText)}});
  };
  for (const worksheet::Row& row : pack->rows()) add(row.name, row.argument_count, row.context);
  packs_.push_back(std::move(pack));
  const Function inverse = find(path, kInverse);
  if (inverse.pack != nullptr && inverse.row == nullptr) add(kInverse, 1, json::array());
  return message_of({{"pack", path}, {"functions", functions}});
}

PackCalls::Function PackCalls::find(const std::string& path, const std::string& name) const {
  for (const auto& pack : packs_) {
    if (pack->path() != path) continue;
    for (const worksheet::Row& row : pack->rows())
      if (row.name == name) return {pack.get(), &row};
    if (name == kInverse && pack->inverse() != nullptr) return {pack.get(), nullptr};
  }
  return {};
}

Message PackCalls::call(const Function& function, const std::string& name,
                        std::vector<Anyval*> values, std::size_t part) {
  const auto entry = [&] {
    return function.row == nullptr
               ? function.pack->inverse()(&context_, values[0])
               : worksheet::call_handler(function.row->entry->handler, &context_, values);
  };
  for (;;) {
    const auto outcome =
        worksheet::call_watched(entry, values, store_, evaluator_, efi::Care::records);
    if (!outcome.complaint.empty()) return failure(name + ": " + outcome.complaint);
    if (outcome.result == nullptr) return failure(name + " gave no value");
    Anyval* const scalar = as_scalar(store_, outcome.result, values);
    if (scalar == nullptr) return result_message(store_, outcome.result, part);
    values[static_cast<std::size_t>(static_cast<aError*>(outcome.result)->arg) - 1] = scalar;
  }
}

Message PackCalls::answer(const Message& request) {
  const json call = json::parse(request.text);
  const auto path = call.at("pack").get<std::string>();
  const auto name = call.at("function").get<std::string>();
  const Function function = find(path, name);
  if (function.pack == nullptr)
    return failure(fmt::format("{} of {} is not there any more", name, path));
  if (call.at("arguments").size() != (function.row == nullptr ? 1 : function.row->argument_count))
    throw std::invalid_argument("a request with a wrong number of arguments");

  store_.collect({});
  std::span<const double> numbers = request.numbers;
  std::vector<Anyval*> values;
  for (const json& shape : call.at("arguments"))
    values.push_back(matrix_argument(store_, shape, numbers));
  if (function.row != nullptr)
    for (const std::string& variable : function.row->context) {
      const auto value = call.at("context").find(variable);
      if (value == call.at("context").end())
        return failure(fmt::format("{} needs the variable {}, unknown here", name, variable));
      values.push_back(store_.new_scalar(value->get<double>(), 0.0));
    }
  if (std::find(values.begin(), values.end(), nullptr) != values.end()) throw std::bad_alloc();
  return this->call(function, name, std::move(values), call.at("part").get<std::size_t>());
}

}  // namespace calc
