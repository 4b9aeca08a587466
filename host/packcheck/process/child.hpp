// A process of this program for one piece of work on a pack: child_posix.cpp, child_windows.cpp.
#pragma once

#include <optional>
#include <string>

#include "host/packcheck/process/channel.hpp"

namespace packcheck {

// Does the task that the bytes say, and tells of it through the channel.
using Perform = void (*)(const std::string& task, Channel& channel);

class Child {
 public:
  // Lets `perform` do the work there. Throws std::exception where no process can be had.
  Child(Channel& channel, const std::string& task, Perform perform);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  bool has_ended();
  void kill();
  double processor_seconds() const;

  // Once it has ended: whether the system ended it, and its status or the system's reason.
  bool crashed() const { return crashed_; }
  int status() const { return status_; }

 private:
  struct Process;
  Process* process_;
  bool crashed_ = false;
  int status_ = 0;
};

// The exit status of a process whose work is done; an unlikely one for a pack that calls exit.
inline constexpr int kDone = 117;

// The system's reason in words: "Segmentation fault".
std::string crash_words(int status);

// In `main`: the status of a program that was begun as such a process, once it has done its work.
std::optional<int> run_as_child(int argc, char** argv, Perform perform);

// What of the checks is not done on this system, in words; empty if nothing.
extern const char* const kLeftOut;

}  // namespace packcheck
