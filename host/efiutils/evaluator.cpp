#include "host/efiutils/evaluator.hpp"

namespace efi {

namespace {

// Room for the frames of any sensible nesting, so that opening one needs no memory.
constexpr std::size_t kUsualWords = 4096;

}  // namespace

Evaluator::Evaluator() {
  frames_.reserve(kUsualWords);
  words_.reserve(kUsualWords);
}

void Evaluator::apply(Anyval* function, const sCons* arguments, Anyval** result) {
  *result = apply_function ? apply_function(function, arguments) : nullptr;
}

void Evaluator::push_root(Anyval** root) {
  frames_.push_back(words_.size());
  words_.push_back(root);
}

void Evaluator::push_local(Anyval** local) {
  if (frames_.empty())
    complaints.emplace_back("pushed a local outside of any evaluator frame");
  else
    words_.push_back(local);
}

void Evaluator::pop_frame() {
  if (frames_.empty()) {
    complaints.emplace_back("popped an evaluator frame that was not open");
    return;
  }
  words_.resize(frames_.back());
  frames_.pop_back();
}

void Evaluator::unwind(std::size_t depth) {
  while (frames_.size() > depth) {
    words_.resize(frames_.back());
    frames_.pop_back();
  }
}

}  // namespace efi
