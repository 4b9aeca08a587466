// What a word that is being typed may become: names and keywords, units within braces, files
// within quotation marks.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace worksheet {

class Machine;

struct Completion {
  std::size_t begin = 0;                // Of the word in the text; it ends with the text.
  std::vector<std::string> candidates;  // In order, each in place of the whole word.
};

// For the text of a statement up to the cursor. In a comment, and in a text that names no file,
// there are no candidates. Those of an empty name are all there are; of units without a prefix.
Completion complete(const Machine& machine, std::string_view text);

}  // namespace worksheet
