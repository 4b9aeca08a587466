#include "host/worksheet/program/system/watch.hpp"

#include <chrono>
#include <thread>

namespace worksheet {

namespace {

// They are looked at so often: on every file system, those of a network too.
constexpr std::chrono::milliseconds kPause(100);

}  // namespace

bool FileWatch::File::was_saved() {
  const State now = look(path);
  // Not while it is being written, and not where it is gone for a moment.
  const bool saved = now.exists && now == last && !(now == seen);
  last = now;
  if (saved) seen = now;
  return saved;
}

void FileWatch::also(const std::set<std::string>& paths) {
  files_.resize(1);
  for (const std::string& path : paths)
    if (path != files_.front().path) files_.push_back({path, look(path)});
}

bool FileWatch::wait(const volatile std::sig_atomic_t& stop) {
  for (; !stop; std::this_thread::sleep_for(kPause))
    for (saved_ = 0; saved_ < files_.size(); ++saved_)
      if (files_[saved_].was_saved()) return true;
  saved_ = 0;
  return false;
}

}  // namespace worksheet
