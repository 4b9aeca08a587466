#include "host/worksheet/program/system/watch.hpp"

#include <chrono>
#include <thread>

namespace worksheet {

namespace {

// They are looked at so often: on every file system, those of a network too.
constexpr std::chrono::milliseconds kPause(100);

constexpr std::size_t kMostFiles = 1001;

}  // namespace

void FileWatch::begin() {
  std::erase_if(files_, [&](const auto& file) { return file.first != worksheet_; });
}

void FileWatch::also(const std::string& path) {
  if (files_.size() < kMostFiles && !files_.contains(path)) files_[path] = {look(path)};
}

void FileWatch::leave_out(const std::set<std::string>& paths) {
  std::erase_if(files_, [&](const auto& file) {
    return file.first != worksheet_ && paths.contains(file.first);
  });
}

bool FileWatch::File::was_saved(const State& now) {
  // Not while it is being written, and not where it is gone for a moment.
  const bool saved = now.exists && now == last && !(now == seen);
  last = now;
  if (saved) seen = now;
  return saved;
}

bool FileWatch::wait(const volatile std::sig_atomic_t& stop) {
  for (; !stop; std::this_thread::sleep_for(kPause))
    for (auto& [path, file] : files_)
      if (file.was_saved(look(path))) {
        saved_ = path;
        return true;
      }
  return false;
}

}  // namespace worksheet
