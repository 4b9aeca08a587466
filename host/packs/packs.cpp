#include "host/packs/packs.hpp"

#include <cstdlib>
#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/catalogue.hpp"
#include "host/efiutils/system/paths.hpp"
#include "host/efiutils/system/platform.hpp"
#include "host/packs/leave.hpp"
#include "host/packs/library.hpp"

namespace worksheet {

namespace {

template <class Function>
Function function_at(void* symbol) {
  return reinterpret_cast<Function>(symbol);
}

std::string name_of(const sString* record) {
  if (record == nullptr || record->kind != kStringKind || record->text == nullptr)
    throw PackError("its function table has a row without a name");
  return record->text;
}

std::vector<std::string> context_names(const sCons* list) {
  std::vector<std::string> names;
  for (; list != nullptr; list = list->cdr) {
    // A list that leads back into itself has no end.
    if (names.size() == std::size(sFunctionInfo().arguments))
      throw PackError("its function table has a row with too long a list of variables");
    names.push_back(name_of(static_cast<const sIdentifier*>(list->car)->name));
  }
  return names;
}

Row read_row(const Pack* pack, const FunctionEntry& entry) {
  Row row = {name_of(entry.name), pack, &entry, 0, context_names(entry.context)};
  if (entry.signature == nullptr || entry.handler == nullptr)
    throw PackError(fmt::format("its row of {} has no signature or no handler", row.name));
  const auto declared = static_cast<std::size_t>(entry.signature->argument_count);
  if (declared < row.context.size() || declared > std::size(entry.signature->arguments))
    throw PackError(fmt::format("its row of {} has a wrong signature", row.name));
  row.argument_count = declared - row.context.size();
  return row;
}

}  // namespace

Pack::Pack(const std::string& path) : path_(path), handle_(nullptr) {
  std::error_code failed;
  if (!std::filesystem::exists(efi::path_of(path), failed))
    throw PackError(fmt::format("{}: no such file", path));
  // The loader would wait for what a pipe has to say.
  if (!std::filesystem::is_regular_file(efi::path_of(path), failed))
    throw PackError(fmt::format("{}: not a file", path));
  std::string reason;
  handle_ = open_library(path, &reason);
  if (handle_ == nullptr) throw PackError(reason);
  try {
    read_table();
  } catch (const PackError& error) {
    close_library(handle_);
    throw PackError(fmt::format("{} is not a function pack: {}", path, error.what()));
  }
  add_pack_code(table_);
}

Pack::~Pack() {
  forget_pack_code(table_);
  close_library(handle_);
}

void Pack::read_table() {
  const auto* const count = static_cast<const std::int32_t*>(find_symbol(handle_, "numFuncs"));
  const auto* const table = static_cast<const FunctionEntry*>(find_symbol(handle_, "theEfi"));
  if (count == nullptr || table == nullptr) throw PackError("it has no function table");
  table_ = table;
  if (*count < 1 || *count > kMostRows) throw PackError("its function count makes no sense");
  for (std::int32_t k = 0; k < *count; ++k) rows_.push_back(read_row(this, table[k]));
  inverse_ = function_at<Inverse>(find_symbol(handle_, kInverseSymbol));
  identity_ = function_at<Identity>(find_symbol(handle_, kIdentitySymbol));
}

std::string Pack::reference_path() const {
  const std::filesystem::path library = efi::path_of(path_);
  const std::string name = efi::utf8_of(library.filename());
  return efi::utf8_of(library.parent_path() /
                      efi::path_of(name.substr(0, name.find(kLibraryEnding)) + ".md"));
}

void Pack::call_registration(const char* name) const {
  const auto entry = function_at<std::int32_t (*)()>(find_symbol(handle_, name));
  if (entry == nullptr) throw PackError(fmt::format("{} does not export {}", path_, name));
  if (const std::int32_t status = entry(); status != 0)
    throw PackError(fmt::format("{}: {}", path_, efi::catalogue_failure()));
}

void Pack::register_pack() const {
  call_registration("DllRegisterServer");
}

void Pack::unregister_pack() const {
  call_registration("DllUnregisterServer");
}

Anyval* call_handler(AnyHandler handler, EfiCallContext* c, std::span<Anyval* const> a) {
  using V = Anyval*;
  using C = EfiCallContext*;
  switch (a.size()) {
    case 0:
      return reinterpret_cast<V (*)(C)>(handler)(c);
    case 1:
      return reinterpret_cast<V (*)(C, V)>(handler)(c, a[0]);
    case 2:
      return reinterpret_cast<V (*)(C, V, V)>(handler)(c, a[0], a[1]);
    case 3:
      return reinterpret_cast<V (*)(C, V, V, V)>(handler)(c, a[0], a[1], a[2]);
    case 4:
      return reinterpret_cast<V (*)(C, V, V, V, V)>(handler)(c, a[0], a[1], a[2], a[3]);
    case 5:
      return reinterpret_cast<V (*)(C, V, V, V, V, V)>(handler)(c, a[0], a[1], a[2], a[3], a[4]);
    default:
      return reinterpret_cast<V (*)(C, V, V, V, V, V, V)>(handler)(c, a[0], a[1], a[2], a[3], a[4],
                                                                   a[5]);
  }
}

std::string neighbouring_pack() {
  namespace fs = std::filesystem;
  std::error_code failed;
  const fs::path program = efi::path_of(efi::program_path());
  for (const char* directory : {".", WORKSHEET_LIBDIR}) {
    const fs::path pack = (program.parent_path() / directory / WORKSHEET_PACK).lexically_normal();
    if (fs::exists(pack, failed)) return efi::utf8_of(pack);
  }
  return {};
}

}  // namespace worksheet
