// Waiting for a file to be saved.
#pragma once

#include <csignal>
#include <string>

namespace worksheet {

// Sees when what stands under a name is another file, or the same one with another content. Editors
// do either.
class FileWatch {
 public:
  explicit FileWatch(std::string path) : path_(std::move(path)), seen_(look()) {}

  // Waits until the file was saved since this was made or since the last wait. False when the flag
  // is set before that.
  bool wait(const volatile std::sig_atomic_t& stop);

 private:
  struct State {
    bool exists = false;
    unsigned long long device = 0, file = 0, size = 0;
    long long seconds = 0, nanoseconds = 0;
    bool operator==(const State&) const = default;
  };
  State look() const;  // watch_posix.cpp, watch_windows.cpp.

  std::string path_;
  State seen_;
};

}  // namespace worksheet
