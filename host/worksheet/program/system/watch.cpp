#include "host/worksheet/program/system/watch.hpp"

#include <chrono>
#include <thread>

namespace worksheet {

namespace {

// It is looked at so often: on every file system, those of a network too.
constexpr std::chrono::milliseconds kPause(100);

}  // namespace

bool FileWatch::wait(const volatile std::sig_atomic_t& stop) {
  for (State last = look(); !stop; std::this_thread::sleep_for(kPause)) {
    const State now = look();
    // Not while it is being written, and not where it is gone for a moment.
    if (now.exists && now == last && !(now == seen_)) {
      seen_ = now;
      return true;
    }
    last = now;
  }
  return false;
}

}  // namespace worksheet
