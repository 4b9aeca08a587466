// The reference of functions: what `help` and --functions know.
//
// It is Markdown: "## Group", then "### f(x), g(x)" and what there is to say about them, beginning
// with a sentence that says it all. A pack may bring its own, beside its library and of the same
// name: libmatrix.md for libmatrix.so.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/packs/packs.hpp"

namespace worksheet {

class Machine;

struct ReferenceEntry {
  std::string group;
  std::string heading;             // "f(x), g(x)"
  std::vector<std::string> names;  // "f", "g"
  std::string summary;             // The first sentence.
  std::string text;                // All of it, Markdown.
};

std::vector<ReferenceEntry> read_reference(std::string_view markdown);

// The reference of the packs, in their order, then that of the language. Functions that their pack
// says nothing about have an entry with their kinds of arguments.
std::vector<ReferenceEntry> whole_reference(const Machine& machine);

// Whether the entry is about that name, or the operator that it begins with: "A^-1".
bool names(const ReferenceEntry& entry, const std::string& name);

// The first entry for a name; null if there is none.
const ReferenceEntry* find_entry(const std::vector<ReferenceEntry>& entries,
                                 const std::string& name);

// The reference of the language itself.
extern const char* const kLanguageReference;

// Text without the marks of Markdown.
std::string plain_text(std::string_view markdown);

// The kinds of a row's arguments and of its result: "any", "number" or "matrix".
std::vector<std::string> argument_kinds(const Row& row);
const char* result_kind(const Row& row);

}  // namespace worksheet
