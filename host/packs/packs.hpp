// Function packs: libraries with a function table, loaded while the application runs.
#pragma once

#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/efiutils/function_info.hpp"
#include "pack/host_interface.hpp"

namespace worksheet {

class Pack;

// No table of a real pack is longer; a foreign symbol of the same name may hold anything.
inline constexpr std::int32_t kMostRows = 10000;

// The entry points that hosts call beside the table, by the linker's names:
// identity(EfiCallContext*, int), and of values inv, eigenvals and eigenvecs.
inline constexpr const char* kIdentitySymbol = "_Z8identityP14EfiCallContexti";
inline constexpr const char* kInverseSymbol = "_Z3invP14EfiCallContextP6Anyval";
inline constexpr const char* kEigenvalsSymbol = "_Z9eigenvalsP14EfiCallContextP6AnyvalS2_";
inline constexpr const char* kEigenvecsSymbol = "_Z9eigenvecsP14EfiCallContextP6Anyval";

// One function of a pack.
struct Row {
  std::string name;
  const Pack* pack;
  const FunctionEntry* entry;
  std::size_t argument_count;        // Without the context values.
  std::vector<std::string> context;  // The worksheet variables whose values follow.

  const char* unit_rule() const {
    return entry->unit_rule == nullptr ? nullptr : entry->unit_rule->text;
  }
};

// Why a library is not taken as a pack.
struct PackError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Pack {
 public:
  // Loads the library and reads its table. Throws PackError.
  explicit Pack(const std::string& path);
  ~Pack();
  Pack(const Pack&) = delete;
  Pack& operator=(const Pack&) = delete;

  const std::string& path() const { return path_; }
  // The reference of its functions, if it brings one: "libmatrix.md" beside "libmatrix.so.0".
  std::string reference_path() const;
  const std::vector<Row>& rows() const { return rows_; }

  // The entry points that hosts use for their own operators; null where the pack has none.
  using Inverse = Anyval* (*)(EfiCallContext*, Anyval*);
  using Identity = Anyval* (*)(EfiCallContext*, int);
  Inverse inverse() const { return inverse_; }
  Identity identity() const { return identity_; }

  // Enters the pack into the catalogue, or removes it. Throws PackError.
  void register_pack() const;
  void unregister_pack() const;

 private:
  void read_table();
  void call_registration(const char* name) const;

  std::string path_;
  void* handle_;
  const void* table_ = nullptr;
  std::vector<Row> rows_;
  Inverse inverse_ = nullptr;
  Identity identity_ = nullptr;
};

// Calls a handler with the context and the values.
Anyval* call_handler(AnyHandler handler, EfiCallContext* context,
                     std::span<Anyval* const> arguments);

// The pack built or installed beside this program; empty if there is none.
std::string neighbouring_pack();

}  // namespace worksheet
