#include "host/worksheet/help/reference.hpp"

#include <iterator>

#include "host/worksheet/engine/machine.hpp"

namespace worksheet {

std::vector<ReferenceEntry> whole_reference(const Machine& machine) {
  std::vector<ReferenceEntry> entries;
  auto add = [&](std::vector<ReferenceEntry> more) {
    std::move(more.begin(), more.end(), std::back_inserter(entries));
  };
  for (const auto& pack : machine.packs) add(pack_reference(*pack));
  add(read_reference(kLanguageReference));
  return entries;
}

}  // namespace worksheet
