// Pictures of statements at the prompt, shown in the viewer of the desktop.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/worksheet/engine/sheet_files.hpp"
#include "host/worksheet/session/outcome.hpp"

namespace worksheet {

// --- The platform's: viewer_posix.cpp, viewer_windows.cpp ---

// A new file for the picture; its path, or nothing where none can be made.
std::string picture_file(const std::string& svg);
// Opens the file with the desktop's viewer; false where there is none.
bool open_in_viewer(const std::string& path);

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
