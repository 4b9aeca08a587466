// The comments of a worksheet as the text of a report.
//
//   ## Heading        ### heading of less rank
//   words             paragraphs, ended by an empty comment
//   - item            lists
//       drawing       indented further than the text: as it stands
//
// `Code` stands in backquotes.
#pragma once

#include <span>
#include <string>

namespace worksheet {

// Whether the line is a comment and nothing else.
bool is_comment_line(const std::string& line);

// The markup of comment lines that follow one another.
std::string prose_markup(std::span<const std::string> lines);

// The words of a heading of the first rank, "## Words"; empty if the line is none.
std::string heading_words(const std::string& line);

}  // namespace worksheet
