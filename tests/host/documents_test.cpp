// The documents: every worksheet and command in them gives the output that is printed below it, and
// every piece of code is one of a program that is built and run.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"
#include "tests/support/sanitized.hpp"

namespace {

struct Block {
  std::string language;
  std::string content;
  int line;
};

std::vector<Block> blocks_of(const std::filesystem::path& document) {
  std::ifstream file(document);
  EXPECT_TRUE(file) << document;
  std::vector<Block> blocks;
  bool inside = false;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::size_t fence = line.find("```");
    if (fence != std::string::npos && line.find_first_not_of(' ') == fence) {
      inside = !inside;
      if (inside) blocks.push_back({line.substr(fence + 3), "", number});
    } else if (inside) {
      blocks.back().content += line + "\n";
    }
  }
  EXPECT_FALSE(inside) << document << ": a block is not closed";
  return blocks;
}

std::vector<std::filesystem::path> documents() {
  std::vector<std::filesystem::path> paths = {MATRIX_SOURCE_DIR "/README.md"};
  for (const auto& entry : std::filesystem::directory_iterator(MATRIX_SOURCE_DIR "/docs"))
    if (entry.path().extension() == ".md") paths.push_back(entry.path());
  return paths;
}

// Calls check(block, the block behind it or null) for every block in one of the languages; gives
// their number.
template <class Check>
int for_each_block(const std::set<std::string>& languages, Check check) {
  int count = 0;
  for (const auto& document : documents()) {
    const std::vector<Block> blocks = blocks_of(document);
    for (std::size_t k = 0; k < blocks.size(); ++k) {
      if (!languages.contains(blocks[k].language)) continue;
      SCOPED_TRACE(document.filename().string() + ", line " + std::to_string(blocks[k].line));
      ++count;
      check(blocks[k], k + 1 < blocks.size() ? &blocks[k + 1] : nullptr);
    }
  }
  return count;
}

TEST(Documents, EveryWorksheetGivesTheOutputBelowIt) {
  const int worksheets = for_each_block({"worksheet"}, [](const Block& block, const Block* next) {
    ASSERT_NE(next, nullptr);
    ASSERT_EQ(next->language, "text");
    const test::ProgramRun run = test::run_program({"-"}, block.content);
    EXPECT_EQ(run.out + run.err, next->content);
  });
  EXPECT_GE(worksheets, 30);
}

// What `commands`, which may write files, print beside the examples, up to the first that fails.
std::string printed_beside_examples(const std::string& commands) {
  const test::Directory directory;
  return test::shell("exec </dev/null\nset -e\ncd '" + directory.path(".") +
                     "'\nln -s '" MATRIX_SOURCE_DIR "/examples' .\n" +
                     "export WORKSHEET_CATALOGUE=/nonexistent/packs.json\n" + commands);
}

TEST(Documents, EveryCommandThatStartsTheProgramRuns) {
  const int commands = for_each_block({"sh"}, [](const Block& block, const Block* next) {
    constexpr std::string_view kRun = "./run";
    std::string runs;
    std::istringstream lines(block.content);
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with(kRun) && !(test::kSanitized && line.find("--max-memory") != line.npos))
        runs += test::kWorksheet + line.substr(kRun.size()) + "\n";
    const std::string output = printed_beside_examples(runs);
    if (next != nullptr && next->language == "text") {
      EXPECT_EQ(output, next->content);
    }
  });
  EXPECT_GE(commands, 2);
}

// The lines of a text without the blanks around them, each between line ends.
std::string lines_of(std::istream& text) {
  std::string lines = "\n";
  for (std::string line; std::getline(text, line);) {
    const std::size_t first = line.find_first_not_of(' ');
    lines += (first == std::string::npos ? "" : line.substr(first)) + "\n";
  }
  return lines;
}

TEST(Documents, EveryPieceOfCodeIsOneOfTheTree) {
  std::vector<std::string> sources;
  for (const char* folder : {"examples", "pack", "structural", "tests"})
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(MATRIX_SOURCE_DIR "/" + std::string(folder)))
      if (entry.is_regular_file()) {
        std::ifstream file(entry.path());
        sources.push_back(lines_of(file));
      }
  const int pieces = for_each_block({"cpp", "cmake"}, [&](const Block& block, const Block*) {
    std::istringstream text(block.content);
    const std::string lines = lines_of(text);
    EXPECT_TRUE(std::any_of(sources.begin(), sources.end(), [&](const std::string& source) {
      return source.find(lines) != std::string::npos;
    })) << block.content;
  });
  EXPECT_GE(pieces, 10);
}

}  // namespace
