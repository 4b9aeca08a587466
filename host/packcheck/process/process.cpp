#include "host/packcheck/process/process.hpp"

#include <fmt/format.h>

namespace packcheck {

namespace {

// How often the watcher looks at the clock.
constexpr int kTickMilliseconds = 20;

// A call that sleeps uses no processor time: it may take this much longer by the clock. A machine
// with other work to do gives a process less than the clock says.
constexpr double kClockAllowance = 10.0;

// Whether the call that a process is in has lasted too long.
class Watchdog {
 public:
  Watchdog(const Child& child, const Progress* progress, double limit)
      : child_(child), progress_(progress), limit_(limit) {}

  bool expired() {
    const double used = child_.processor_seconds();
    const double now = seconds();
    if (!progress_->inside || progress_->beat != beat_) {
      beat_ = progress_->beat;
      used_ = used;
      since_ = now;
    }
    return used - used_ > limit_ || now - since_ > kClockAllowance * limit_;
  }

 private:
  static double seconds() {
    return std::chrono::duration<double>(TimeLimits::Clock::now().time_since_epoch()).count();
  }

  const Child& child_;
  const Progress* progress_;
  const double limit_;
  std::uint64_t beat_ = 0;
  double used_ = child_.processor_seconds();
  double since_ = seconds();
};

// Takes the lines that come through the channel apart.
class LineReader {
 public:
  LineReader(const Channel& channel, const std::function<void(const Message&)>& receive)
      : channel_(channel), receive_(receive) {}

  // Takes what has come so far; not for ever, should more come all the time.
  void read_all() {
    constexpr int kMostPieces = 256;
    for (int k = 0; k < kMostPieces && channel_.read_some(text_); ++k)
      for (std::size_t end; (end = text_.find('\n')) != std::string::npos; text_.erase(0, end + 1))
        if (const auto message = message_of(text_.substr(0, end))) receive_(*message);
  }

 private:
  const Channel& channel_;
  const std::function<void(const Message&)>& receive_;
  std::string text_;
};

std::string place_words(const Progress& progress) {
  if (!progress.faulted) return {};
  const heap::Place& place = progress.place;
  switch (place.where) {
    case heap::Place::behind:
      return fmt::format("{} bytes behind a block of {} bytes", place.distance, place.size);
    case heap::Place::before:
      return fmt::format("{} bytes in front of a block of {} bytes", place.distance, place.size);
    case heap::Place::freed:
      return fmt::format("byte {} of a block of {} bytes that was freed", place.distance,
                         place.size);
    default:
      return {};
  }
}

// `killed` tells why the process was killed; done: it was not.
End end_of(const Child& child, decltype(End::how) killed, const Progress& progress) {
  End end = {killed, 0, progress.call, progress.doing, progress.inside, place_words(progress)};
  if (killed != End::done) return end;
  end.status = child.status();
  if (child.crashed())
    end.how = End::crashed;
  else if (child.status() != kDone)
    end.how = End::exited;
  return end;
}

}  // namespace

End run_in_process(const std::string& task, Perform perform,
                   const std::function<void(const Message&)>& receive, const TimeLimits& limits) {
  Channel channel;
  Child child(channel, task, perform);
  LineReader reader(channel, receive);
  Watchdog watchdog(child, channel.progress, limits.call);
  auto killed = End::done;
  // A process that the pack left behind may hold the pipe open: the child's end is the end.
  while (!child.has_ended()) {
    channel.wait(kTickMilliseconds);
    reader.read_all();
    if (killed != End::done) continue;
    if (TimeLimits::Clock::now() >= limits.end)
      killed = End::late;
    else if (watchdog.expired())
      killed = End::hung;
    if (killed != End::done) child.kill();
  }
  reader.read_all();
  return end_of(child, killed, *channel.progress);
}

}  // namespace packcheck
