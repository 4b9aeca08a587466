#include "tests/fuzz/corpus.hpp"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fuzz {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

bool stands_for_itself(std::uint8_t byte) {
  return byte >= ' ' && byte < 0x7F && byte != '\\';
}

}  // namespace

std::string escaped(Bytes input) {
  std::string line;
  for (const std::uint8_t byte : input) {
    if (byte == '\n') {
      line += "\\n";
    } else if (byte == '\t') {
      line += "\\t";
    } else if (stands_for_itself(byte) && !(line.empty() && byte == '#')) {
      line += static_cast<char>(byte);
    } else {
      line += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    }
  }
  return line;
}

Input unescaped(const std::string& line) {
  Input input;
  for (std::size_t k = 0; k < line.size(); ++k) {
    const char next = line[k] == '\\' && k + 1 < line.size() ? line[k + 1] : '\0';
    if (next == 'x') {
      input.push_back(static_cast<std::uint8_t>(std::stoi(line.substr(k + 2, 2), nullptr, 16)));
      k += 3;
    } else if (next != '\0') {
      input.push_back(next == 'n' ? '\n' : '\t');
      ++k;
    } else {
      input.push_back(static_cast<std::uint8_t>(line[k]));
    }
  }
  return input;
}

std::vector<Input> read_corpus(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::vector<Input> corpus;
  for (std::string line; std::getline(file, line);)
    if (!line.empty() && line[0] != '#') corpus.push_back(unescaped(line));
  return corpus;
}

std::vector<Input> read_worksheets() {
  std::vector<Input> worksheets;
  for (const char* folder : {"examples", "docs"})
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(MATRIX_SOURCE_DIR) / folder)) {
      const bool document = entry.path().extension() == ".md";
      if (!document && entry.path().extension() != ".ws") continue;
      std::ifstream file(entry.path());
      bool inside = !document;
      if (inside) worksheets.emplace_back();
      for (std::string line; std::getline(file, line);) {
        if (line == "```worksheet") worksheets.emplace_back();
        if (document && line.starts_with("```"))
          inside = line == "```worksheet";
        else if (inside) {
          worksheets.back().insert(worksheets.back().end(), line.begin(), line.end());
          worksheets.back().push_back('\n');
        }
      }
    }
  return worksheets;
}

}  // namespace fuzz
