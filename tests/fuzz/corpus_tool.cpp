// Between a corpus file and a directory with one file an input, as libFuzzer keeps them:
//   fuzz_corpus unpack FILE DIRECTORY
//   fuzz_corpus pack FILE DIRECTORY     keeps the comments of FILE and replaces its inputs
//   fuzz_corpus show INPUT              the line for the input in a file of libFuzzer's
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/fuzz/corpus.hpp"

namespace {

namespace fs = std::filesystem;

void unpack(const std::string& file, const fs::path& directory) {
  fs::create_directories(directory);
  int count = 0;
  for (const fuzz::Input& input : fuzz::read_corpus(file)) {
    std::ofstream out(directory / ("shipped-" + std::to_string(count++)), std::ios::binary);
    out.write(reinterpret_cast<const char*>(input.data()),
              static_cast<std::streamsize>(input.size()));
  }
}

std::string line_for(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  const fuzz::Input input{std::istreambuf_iterator<char>(in), {}};
  return fuzz::escaped(input);
}

void pack(const std::string& file, const fs::path& directory) {
  std::vector<std::string> lines;
  for (const auto& entry : fs::directory_iterator(directory))
    if (std::string line = line_for(entry.path()); !line.empty()) lines.push_back(std::move(line));
  std::sort(lines.begin(), lines.end());
  std::vector<std::string> comments;
  std::ifstream before(file);
  for (std::string line; std::getline(before, line);)
    if (line.starts_with('#')) comments.push_back(line);
  std::ofstream out(file);
  for (const auto* kind : {&comments, &lines})
    for (const std::string& line : *kind) out << line << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "unpack" && argc == 4) {
    unpack(argv[2], argv[3]);
  } else if (what == "pack" && argc == 4) {
    pack(argv[2], argv[3]);
  } else if (what == "show" && argc == 3) {
    std::cout << line_for(argv[2]) << '\n';
  } else {
    std::cerr << "fuzz_corpus unpack|pack FILE DIRECTORY, fuzz_corpus show INPUT\n";
    return 2;
  }
}
