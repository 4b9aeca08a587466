// Pictures of statements at the prompt, shown in the viewer of the desktop.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/worksheet/engine/sheet_files.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

class Viewer {
 public:
  Viewer() = default;
  // Removes the files that it made.
  ~Viewer();
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  // Opens the pictures of a statement, those that go to no file by way of one; where there is no
  // desktop it says where they are.
  void show(const std::vector<Drawn>& pictures, const SheetFiles& files, std::ostream& out);

 private:
  std::vector<std::string> made_;
};

}  // namespace worksheet
