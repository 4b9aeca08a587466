#include "host/packcheck/program/runner.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "host/packcheck/program/task.hpp"

namespace packcheck {

namespace {

// How many calls of one function may end the process of one check.
constexpr int kMostDeaths = 3;

// The check under which the survey's crashes are reported: it makes sure of them.
constexpr const char* kSurvives = "survives";

// The rule of what was given up because the check had had its time.
constexpr const char* kTime = "time";

std::string end_words(const End& end, const Options& options) {
  std::string words;
  switch (end.how) {
    case End::hung:
      words = fmt::format("did not return within {} s", options.time_limit);
      break;
    case End::late:
      return fmt::format("was not done when the check had had its {} s", options.check_limit);
    case End::exited:
      words = fmt::format("ended the process with status {}", end.status);
      break;
    default:
      words = fmt::format("crashed: {}", crash_words(end.status));
  }
  if (!end.detail.empty()) words += ", " + end.detail;
  if (!end.inside) words += ", after the call had returned";
  if (end.call < 0 && !end.doing.empty()) words += ", " + end.doing;
  return words;
}

const char* end_rule(const End& end) {
  switch (end.how) {
    case End::hung:
      return "hang";
    case End::late:
      return kTime;
    case End::exited:
      return "exit";
    default:
      return "crash";
  }
}

}  // namespace

void Runner::add(const std::string& check, Finding finding) {
  finding.check = check;
  const auto same = std::find_if(findings_.begin(), findings_.end(), [&](const Finding& f) {
    return f.check == finding.check && f.function == finding.function && f.rule == finding.rule;
  });
  if (same == findings_.end()) {
    findings_.push_back(std::move(finding));
    return;
  }
  // A call of the list can be made again; one of the survey cannot.
  finding.times += same->times;
  if (same->call < 0 && finding.call >= 0)
    *same = std::move(finding);
  else
    same->times = finding.times;
}

void Runner::add_end(const std::string& check, const Target* target, const End& end, int call) {
  add(check, {.function = target == nullptr ? "" : target->function.name,
              .rule = end_rule(end),
              .message = end_words(end, options_),
              .arguments = end.call < 0 ? "" : end.doing,
              .call = call});
}

std::vector<End> Runner::run_work(const std::string& check, const Target* target,
                                  const std::string& work, const Receive& receive) {
  Task task = {work, options_, {}, {}, {}, 0};
  if (target != nullptr) {
    task.at_hand.push_back(*target);
    task.skipped = lethal_[target->function.name];
  } else {
    task.targets = harmless();
  }
  std::vector<End> deaths;
  while (deaths.size() < kMostDeaths) {
    const End end = run_in_process(bytes_of(task), perform,
                                   [&](const Message& message) {
                                     if (message.kind == Message::found)
                                       add(check, message.finding);
                                     if (message.kind == Message::calls)
                                       calls_made_ += message.number;
                                     receive(message);
                                   },
                                   {options_.time_limit, end_of_check_});
    if (end.how == End::done) break;
    deaths.push_back(end);
    if (end.call < 0 || end.how == End::late) break;
    task.first_call = end.call + 1;
  }
  return deaths;
}

std::vector<Target> Runner::harmless() const {
  std::vector<Target> found;
  for (const Target& target : targets_)
    if (const auto calls = lethal_.find(target.function.name);
        calls == lethal_.end() || calls->second.empty())
      found.push_back(target);
  return found;
}

void Runner::begin_check() {
  end_of_check_ =
      TimeLimits::Clock::now() + std::chrono::duration_cast<TimeLimits::Clock::duration>(
                                     std::chrono::duration<double>(options_.check_limit));
}

// Whether the check has had its time; then the function is left out, which is said.
bool Runner::is_left_out(const std::string& check, const Target& target) {
  if (TimeLimits::Clock::now() < end_of_check_) return false;
  add(check, {.rule = kTime,
              .message = fmt::format("a function is left out: the check has had its {} s",
                                     options_.check_limit)});
  if (check == kSurvives) given_up_.insert(target.function.name);
  return true;
}

void Runner::survey() {
  begin_check();
  std::string failure;
  const auto load = [&](const Message& message) {
    if (message.kind == Message::failed) failure = message.text;
    if (message.kind == Message::callable) targets_.push_back({message.function, {}});
  };
  for (const End& end : run_work(kSurvives, nullptr, kListFunctions, load)) {
    add_end(kSurvives, nullptr, end, -1);
    is_given_up_ = true;
  }
  if (!failure.empty()) throw worksheet::PackError(failure);
  for (Target& target : targets_) {
    target.base = fallback_base(target.function);
    if (is_left_out(kSurvives, target)) continue;
    const auto find = [&](const Message& message) {
      if (message.kind != Message::taken) return;
      target.base = first_attempts(target.function)[static_cast<std::size_t>(message.number)];
      target.is_taken = true;
    };
    // The call of such an end is none of the list's.
    for (const End& end : run_work(kSurvives, &target, kFindBase, find))
      add_end(kSurvives, &target, end, -1);
  }
}

void Runner::run(const Check& check, const Target* target) {
  if (is_given_up_) return;
  if (target != nullptr && given_up_.contains(target->function.name)) return;
  if (target != nullptr && is_left_out(check.name, *target)) return;
  const auto failed = [&](const Message& message) {
    if (message.kind == Message::failed)
      add(check.name, {.rule = "unchecked", .message = message.text});
  };
  const std::vector<End> deaths = run_work(check.name, target, check.name, failed);
  for (const End& end : deaths) {
    add_end(check.name, target, end, end.call);
    if (target != nullptr) lethal_[target->function.name].insert(end.call);
  }
  const bool ended_too_many =
      deaths.size() == kMostDeaths || (!deaths.empty() && deaths.back().how == End::late);
  if (target != nullptr && check.name == std::string(kSurvives) && ended_too_many)
    given_up_.insert(target->function.name);
}

}  // namespace packcheck
