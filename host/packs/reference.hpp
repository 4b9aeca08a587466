// The reference of packs' functions: what `help`, --functions and spreadsheets know.
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

struct ReferenceEntry {
  std::string group;
  std::string heading;             // "f(x), g(x)"
  std::vector<std::string> names;  // "f", "g"
  std::string summary;             // The first sentence.
  std::string text;                // All of it, Markdown.
};

std::vector<ReferenceEntry> read_reference(std::string_view markdown);

// The reference of a pack; entries for which it has no function are about operators. Functions that
// the pack says nothing about have an entry with their kinds of arguments.
std::vector<ReferenceEntry> pack_reference(const Pack& pack);

// Whether the entry is about that name, or the operator that it begins with: "A^-1".
bool names(const ReferenceEntry& entry, const std::string& name);

// The first entry for a name; null if there is none.
const ReferenceEntry* find_entry(const std::vector<ReferenceEntry>& entries,
                                 const std::string& name);

// Text without the marks of Markdown.
std::string plain_text(std::string_view markdown);

// The kinds of a row's arguments and of its result: "any", "number" or "matrix".
std::vector<std::string> argument_kinds(const Row& row);
const char* result_kind(const Row& row);

}  // namespace worksheet
