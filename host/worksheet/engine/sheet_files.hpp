// The files that a worksheet reads and writes: where their names lead, and how far they may.
// Whatever in the language opens a file by a name that the worksheet gives does it here.
#pragma once

#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/efiutils/system/files.hpp"

namespace worksheet {

// Why a file cannot be had, in words that begin with its path.
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class SheetFiles {
 public:
  // Where names begin that are not absolute: the directory of the worksheet.
  std::string directory = ".";

  // From now on the worksheet gets only at files below `root`, links resolved; names begin at
  // `root` while `directory` lies elsewhere. Throws FileError when there is no such directory.
  void confine(const std::string& root);

  // The path that a name stands for, as messages show it.
  std::string path(const std::string& name) const;

  // Whether the worksheet may see what lies in a directory.
  bool may_list(const std::string& name) const;

  // Opens a file for reading: no directory, pipe or device. Throws FileError.
  efi::Descriptor open(const std::string& name) const;
  // The content of a file. Throws FileError, or std::bad_alloc for more than there is memory.
  std::string read(const std::string& name) const;
  // Called with the path of each file that is to be read, before it is looked for.
  std::function<void(const std::string&)> on_read;

  // The file that is to stand there; its errors are for fail_to_write. Throws FileError for a name
  // that leads nowhere.
  efi::NewFile create(const std::string& name);
  // Throws the FileError of a file that could not be written, and notes that output was lost.
  [[noreturn]] void fail_to_write(const std::string& name, int error);
  // Writes the content to a new file that takes the place of what stands there. Throws FileError:
  // nothing has changed.
  void write(const std::string& name, std::string_view content);
  // The paths of the files that were to be written.
  const std::set<std::string>& written() const { return written_; }
  // Whether a file could not be written, which the program's status tells.
  bool output_lost() const { return output_lost_; }

 private:
  std::string below_root(const std::string& name) const;
  efi::Descriptor open_below(const std::string& relative, efi::Opened what) const;

  efi::Descriptor root_;   // None: nothing is confined.
  std::string root_path_;  // Without links.
  std::set<std::string> written_;
  bool output_lost_ = false;
};

}  // namespace worksheet
