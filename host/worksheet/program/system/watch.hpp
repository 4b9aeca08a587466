// Waiting for files to be saved.
#pragma once

#include <csignal>
#include <set>
#include <string>
#include <vector>

namespace worksheet {

// Sees when what stands under a name is another file, or the same one with another content. Editors
// do either.
class FileWatch {
 public:
  explicit FileWatch(const std::string& path) : files_{{path, look(path)}} {}

  // Watches these as well, in place of others that were named before, from what they are now on. A
  // file that is not there is saved when it comes.
  void also(const std::set<std::string>& paths);

  // Waits until a file was saved since it was first watched or since the last wait. False when the
  // flag is set before that.
  bool wait(const volatile std::sig_atomic_t& stop);
  // The path of the file that was saved.
  const std::string& saved() const { return files_[saved_].path; }

 private:
  struct State {
    bool exists = false;
    unsigned long long device = 0, file = 0, size = 0;
    long long seconds = 0, nanoseconds = 0;
    bool operator==(const State&) const = default;
  };
  static State look(const std::string& path);  // watch_posix.cpp, watch_windows.cpp.

  struct File {
    std::string path;
    State seen;
    State last = seen;  // When it was looked at last.
    bool was_saved();
  };
  std::vector<File> files_;
  std::size_t saved_ = 0;
};

}  // namespace worksheet
