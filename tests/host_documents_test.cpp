// The documents: every worksheet in them gives the output that is printed below it.
#include <fstream>
#include <optional>

#include "tests/worksheet/sheet.hpp"

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
    if (line.starts_with("```")) {
      inside = !inside;
      if (inside) blocks.push_back({line.substr(3), "", number});
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

TEST(Documents, EveryWorksheetGivesTheOutputBelowIt) {
  int worksheets = 0;
  for (const auto& document : documents()) {
    const std::vector<Block> blocks = blocks_of(document);
    for (std::size_t k = 0; k < blocks.size(); ++k) {
      if (blocks[k].language != "worksheet") continue;
      SCOPED_TRACE(document.filename().string() + ", line " + std::to_string(blocks[k].line));
      ++worksheets;
      ASSERT_LT(k + 1, blocks.size());
      ASSERT_EQ(blocks[k + 1].language, "text");
      const test::ProgramRun run = test::run_program({"-"}, blocks[k].content);
      EXPECT_EQ(run.out + run.err, blocks[k + 1].content);
    }
  }
  EXPECT_GE(worksheets, 30);
}

}  // namespace
