#include "host/packcheck/pack.hpp"

#include <algorithm>

#include "host/efiutils/function_info.hpp"
#include "host/packcheck/watch/library_symbols.hpp"
#include "host/packs/library.hpp"

namespace packcheck {

namespace {

// No call takes the values of more variables.
constexpr std::size_t kMostContext = 8;

// Entry points that take values as a row's handler does.
constexpr struct {
  const char* name;
  const char* symbol;
  int argument_count;
} kValueEntryPoints[] = {{"inv(Anyval*)", worksheet::kInverseSymbol, 1},
                         {"eigenvals(Anyval*, Anyval*)", worksheet::kEigenvalsSymbol, 2},
                         {"eigenvecs(Anyval*)", worksheet::kEigenvecsSymbol, 1}};

std::span<const FunctionEntry> table_of(const Pack& pack) {
  const auto* const table = static_cast<const FunctionEntry*>(pack.symbol("theEfi"));
  const auto* const count = static_cast<const std::int32_t*>(pack.symbol("numFuncs"));
  if (table == nullptr || count == nullptr) return {};
  const auto rows = static_cast<std::size_t>(std::clamp(*count, 0, worksheet::kMostRows));
  return {table, std::min(rows, object_size(table) / sizeof(FunctionEntry))};
}

}  // namespace

Pack::Pack(const std::string& path) {
  std::string reason;
  handle_ = worksheet::open_library(path, &reason);
  if (handle_ == nullptr) throw worksheet::PackError(reason);
  memory_ = AddressSpace();
  rows_ = table_of(*this);
}

Pack::~Pack() {
  worksheet::close_library(handle_);
}

void* Pack::symbol(const char* name) const {
  return worksheet::find_symbol(handle_, name);
}

std::vector<Function> callable_functions(const Pack& pack) {
  const AddressSpace& memory = pack.memory();
  std::vector<Function> functions;
  for (std::size_t k = 0; k < pack.rows().size(); ++k) {
    const FunctionEntry& row = pack.rows()[k];
    const auto name = text_of(memory, row.name);
    const auto context = context_names(memory, row.context);
    if (!name || !context || !is_host_signature(row.signature) ||
        !memory.executable(reinterpret_cast<const void*>(row.handler)))
      continue;
    const int count = row.signature->argument_count;
    if (context->size() > static_cast<std::size_t>(count)) continue;
    functions.push_back({*name, static_cast<int>(k), {}, count, *context});
  }
  for (const auto& entry : kValueEntryPoints) {
    const auto handler = reinterpret_cast<AnyHandler>(pack.symbol(entry.symbol));
    if (handler != nullptr && std::ranges::none_of(pack.rows(), [=](const FunctionEntry& row) {
          return row.handler == handler;
        }))
      functions.push_back({entry.name, -1, entry.symbol, entry.argument_count, {}});
  }
  return functions;
}

AnyHandler handler_of(const Pack& pack, const Function& function) {
  if (function.row >= 0) return pack.rows()[static_cast<std::size_t>(function.row)].handler;
  return reinterpret_cast<AnyHandler>(pack.symbol(function.symbol.c_str()));
}

bool is_host_signature(const sFunctionInfo* info) {
  const sFunctionInfo* const known[] = {Any_to_Any,         Any_to_Mat,
                                        Any_to_Num,         Any_Any_to_Num,
                                        Any_Any_to_Any,     Any_Any_to_Mat,
                                        Any_Any_Any_to_Any, Any_Any_Any_to_Mat,
                                        Mat_Mat_to_Mat,     Any_Any_Any_Any_Any_Any_to_Any};
  return std::find(std::begin(known), std::end(known), info) != std::end(known);
}

std::optional<std::string> text_of(const AddressSpace& memory, const sString* record) {
  if (!memory.holds(record) || record->kind != kStringKind) return std::nullopt;
  return memory.text_at(record->text);
}

std::optional<std::vector<std::string>> context_names(const AddressSpace& memory,
                                                      const sCons* list) {
  std::vector<std::string> names;
  for (; list != nullptr; list = list->cdr) {
    if (!memory.holds(list) || names.size() == kMostContext) return std::nullopt;
    const auto* const identifier = static_cast<const sIdentifier*>(list->car);
    if (!memory.holds(identifier) || identifier->kind != kIdentifierKind) return std::nullopt;
    const auto name = text_of(memory, identifier->name);
    if (!name) return std::nullopt;
    names.push_back(*name);
  }
  return names;
}

}  // namespace packcheck
