// The evaluator that packs call back into: the bracket around a pack's work as a checked stack, and
// the application of function values, which the application supplies.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "pack/host_interface.hpp"

namespace efi {

#pragma GCC visibility push(default)

// One for each context. It owns no value.
class Evaluator final : public EfiEvaluator {
 public:
  Evaluator();

  // The value, maybe an error value, of a function value applied to a list of values. Exceptions
  // pass through the pack: they end its call as the pack's frame has it.
  std::function<Anyval*(Anyval* function, const sCons* arguments)> apply_function;

  // The number of open frames.
  std::size_t depth() const { return frames_.size(); }

  // Closes the frames beyond `depth`, as a host does behind a pack that left them open.
  void unwind(std::size_t depth);

  // The words pushed in all open frames: the addresses of the values that a pack still uses.
  const std::vector<Anyval**>& words() const { return words_; }

  // What a pack did against the rules of the bracket, oldest first.
  std::vector<std::string> complaints;

  void operation1() override {}
  void operation2() override {}
  void operation3() override {}
  void apply(Anyval* function, const sCons* arguments, Anyval** result) override;
  void push_root(Anyval** root) override;
  void push_local(Anyval** local) override;
  void operation7() override {}
  void pop_frame() override;

 private:
  std::vector<std::size_t> frames_;  // For each open frame, the number of words before it.
  std::vector<Anyval**> words_;
};

#pragma GCC visibility pop

}  // namespace efi
