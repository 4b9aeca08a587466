// The reference of functions: what `help` and --functions say.
//
// It is Markdown: "## Group", then "### f(x), g(x)" and what there is to say about them, beginning
// with a sentence that says it all. A pack may bring its own, beside its library and of the same
// name: libmatrix.md for libmatrix.so.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

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

// The entry for a name; null if there is none.
const ReferenceEntry* find_entry(const std::vector<ReferenceEntry>& entries,
                                 const std::string& name);

// The reference of the language itself.
extern const char* const kLanguageReference;

// The topic of a statement "help" or "help TOPIC", empty for the first; nothing for other text.
std::optional<std::string> help_topic(std::string_view statement, const Machine& machine);

// The usual length of a line of text, in characters.
inline constexpr int kUsualWidth = 100;

// What there is to say about a topic: a function of the worksheet or any other, or with an empty
// topic everything in short. Empty for an unknown topic.
std::string help_text(const Machine& machine, const std::string& topic, int width = kUsualWidth);

// The entries one by one with their summaries, under their groups.
std::string reference_list(const std::vector<ReferenceEntry>& entries, int width);

}  // namespace worksheet
