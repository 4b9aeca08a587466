// The state of an evaluation: the host's services, the variables, the packs, and where an error
// came from.
#pragma once

#include <csignal>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/efiutils/evaluator.hpp"
#include "host/efiutils/store.hpp"
#include "host/efiutils/watch.hpp"
#include "host/packs/packs.hpp"
#include "host/worksheet/engine/call.hpp"
#include "host/worksheet/engine/drawn.hpp"
#include "host/worksheet/engine/sheet_files.hpp"
#include "host/worksheet/engine/trust.hpp"
#include "host/worksheet/values/holders.hpp"
#include "host/worksheet/values/source.hpp"
#include "host/worksheet/values/value.hpp"
#include "host/worksheet/values/variable.hpp"

namespace worksheet {

class Machine {
 public:
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  efi::Store store;
  efi::Evaluator evaluator;
  EfiCallContext context = {&store, &evaluator};
  std::vector<std::unique_ptr<Pack>> packs;

  // The files that the worksheet reads and writes.
  SheetFiles files;

  // What the statement under evaluation has drawn, with the SVG of those that are kept: for a
  // report all, at the prompt those that go to no file.
  std::vector<Drawn> pictures;
  enum class Keep { none, without_file, all };
  Keep keeps_pictures = Keep::none;

  // What its author should know about the statement under evaluation: what `read` left out, say.
  std::vector<std::string> notes;
  // Adds one, up to kNoteLimit.
  void note(std::string text);

  // How far the results of the statement's calls can be trusted.
  TrustNotes trust;

  // How closely packs are watched.
  efi::Care care = efi::Care::records;

  // Why evaluation is to end at the next call of a function. Set from a signal handler.
  enum Stop : std::sig_atomic_t { kGoOn = 0, kInterrupted, kOutOfTime };
  volatile std::sig_atomic_t interrupted = kGoOn;
  // The seconds that a statement may take; 0: any number.
  double seconds_allowed = 0.0;

  // The variable of that name, made undefined if there is none.
  Variable* variable(std::string_view name);
  // The defined variable of that name; null if there is none.
  const Variable* find_variable(const std::string& name) const;
  const std::unordered_map<std::string, std::unique_ptr<Variable>>& variables() const {
    return variables_;
  }

  // The variable takes the value; the old one is reclaimed sooner or later. Throws std::bad_alloc.
  void assign(Variable& variable, const Value& value);
  // The same for a matrix that is part of another value.
  void assign_part_of_joined(Variable& variable, const Value& value);

  // The matrix of a variable, to write numbers to: a copy where the old one is held elsewhere, too,
  // and not for a nested array. Throws std::bad_alloc.
  aMatrix* writable(Variable& variable) {
    return variable.written != nullptr ? matrix(variable.value) : made_writable(variable);
  }

  // The value of a defined variable.
  const Value& value_of(Variable& variable) {
    if (variable.may_be_real) drop_zero_imaginary_part(variable);
    return variable.value;
  }

  // Holds the value through which a loop runs. Throws std::bad_alloc.
  class LoopValue {
   public:
    LoopValue(Machine& machine, const Value& value);
    ~LoopValue();
    LoopValue(const LoopValue&) = delete;
    LoopValue& operator=(const LoopValue&) = delete;

   private:
    Machine& machine_;
  };
  // From now on the variable is not defined.
  void forget(Variable& variable);

  // The row of that name in the packs; null if there is none.
  const Row* find_row(std::string_view name) const;

  // Takes a pack in; the rows of packs taken in before go first.
  void add_pack(std::unique_ptr<Pack> pack);

  // Keeps a function for as long as function values may refer to it.
  Function* keep(std::unique_ptr<Function> function);

  // --- While a statement is evaluated ---

  // Evaluates a node of the statement in `source`, at top level. The place of an error refers to
  // `source`.
  Value evaluate(const Node& node, const Source& source);

  // The argument of the function being evaluated.
  const Value& parameter(std::size_t index) const { return parameters_[index]; }
  // The name of its body with that number, behind the parameters.
  void set_local(std::size_t index, const Value& value) { locals_[index] = value; }

