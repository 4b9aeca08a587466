// The files of the build under test. Told as the program runs: these tests, too, are compiled once
// for all builds.
#pragma once

#include <string>

namespace test {

extern const char* const kPackFile;    // The pack.
extern const char* const kNoPackFile;  // A library that is none.
extern const char* const kTinyPacks;   // The directory of the packs tiny_*.so.
extern const char* const kWorksheet;   // The programs.
extern const char* const kPackcheck;

std::string tiny_pack(const std::string& fault);

}  // namespace test
