// Writes the list of units as C++ initialisers of UnitEntry, for programs that are built without
// the libraries that read it. Runs on the machine that builds.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "host/units/unit_database.hpp"

namespace {

void write_text(const std::string& text) {
  std::putchar('"');
  for (const char c : text) {
    if (c == '"' || c == '\\') std::putchar('\\');
    std::putchar(c);
  }
  std::putchar('"');
}

void write_texts(const std::vector<std::string>& texts) {
  std::putchar('{');
  for (const std::string& text : texts) {
    // Of one text and of two the compiler could make another thing: a string from two addresses.
    std::fputs("std::string(", stdout);
    write_text(text);
    std::fputs("), ", stdout);
  }
  std::fputs("}, ", stdout);
}

void write_entry(const worksheet::UnitEntry& entry) {
  std::putchar('{');
  write_text(entry.kind);
  std::fputs(", ", stdout);
  for (const auto* texts : {&entry.symbols, &entry.names, &entry.plurals, &entry.prefixes})
    write_texts(*texts);
  std::printf("%s, %d, %a, {", entry.takes_all ? "true" : "false", entry.turns, entry.scale);
  for (const auto& [symbol, power] : entry.dimension) {
    std::putchar('{');
    write_text(symbol);
    std::printf(", %d}, ", power.num);
  }
  std::printf("}, %s},\n", entry.proportional ? "true" : "false");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2 || std::freopen(argv[1], "w", stdout) == nullptr) return 1;
  for (const auto& entry : worksheet::unit_database().entries) write_entry(entry);
  return std::fflush(stdout) == 0 ? 0 : 1;
} catch (const std::exception& error) {
  std::fprintf(stderr, "write_units: %s\n", error.what());
  return 1;
}
