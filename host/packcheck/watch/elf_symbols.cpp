#include "host/packcheck/watch/elf_symbols.hpp"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>

namespace packcheck {

namespace {

// A file's bytes, read with care: every offset in it may be wrong.
struct Image {
  std::vector<char> bytes;

  // `count` records from `offset` on; none when they do not all lie in the file.
  template <class Record>
  std::vector<Record> records(std::uint64_t offset, std::uint64_t count) const {
    if (offset > bytes.size() || count > (bytes.size() - offset) / sizeof(Record)) return {};
    std::vector<Record> found(static_cast<std::size_t>(count));
    std::memcpy(found.data(), bytes.data() + offset, found.size() * sizeof(Record));
    return found;
  }
};

bool is_shown(const ElfW(Sym) & symbol) {
  const auto binding = ELF64_ST_BIND(symbol.st_info);
  const auto visibility = ELF64_ST_VISIBILITY(symbol.st_other);
  return symbol.st_shndx != SHN_UNDEF && binding != STB_LOCAL &&
         (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

}  // namespace

std::vector<Symbol> shown_symbols(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return {};
  Image image{std::vector<char>(static_cast<std::size_t>(file.tellg()))};
  file.seekg(0).read(image.bytes.data(), static_cast<std::streamsize>(image.bytes.size()));
  const auto headers = image.records<ElfW(Ehdr)>(0, 1);
  if (headers.empty() || std::memcmp(headers[0].e_ident, ELFMAG, SELFMAG) != 0) return {};
  const auto sections = image.records<ElfW(Shdr)>(headers[0].e_shoff, headers[0].e_shnum);
  std::vector<Symbol> shown;
  for (const ElfW(Shdr) & section : sections) {
    if (section.sh_type != SHT_DYNSYM || section.sh_link >= sections.size()) continue;
    const ElfW(Shdr)& names = sections[section.sh_link];
    auto text = image.records<char>(names.sh_offset, names.sh_size);
    text.push_back('\0');
    const std::uint64_t count = section.sh_size / sizeof(ElfW(Sym));
    for (const ElfW(Sym) & symbol : image.records<ElfW(Sym)>(section.sh_offset, count))
      if (is_shown(symbol) && symbol.st_name < text.size())
        shown.push_back({&text[symbol.st_name], symbol.st_size});
  }
  return shown;
}

}  // namespace packcheck
