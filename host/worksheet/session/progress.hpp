// A sign of life on the terminal while a statement takes long.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace worksheet {

// Once `delay` has passed, shows the statement and its time in seconds in one line that goes when
// the object does. A descriptor below 0 wants nothing shown.
class Progress {
 public:
  Progress(int descriptor, std::chrono::milliseconds delay, std::string_view statement);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void watch(std::chrono::milliseconds delay);
  void show(const std::string& line);

  int descriptor_;
  std::string statement_;
  std::size_t shown_ = 0;  // Characters of the line on the terminal.
  std::mutex mutex_;
  std::condition_variable changed_;
  bool done_ = false;
  std::thread watcher_;
};

}  // namespace worksheet
