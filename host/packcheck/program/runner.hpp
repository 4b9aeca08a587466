// Running checks, each in a process of its own, and keeping what they find.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/finding.hpp"
#include "host/packcheck/process/process.hpp"

namespace packcheck {

class Runner {
 public:
  explicit Runner(const Options& options) : options_(options) {}

  // Begins a check: what it runs from now on may take the options' time.
  void begin_check();

  // Loads the pack and finds its functions, and for each of them arguments for which it gives a
  // value. Throws worksheet::PackError when the pack cannot be loaded.
  void survey();
  const std::vector<Target>& targets() const { return targets_; }

  // Runs a check for the pack as a whole, or for one function.
  void run(const Check& check, const Target* target);

  const std::vector<Finding>& findings() const { return findings_; }
  int calls_made() const { return calls_made_; }

 private:
  using Receive = std::function<void(const Message&)>;

  // The functions that have not ended any process.
  std::vector<Target> harmless() const;

  bool is_left_out(const std::string& check, const Target& target);

  // Runs the work from its first call on, and again behind each call that ended the process, a few
  // times. The ends that came too early.
  std::vector<End> run_work(const std::string& check, const Target* target, const std::string& work,
                            const Receive& receive);
  void add_end(const std::string& check, const Target* target, const End& end, int call);
  void add(const std::string& check, Finding finding);

  const Options& options_;
  std::vector<Target> targets_;
  std::vector<Finding> findings_;
  int calls_made_ = 0;
  TimeLimits::Clock::time_point end_of_check_;

  // By function: the calls that ended a process, which are left out from then on. A function that
  // ended too many, or for which there was no time, is given up.
  std::map<std::string, std::set<int>> lethal_;
  std::set<std::string> given_up_;
  // The pack itself: a process that loaded it came to its end.
  bool is_given_up_ = false;
};

}  // namespace packcheck
