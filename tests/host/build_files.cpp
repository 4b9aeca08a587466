#include "tests/host/build_files.hpp"

const char* const test::kPackFile = MATRIX_PACK;
const char* const test::kNoPackFile = NO_PACK;
const char* const test::kTinyPacks = TINY_PACKS;
const char* const test::kWorksheet = WORKSHEET_PROGRAM;
const char* const test::kPackcheck = PACKCHECK;

std::string test::tiny_pack(const std::string& fault) {
  return std::string(kTinyPacks) + "/tiny_" + fault + ".so";
}
