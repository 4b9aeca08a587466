// How far the results of a statement can be trusted: what the audit of its calls found.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "host/audit/audit.hpp"
#include "host/worksheet/values/source.hpp"

namespace worksheet {

// The findings at one place: the worst of them.
struct Trust {
  audit::Finding finding;
  const Source* source;  // Where the call stands.
  Span span;
  std::size_t times = 1;     // The calls that were checked there,
  std::size_t warnings = 0;  // and how many of them with a warning.
};

// Collects the findings of a statement. A place in a loop has one entry, however often it is
// passed.
class TrustNotes {
 public:
  audit::Effort effort = audit::Effort::on;

  // Whether calls are checked, and whatever it costs.
  bool is_on() const { return effort != audit::Effort::off || asked_ > 0; }
  bool is_full() const { return effort == audit::Effort::full || asked_ > 0; }

  void add(const audit::Finding& finding, const Source* source, Span span);
  // Those of the statement, which is over.
  std::vector<Trust> take();
  void clear();

  // While one lives, its findings are for who asked, not for the reader.
  class Question {
   public:
    explicit Question(TrustNotes& notes);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    bool was_checked() const { return checked_; }
    // The least digits of what was checked; nothing where none are known.
    std::optional<double> digits() const { return digits_; }

   private:
    friend class TrustNotes;
    TrustNotes& notes_;
    Question* outer_;
    bool checked_ = false;
    std::optional<double> digits_;
  };

  // The one that lives; null if none does.
  const Question* question() const { return question_; }

 private:
  using Key = std::tuple<const Source*, std::size_t, std::size_t, std::string>;

  std::vector<Trust> notes_;          // In the order in which their places were first met,
  std::map<Key, std::size_t> known_;  // and where each stands.
  Question* question_ = nullptr;
  int asked_ = 0;
};

}  // namespace worksheet
