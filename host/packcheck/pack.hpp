// The pack under test, loaded as a host loads it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/packcheck/memory/address_space.hpp"
#include "host/packs/packs.hpp"
#include "pack/host_interface.hpp"

namespace packcheck {

class Pack {
 public:
  // Throws worksheet::PackError.
  explicit Pack(const std::string& path);
  ~Pack();
  Pack(const Pack&) = delete;
  Pack& operator=(const Pack&) = delete;

  // The rows of the table that its count states and its symbol has room for.
  std::span<const FunctionEntry> rows() const { return rows_; }
  void* symbol(const char* name) const;
  // The mappings of the process after the pack was loaded.
  const AddressSpace& memory() const { return memory_; }

 private:
  void* handle_;
  AddressSpace memory_;
  std::span<const FunctionEntry> rows_;
};

// What a call needs to know of a function: a row of the table, or an entry point that hosts call in
// the same way.
struct Function {
  std::string name;
  int row;                           // In the table; -1 for an entry point.
  std::string symbol;                // Of an entry point.
  int argument_count;                // Context values included.
  std::vector<std::string> context;  // The variables whose values come last.
};

// The functions that can be called: rows with something wrong in what a call depends on are left
// out.
std::vector<Function> callable_functions(const Pack& pack);

AnyHandler handler_of(const Pack& pack, const Function& function);

// Whether it is one of the host's signature descriptors.
bool is_host_signature(const sFunctionInfo* info);

// What a record holds, nothing where it is damaged: a string's text, the names of a context list.
std::optional<std::string> text_of(const AddressSpace& memory, const sString* record);
std::optional<std::vector<std::string>> context_names(const AddressSpace& memory,
                                                      const sCons* list);

}  // namespace packcheck
