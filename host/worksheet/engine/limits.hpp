// The limits of the application: how much the input may decide, and what is said beyond that. Each
// stands here once, and in the table of docs/worksheet.md.
#pragma once

#include <cstddef>

namespace worksheet {

struct Limit {
  std::size_t most;
  const char* message;  // Of the statement's error; null where the output is cut short instead.
};

// --- What is read ---

// Bytes of a statement, over all of its lines.
inline constexpr Limit kStatementLimit = {
    std::size_t{4} << 20,
    "the statement is longer than 4 MiB: a table that long belongs in a file"};
// Brackets within brackets.
inline constexpr Limit kNestingLimit = {100, "brackets are nested too deeply"};
// Blocks within blocks: loops and branches.
inline constexpr Limit kBlockLimit = {100, "blocks are nested too deeply"};
// Names that the body of a function gives values.
inline constexpr Limit kLocalLimit = {100, "too many names in the body of a function"};
// Files that are included within each other, and all that one statement includes.
inline constexpr Limit kIncludeDepthLimit = {16, "files are included too deeply"};
inline constexpr Limit kIncludeLimit = {1000, "one statement may include 1000 files, no more"};
// Bytes of a unit.
inline constexpr Limit kUnitLimit = {1000, "the unit is too long"};
// Columns of a table in a file.
inline constexpr Limit kColumnLimit = {std::size_t{1} << 20, "a table has at most 1048576 columns"};
inline constexpr Limit kArgumentLimit = {12, "too many arguments"};
inline constexpr Limit kParameterLimit = {12, "too many parameters"};
inline constexpr Limit kTargetLimit = {12, "too many names on the left"};

// --- What is computed ---

// Bytes of stack, if the system grants as many; a quarter of them is left to the functions of
// packs.
inline constexpr Limit kStackLimit = {std::size_t{8} << 20, "calls are nested too deeply"};

// Elements of a range that a loop runs through: beyond them numbers are not apart.
inline constexpr Limit kRangeLimit = {std::size_t{1} << 53, "the range has too many elements"};
// Elements of a matrix whose size is a number in the worksheet: zeros, ones, linspace, blocks.
inline constexpr Limit kBuiltLimit = {std::size_t{1} << 27,
                                      "the matrix would have more than 134217728 elements"};

// Pictures of a statement: it holds all of them, and a loop may draw in every pass.
inline constexpr Limit kPictureLimit = {1000, "one statement may draw 1000 pictures, no more"};

// --- What is shown of a statement ---

// Notes of a statement: a loop may have something to say in every pass.
inline constexpr Limit kNoteLimit = {100, nullptr};

// Elements that JSON shows of a value, those of nested values included; beyond that none. Nested
// values count as a few elements each, long texts for what they take.
inline constexpr Limit kPrintedLimit = {std::size_t{1} << 20, nullptr};
// Values within values that are shown.
inline constexpr Limit kPrintedNestingLimit = {100, nullptr};
// Elements of a value on the page of a report.
inline constexpr Limit kReportLimit = {4096, nullptr};
// Characters of a text within an array.
inline constexpr Limit kCellTextLimit = {60, nullptr};

// --- What is saved and loaded ---

// Bytes of a state, and its elements and nested values together. Values are nested as deeply as
// they are shown.
inline constexpr Limit kStateLimit = {std::size_t{256} << 20, "the state is larger than 256 MiB"};
inline constexpr Limit kStateElementLimit = {std::size_t{1} << 24,
                                             "the state has more than 16777216 elements"};
inline constexpr Limit kStateNestingLimit = {kPrintedNestingLimit.most,
                                             "values are nested more than 100 deep"};

}  // namespace worksheet
