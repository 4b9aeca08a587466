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

struct Variable;
class Pack;

// One function of a pack.
struct Row {
  std::string name;
  const Pack* pack;
  const FunctionEntry* entry;
  std::size_t argument_count;        // Without the context values.
  std::vector<std::string> context;  // The worksheet variables whose values follow.
  std::vector<Variable*> variables;  // The same, once a machine has taken the pack in.

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
  std::vector<Row>& rows() { return rows_; }

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
