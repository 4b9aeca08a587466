#include "host/worksheet/program/watch.hpp"

#include <sys/stat.h>

namespace worksheet {

namespace {

// It is looked at so often: on every file system, those of a network too.
constexpr timespec kPause = {0, 100'000'000};

}  // namespace

FileWatch::State FileWatch::look() const {
  struct stat found = {};
  if (stat(path_.c_str(), &found) != 0) return {};
  return {true,
          static_cast<unsigned long long>(found.st_dev),
          static_cast<unsigned long long>(found.st_ino),
          static_cast<unsigned long long>(found.st_size),
          found.st_mtim.tv_sec,
          found.st_mtim.tv_nsec};
}

bool FileWatch::wait(const volatile std::sig_atomic_t& stop) {
  for (State last = look(); !stop; nanosleep(&kPause, nullptr)) {
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
