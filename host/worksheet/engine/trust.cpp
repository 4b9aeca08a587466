#include "host/worksheet/engine/trust.hpp"

#include <algorithm>
#include <utility>

#include "fmt/format.h"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

// Whether the first finding is worse news than the second.
bool is_worse(const audit::Finding& a, const audit::Finding& b) {
  if (a.level != b.level) return a.level > b.level;
  return a.digits.value_or(audit::kMostDigits) < b.digits.value_or(audit::kMostDigits);
}

}  // namespace

void TrustNotes::add(const audit::Finding& finding, const Source* source, Span span) {
  if (question_ != nullptr) {
    question_->checked_ = true;
    if (finding.digits)
      question_->digits_ = std::min(*finding.digits, question_->digits_.value_or(*finding.digits));
    return;
  }
  const std::size_t warned = finding.level == audit::Level::warning ? 1 : 0;
  const auto [place, is_new] =
      known_.try_emplace({source, span.begin, span.end, finding.function}, notes_.size());
  if (is_new) {
    notes_.push_back({finding, source, span, 1, warned});
    return;
  }
  Trust& known = notes_[place->second];
  ++known.times;
  known.warnings += warned;
  if (is_worse(finding, known.finding)) known.finding = finding;
}

void TrustNotes::clear() {
  notes_.clear();
  known_.clear();
}

std::vector<Trust> TrustNotes::take() {
  std::vector<Trust> notes = std::move(notes_);
  clear();
  for (Trust& note : notes)
    if (note.times > 1 && note.warnings > 0)
      note.finding.text += fmt::format(" ({} of {})", note.warnings,
                                       counted(static_cast<std::int64_t>(note.times), "call"));
  return notes;
}

TrustNotes::Question::Question(TrustNotes& notes)
    : notes_(notes), outer_(std::exchange(notes.question_, this)) {
  ++notes_.asked_;
}

TrustNotes::Question::~Question() {
  notes_.question_ = outer_;
  --notes_.asked_;
}

}  // namespace worksheet
