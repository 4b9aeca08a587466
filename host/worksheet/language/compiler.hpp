// Makes nodes of the pieces of an expression.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/units/unit.hpp"
#include "host/worksheet/language/indices.hpp"
#include "host/worksheet/language/parse.hpp"

namespace worksheet {

[[noreturn]] inline void fail_at(const Syntax& at, const std::string& message) {
  throw SyntaxError(at.span().begin, message);
}

// In the scope of a function's parameters, and of the names to which its body gives values: each is
// known within its parentheses, from its assignment on.
class Compiler {
 public:
  explicit Compiler(Machine& machine) : machine_(machine) {}
  Compiler(Machine& machine, const std::vector<std::string>& parameters)
      : machine_(machine), in_function_(true), names_(parameters), place_count_(names_.size()) {
    for (std::size_t k = 0; k < names_.size(); ++k) places_.push_back(k);
  }

  NodePtr node(const Syntax& piece);
  IndexList indices(const Syntax& piece, Span span);

  // How many values a call has, those of the parameters included.
  std::size_t place_count() const { return place_count_; }

 private:
  NodePtr number(const Syntax& piece);
  NodePtr chain(const Syntax& piece);
  std::vector<ChainNode::Term> terms(const Syntax& first);
  NodePtr power(const Syntax& piece);
  NodePtr prefix(const Syntax& piece);
  std::unique_ptr<RangeNode> range(const Syntax& piece);
  NodePtr sequence(const Syntax& piece);
  SequenceNode::Assignment local_assignment(const Syntax& piece);
  NodePtr postfix(const Syntax& piece);
  std::unique_ptr<Suffix> suffix(const Syntax& piece, Span span);
  NodePtr matrix(const Syntax& piece);
  const Unit* unit(const Syntax& piece, Unit::Origin origin = Unit::Origin::written);
  NodePtr call(const Syntax& piece);
  NodePtr variable(const Syntax& piece);
  // Of `first` and those behind it.
  std::vector<NodePtr> nodes(const Syntax& first);
  std::optional<std::size_t> place_of(std::string_view name) const;

  Machine& machine_;
  bool in_function_ = false;
  std::vector<std::string> names_ = {};   // That are known here; the last of a name counts.
  std::vector<std::size_t> places_ = {};  // Of each among the values of a call.
  std::size_t place_count_ = 0;
};

}  // namespace worksheet
