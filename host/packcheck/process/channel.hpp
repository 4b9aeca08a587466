// From the process of a check to the one that watches it: findings by a pipe, and what it is doing
// by a page that both see, which outlives a crash. channel_posix.cpp, channel_windows.cpp.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/efiutils/system/files.hpp"
#include "host/packcheck/memory/heap.hpp"
#include "host/packcheck/process/message.hpp"

namespace packcheck {

// The shared page.
struct Progress {
  int call;            // The call in hand; -1 outside of calls.
  std::uint64_t beat;  // Changes with every entry into the pack.
  bool inside;         // Whether the pack is running.
  char doing[1024];    // The call, or the step, in words.
  bool faulted;        // Whether the processor refused an address,
  heap::Place place;   // and where it lies.
};

class Channel {
 public:
  Channel();
  // The writer's, where a process begins anew with what its parent has opened.
  Channel(void* page_handle, void* pipe_handle);
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  // --- In the process of the check ---

  // Leaves the reading end, and takes the pipe out of the way of a pack that closes or writes low
  // descriptors.
  void become_writer();
  void send(const Message& message) const;

  // Says what is being done from here on.
  void begin(int call, std::string_view doing);
  // Around everything that runs code of the pack.
  void enter() {
    ++progress->beat;
    progress->inside = true;
  }
  void leave() { progress->inside = false; }

  // --- In the watching process ---

  void become_reader();
  // Waits until there is something to read, or as long as that.
  void wait(int milliseconds) const;
  // Adds what has come so far, or a good part of it; false when nothing has.
  bool read_some(std::string& text) const;

  // For the process that begins anew.
  void* page_handle() const { return page_handle_; }
  int writing_descriptor() const { return writing_.get(); }

  Progress* progress;

 private:
  void* page_handle_ = nullptr;
  efi::Descriptor reading_, writing_;
};

}  // namespace packcheck
