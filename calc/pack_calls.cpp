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

Message failure(const std::string& words, int argument = 0) {
  return message_of({{"error", words}, {"argument", argument}});
}

// --- Arguments ---

struct Release {
  void operator()(double* part) const { ::operator delete(part); }
};
using Part = std::unique_ptr<double[], Release>;

// Takes the next part array of a request off its numbers.
Part take_part(std::span<const double>& numbers, std::size_t count) {
  if (count > numbers.size()) throw std::invalid_argument("a request with too few numbers");
  Part part(static_cast<double*>(::operator new(count * sizeof(double))));
  std::copy_n(numbers.begin(), count, part.get());
  numbers = numbers.subspan(count);
  return part;
}

Anyval* matrix_argument(efi::Store& store, const json& shape, std::span<const double>& numbers) {
  const auto rows = shape.at("rows").get<std::uint32_t>();
  const auto cols = shape.at("cols").get<std::uint32_t>();
  if (rows < 1 || cols < 1 || rows > kMostNumbers / cols)
    throw std::invalid_argument("a request with a wrong shape");
  const std::size_t count = std::size_t{rows} * cols;
  Part re = take_part(numbers, count);
  Part im = shape.at("complex").get<bool>() ? take_part(numbers, count) : nullptr;
  aMatrix* const matrix = store.new_matrix(static_cast<int>(rows), static_cast<int>(cols), re.get(),
                                           im.get(), static_cast<unsigned>(count * sizeof(double)));
  if (matrix == nullptr) throw std::bad_alloc();
  static_cast<void>(re.release());
  static_cast<void>(im.release());
  return matrix;
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
    return failure(fmt::format("the result has {} parts, not {}", parts.size(), part));
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
  packs_.push_back(std::make_unique<worksheet::Pack>(path));
  const worksheet::Pack& pack = *packs_.back();
  const auto reference = worksheet::pack_reference(pack);
  json told = json::array();
  const auto add = [&](const std::string& name, Function function) {
    const auto* const entry = worksheet::find_entry(reference, name);
    told.push_back({{"name", name},
                    {"arguments", function.argument_count},
                    {"context", function.context},
                    {"heading", entry == nullptr ? name : entry->heading.substr(0, kShownText)},
                    {"summary", entry == nullptr ? "" : entry->summary.substr(0, kShownText)}});
    functions_.try_emplace({path, name}, std::move(function));
  };
  for (const worksheet::Row& row : pack.rows())
    add(row.name, {row.argument_count, row.context, [this, &row](std::span<Anyval* const> values) {
                     return worksheet::call_handler(row.entry->handler, &context_, values);
                   }});
  if (const auto inverse = pack.inverse(); inverse && !functions_.contains({path, kInverse}))
    add(kInverse, {1, {}, [this, inverse](std::span<Anyval* const> values) {
                     return inverse(&context_, values[0]);
                   }});
  return message_of({{"pack", path}, {"functions", told}});
}

Message PackCalls::call(const Function& function, const std::string& name,
                        std::vector<Anyval*> values, std::size_t part) {
  for (;;) {
    const auto outcome = worksheet::call_watched([&] { return function.call(values); }, values,
                                                 store_, evaluator_, efi::Care::records);
    if (!outcome.complaint.empty()) return failure(name + ": " + outcome.complaint);
    if (outcome.result == nullptr) return failure(name + " gave no value");
    Anyval* const scalar = as_scalar(store_, outcome.result, values);
    if (scalar == nullptr) return result_message(store_, outcome.result, part);
    values[static_cast<std::size_t>(static_cast<aError*>(outcome.result)->arg) - 1] = scalar;
  }
}

Message PackCalls::answer(const Message& request) try {
  const json call = json::parse(request.text);
  const auto path = call.at("pack").get<std::string>();
  const auto name = call.at("function").get<std::string>();
  const auto found = functions_.find({path, name});
  if (found == functions_.end())
    return failure(fmt::format("{} of {} is not there any more", name, path));
  const Function& function = found->second;
  if (call.at("arguments").size() != function.argument_count)
    throw std::invalid_argument("a request with a wrong number of arguments");

  store_.collect({});
  std::span<const double> numbers = request.numbers;
  std::vector<Anyval*> values;
  for (const json& shape : call.at("arguments"))
    values.push_back(matrix_argument(store_, shape, numbers));
  for (const std::string& variable : function.context) {
    const auto value = call.at("context").find(variable);
    if (value == call.at("context").end())
      return failure(fmt::format("{} needs the variable {}, unknown here", name, variable));
    values.push_back(store_.new_scalar(value->get<double>(), 0.0));
  }
  if (std::find(values.begin(), values.end(), nullptr) != values.end()) throw std::bad_alloc();
  return this->call(function, name, std::move(values), call.at("part").get<std::size_t>());
} catch (const std::bad_alloc&) {
  return failure("memory exhausted");
}

}  // namespace calc
