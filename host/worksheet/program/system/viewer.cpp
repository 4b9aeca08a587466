#include "host/worksheet/program/system/viewer.hpp"

#include <filesystem>

#include "fmt/format.h"
#include "host/efiutils/system/paths.hpp"

namespace worksheet {

Viewer::~Viewer() {
  std::error_code ignored;
  for (const std::string& path : made_) std::filesystem::remove(efi::path_of(path), ignored);
}

void Viewer::show(const std::vector<Drawn>& pictures, const SheetFiles& files, std::ostream& out) {
  for (const Drawn& drawn : pictures) {
    std::string path;
    if (!drawn.file.empty()) {
      std::error_code ignored;
      path = efi::utf8_of(std::filesystem::absolute(efi::path_of(files.path(drawn.file)), ignored));
    } else if (path = picture_file(drawn.svg); !path.empty()) {
      made_.push_back(path);
    }
    if (path.empty()) continue;
    if (!open_in_viewer(path)) out << fmt::format("  in {}\n", path);
  }
}

}  // namespace worksheet
