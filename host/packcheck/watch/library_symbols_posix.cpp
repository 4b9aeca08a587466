#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstring>

#include "host/packcheck/watch/file_image.hpp"
#include "host/packcheck/watch/library_symbols.hpp"

namespace packcheck {

namespace {

bool is_shown(const ElfW(Sym) & symbol) {
  const auto binding = ELF64_ST_BIND(symbol.st_info);
  const auto visibility = ELF64_ST_VISIBILITY(symbol.st_other);
  return symbol.st_shndx != SHN_UNDEF && binding != STB_LOCAL &&
         (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

}  // namespace

std::vector<Symbol> shown_symbols(const std::string& path) {
  const FileImage image(path);
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

std::size_t object_size(const void* address) {
  Dl_info info;
  void* found = nullptr;
  if (dladdr1(address, &info, &found, RTLD_DL_SYMENT) == 0 || found == nullptr) return 0;
  return static_cast<std::size_t>(static_cast<const ElfW(Sym)*>(found)->st_size);
}

}  // namespace packcheck