  // What `end` stands for in the index under evaluation; gives what it stood for before.
  double set_last_index(double last) { return std::exchange(last_index_, last); }
  double last_index() const { return last_index_; }

  // What stands at `span` of the text being evaluated.
  std::string_view text_at(Span span) const;

  // An error value that arose at `span` of the text being evaluated.
  Value fail(Span span, std::string_view message);
  // The same for one whose cause is that an earlier statement failed.
  Value fail_because(const Failure& cause, Span span, std::string_view message);
  // The same for an error value that a pack or a service made, unless its place is known.
  Value fail_with(Span span, Anyval* error);
  // The error of an evaluation that was interrupted.
  Value stopped(Span span);
  Value out_of_memory(Span span) { return fail_with(span, sError_OutOfMemory); }
  // The complaint that a function got `given` arguments, not `wanted`.
  Value wrong_count(Span span, std::string_view function, std::size_t wanted, std::size_t given);

  // The place of an error that an evaluation gave.
  const Place& place() const { return place_; }

  // The value of a worksheet function.
  Value call(const Function& function, std::span<const Value> arguments, Span span);

  // --- Calls of packs: pack_call.cpp ---

  // The value of a pack's function.
  Value call(const Row& row, const Call& call);

  // The value that `entry` of a pack gives, watched; `boxes` are the arguments that it receives.
  Value call_pack(const std::string& name, const std::function<Anyval*()>& entry,
                  std::span<Anyval* const> boxes, const Call& call);

  // Checks a call that gave `result`; the same function is called again through `entry`. Not inside
  // of a function that a pack calls back. Values made on the way are reclaimed.
  void audit_call(const audit::Check* check, const Value& result, std::span<Anyval* const> boxes,
                  const std::function<Anyval*(std::span<Anyval* const>)>& entry, Span span);

  // A value of the host's for `value`; null without memory.
  Anyval* boxed(const Value& value);

  // Reclaims the values made since `since`, but for what `result` reaches.
  void collect(const Value& result, std::size_t since) {
    if (store.size() != since) reclaim(result, since);
  }
  // Ends a step of a block: the same for what no variable reaches. `targets` were assigned.
  void end_step(std::size_t since, std::span<Variable* const> targets) {
    if (store.size() != since) reclaim_step(since, targets);
  }
  // Ends a statement: reclaims what it made and no variable reaches. What variables have lost may
  // stay until it is an eighth of what they hold, so that many statements with many variables take
  // time in proportion.
  void end_statement();

 private:
  struct Activation;

  Anyval* apply(Anyval* function, const sCons* arguments);
  Anyval* applied(const Function& function, std::span<const Value> arguments);
  void forget_last_applied();
  void reclaim(const Value& result, std::size_t since);
  void reclaim_step(std::size_t since, std::span<Variable* const> targets);
  void reclaim_all();
  void forget_assigned();
  aMatrix* made_writable(Variable& variable);
  void drop_zero_imaginary_part(Variable& variable);
  Value call_with_locals(const Function& function, std::span<const Value> arguments);
  Value call_with_units(const Row& row, const Call& call);
  Value call_plain(const Row& row, const Call& call);

  std::unordered_map<std::string, std::unique_ptr<Variable>> variables_;
  std::vector<std::unique_ptr<Function>> functions_;
  const Value* parameters_ = nullptr;
  Value* locals_ = nullptr;  // The same array, where the function has names of its own.
  double last_index_ = 0.0;
  const Source* source_ = nullptr;
  Span pack_call_;      // The call of a pack's function that is under way,
  int pack_calls_ = 0;  // and how many are, one inside of another.
  Place place_;
  std::size_t kept_ = 0;              // The number of values that the last statement left.
  std::vector<Variable*> assigned_;   // Objects, since then.
  std::vector<Anyval*> loop_values_;  // What loops run through.
  Holders holders_;
  std::size_t held_words_ = 0;      // What variables hold, at least,
  std::size_t lost_words_ = 0;      // and what they have lost since `reclaim_all`.
  Anyval* last_applied_ = nullptr;  // The newest value that `apply` gave a pack.
};

}  // namespace worksheet
