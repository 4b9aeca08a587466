// Waiting for files to be saved.
#pragma once

#include <csignal>
#include <map>
#include <set>
#include <string>

namespace worksheet {

// Sees when what stands under a name is another file, or the same one with another content. Editors
// do either.
class FileWatch {
 public:
  explicit FileWatch(const std::string& worksheet)
      : worksheet_(worksheet), files_{{worksheet, {look(worksheet)}}} {}

  // Watches the worksheet alone.
  void begin();
  // Watches one more file, at most a thousand: from what it is when this is called first. A file
  // that is not there is saved when it comes.
  void also(const std::string& path);
  // Does not watch what the worksheet writes itself.
  void leave_out(const std::set<std::string>& paths);

  // Waits until a file was saved since it was first watched or since the last wait. False when the
  // flag is set before that.
  bool wait(const volatile std::sig_atomic_t& stop);
  // The path of the file that was saved.
  const std::string& saved() const { return saved_; }

 private:
  struct State {
    bool exists = false;
    unsigned long long device = 0, file = 0, size = 0;
    long long seconds = 0, nanoseconds = 0;
    bool operator==(const State&) const = default;
  };
  static State look(const std::string& path);  // watch_posix.cpp, watch_windows.cpp.

  struct File {
    State seen;
    State last = seen;  // When it was looked at last.
    bool was_saved(const State& now);
  };
  std::string worksheet_;
  std::map<std::string, File> files_;
  std::string saved_;
};

}  // namespace worksheet
