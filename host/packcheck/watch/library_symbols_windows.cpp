#include <windows.h>

#include <algorithm>
#include <cstring>

#include "host/packcheck/watch/file_image.hpp"
#include "host/packcheck/watch/library_symbols.hpp"

namespace packcheck {

namespace {

// Where in the file an address of the loaded library stands; beyond its end where that is nowhere.
std::uint64_t offset_of(const std::vector<IMAGE_SECTION_HEADER>& sections, DWORD address) {
  for (const IMAGE_SECTION_HEADER& section : sections)
    if (address >= section.VirtualAddress &&
        address - section.VirtualAddress < section.SizeOfRawData)
      return address - section.VirtualAddress + std::uint64_t{section.PointerToRawData};
  return ~std::uint64_t{0};
}

}  // namespace

std::vector<Symbol> shown_symbols(const std::string& path) {
  const FileImage image(path);
  const auto start = image.records<IMAGE_DOS_HEADER>(0, 1);
  if (start.empty() || start[0].e_magic != IMAGE_DOS_SIGNATURE) return {};
  const auto at = static_cast<std::uint64_t>(start[0].e_lfanew);
  const auto headers = image.records<IMAGE_NT_HEADERS>(at, 1);
  if (headers.empty() || headers[0].Signature != IMAGE_NT_SIGNATURE ||
      headers[0].OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR_MAGIC)
    return {};
  const auto sections = image.records<IMAGE_SECTION_HEADER>(
      at + offsetof(IMAGE_NT_HEADERS, OptionalHeader) + headers[0].FileHeader.SizeOfOptionalHeader,
      headers[0].FileHeader.NumberOfSections);
  const DWORD table =
      headers[0].OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
  const auto exports = image.records<IMAGE_EXPORT_DIRECTORY>(offset_of(sections, table), 1);
  if (exports.empty()) return {};
  std::vector<Symbol> shown;
  for (const DWORD name : image.records<DWORD>(offset_of(sections, exports[0].AddressOfNames),
                                               exports[0].NumberOfNames))
    shown.push_back({image.text(offset_of(sections, name)), 0});
  return shown;
}

// No object of a library reaches beyond its region.
std::size_t object_size(const void* address) {
  MEMORY_BASIC_INFORMATION region;
  if (VirtualQuery(address, &region, sizeof region) == 0 || region.State != MEM_COMMIT) return 0;
  const auto offset = static_cast<std::size_t>(static_cast<const char*>(address) -
                                               static_cast<const char*>(region.BaseAddress));
  return region.RegionSize - offset;
}

}  // namespace packcheck
