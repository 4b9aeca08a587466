#include "host/worksheet/session/progress.hpp"

#include <algorithm>
#include <system_error>

#include "fmt/format.h"
#include "host/efiutils/system/files.hpp"
#include "host/text/text.hpp"
#include "host/worksheet/session/signals_held.hpp"

namespace worksheet {

namespace {

constexpr std::size_t kMostCharacters = 60;  // Of a statement: the line must not wrap.

std::string beginning(std::string_view statement) {
  std::vector<std::string> line = characters(statement.substr(0, statement.find('\n')));
  const bool cut = line.size() > kMostCharacters;
  line.resize(std::min(line.size(), kMostCharacters));
  return joined(line, "") + (cut ? "..." : "");
}

}  // namespace

Progress::Progress(int descriptor, std::chrono::milliseconds delay, std::string_view statement)
    : descriptor_(descriptor) {
  if (descriptor < 0) return;
  statement_ = beginning(statement);
  const SignalsHeld held;
  try {
    watcher_ = std::thread([this, delay] { watch(delay); });
  } catch (const std::system_error&) {
    // Then there is nothing to be seen.
  }
}

Progress::~Progress() {
  if (!watcher_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    done_ = true;
  }
  changed_.notify_one();
  watcher_.join();
  if (shown_ > 0) show("");
}

void Progress::watch(std::chrono::milliseconds delay) {
  const auto start = std::chrono::steady_clock::now();
  auto next = start + delay;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_until(lock, next, [this] { return done_; })) {
    const auto passed = std::chrono::duration_cast<std::chrono::seconds>(next - start);
    show(fmt::format("  {} s: {}", passed.count(), statement_));
    next += std::chrono::seconds(1);
  }
}

// Puts the line in the place of the one before it, without any control sequence of a terminal.
void Progress::show(const std::string& line) {
  const std::size_t length = character_count(line);
  std::string text = "\r" + line + std::string(shown_ - std::min(shown_, length), ' ');
  if (line.empty()) text += '\r';
  shown_ = length;
  efi::write_all(descriptor_, text);
}

}  // namespace worksheet
