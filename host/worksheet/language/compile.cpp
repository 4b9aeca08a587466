// Statements and blocks.
#include "host/worksheet/language/compile.hpp"

#include <algorithm>

#include "fmt/format.h"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/language/compiler.hpp"
#include "host/worksheet/language/steps.hpp"

namespace worksheet {

namespace {

using Kind = Syntax::Kind;

// Takes the names in front of the expression; `at` is then the expression. A second one of a name
// is refused as being twice `where`.
std::vector<std::string> names(Syntax& at, const Limit& limit, const char* where) {
  std::vector<std::string> taken;
  for (; at.next(); at = at.next()) {
    std::string name(at.text());
    if (std::find(taken.begin(), taken.end(), name) != taken.end())
      fail_at(at, fmt::format("{} is twice {}", name, where));
    if (taken.size() == limit.most) fail_at(at, limit.message);
    taken.push_back(std::move(name));
  }
  return taken;
}

// Takes the targets in front of the expression.
std::vector<Variable*> targets(Syntax& at, Machine& machine) {
  std::vector<Variable*> made;
  for (const std::string& name : names(at, kTargetLimit, "on the left"))
    made.push_back(machine.variable(name));
  return made;
}

Statement definition(const Syntax& piece, const Source& source, Machine& machine) {
  auto function = std::make_unique<Function>();
  Syntax at = piece.child();
  function->name = at.text();
  at = at.next();
  function->parameters = names(at, kParameterLimit, "among the parameters");
  Compiler compiler(machine, function->parameters);
  function->body = compiler.node(at);
  function->local_count = compiler.place_count() - function->parameters.size();
  function->source = std::make_unique<Source>(source);
  Statement statement;
  statement.form = Statement::Form::definition;
  statement.targets.push_back(machine.variable(function->name));
  statement.function = std::move(function);
  return statement;
}

// --- Steps ---

// Makes steps of the statements of a block.
class StepCompiler {
 public:
  explicit StepCompiler(Machine& machine) : machine_(machine) {}

  StepPtr step(const Syntax& piece);
  std::unique_ptr<UpdateStep> update(const Syntax& piece);

 private:
  NodePtr node(const Syntax& piece) { return Compiler(machine_).node(piece); }
  Body body(const Syntax& piece, bool in_loop);
  StepPtr assignment(const Syntax& piece);
  StepPtr for_loop(const Syntax& piece);
  StepPtr while_loop(const Syntax& piece);
  StepPtr branches(const Syntax& piece);
  StepPtr jump(const Syntax& piece);

  Machine& machine_;
  bool in_loop_ = false;
};

StepPtr StepCompiler::step(const Syntax& piece) {
  switch (piece.kind()) {
    case Kind::definition:
      fail_at(piece, "a function is defined outside of blocks");
    case Kind::assignment:
      return assignment(piece);
    case Kind::update:
      return update(piece);
    case Kind::for_loop:
      return for_loop(piece);
    case Kind::while_loop:
      return while_loop(piece);
    case Kind::branches:
      return branches(piece);
    case Kind::leave:
    case Kind::again:
      return jump(piece);
    default:
      return std::make_unique<ExpressionStep>(node(piece.child()));
  }
}

Body StepCompiler::body(const Syntax& piece, bool in_loop) {
  const bool outer = std::exchange(in_loop_, in_loop);
  Body made;
  for (Syntax at = piece.child(); at; at = at.next()) made.steps.push_back(step(at));
  in_loop_ = outer;
  return made;
}

StepPtr StepCompiler::assignment(const Syntax& piece) {
  Syntax at = piece.child();
  std::vector<Variable*> variables = targets(at, machine_);
  return std::make_unique<AssignStep>(piece.span(), std::move(variables), node(at));
}

std::unique_ptr<UpdateStep> StepCompiler::update(const Syntax& piece) {
  const Syntax name = piece.child();
  Syntax at = name.next();
  std::unique_ptr<IndexList> indices;
  if (at.kind() == Kind::index) {
    indices = std::make_unique<IndexList>(
        Compiler(machine_).indices(at, {name.span().begin, at.span().end}));
    at = at.next();
  }
  auto made = std::make_unique<UpdateStep>(piece.span(), name.span(),
                                           machine_.variable(name.text()), node(at.next()));
  made->indices = std::move(indices);
  made->op_span = at.span();
  made->has_operator = at.text().size() == 2;
  constexpr std::string_view kOperators = "+-*/";
  if (made->has_operator) made->op = static_cast<Operator>(kOperators.find(at.text()[0]));
  return made;
}

StepPtr StepCompiler::for_loop(const Syntax& piece) {
  const Syntax name = piece.child(), values = name.next(), inside = values.next();
  NodePtr expression = node(values);
  const RangeNode* const range =
      values.kind() == Kind::range ? static_cast<const RangeNode*>(expression.get()) : nullptr;
  return std::make_unique<ForStep>(values.span(), machine_.variable(name.text()),
                                   std::move(expression), range, body(inside, true));
}

StepPtr StepCompiler::while_loop(const Syntax& piece) {
  const Syntax condition = piece.child();
  return std::make_unique<WhileStep>(condition.span(), node(condition),
                                     body(condition.next(), true));
}

StepPtr StepCompiler::branches(const Syntax& piece) {
  std::vector<BranchStep::Branch> made;
  for (Syntax at = piece.child(); at; at = at.next()) {
    BranchStep::Branch& branch = made.emplace_back();
    if (at.kind() != Kind::body) {
      branch.condition = node(at);
      at = at.next();
    }
    branch.body = body(at, in_loop_);
  }
  return std::make_unique<BranchStep>(piece.span(), std::move(made));
}

StepPtr StepCompiler::jump(const Syntax& piece) {
  if (!in_loop_) fail_at(piece, fmt::format("{} stands in a loop only", piece.text()));
  const Flow flow = piece.kind() == Kind::leave ? Flow::leave : Flow::again;
  return std::make_unique<JumpStep>(piece.span(), flow);
}

// --- Statements ---

Statement statement_of(const Syntax& piece, const Source& source, Machine& machine) {
  Statement statement;
  switch (piece.kind()) {
    case Kind::definition:
      return definition(piece, source, machine);
    case Kind::display:
      statement.expression = Compiler(machine).node(piece.child());
      break;
    case Kind::assignment: {
      Syntax at = piece.child();
      statement.form = Statement::Form::assignment;
      statement.targets = targets(at, machine);
      statement.expression = Compiler(machine).node(at);
      break;
    }
    case Kind::update: {
      auto step = StepCompiler(machine).update(piece);
      statement.form = Statement::Form::update;
      statement.targets.push_back(step->variable);
      statement.expression = std::make_unique<StepNode>(std::move(step));
      break;
    }
    default:
      statement.form = Statement::Form::block;
      statement.expression = std::make_unique<StepNode>(StepCompiler(machine).step(piece));
  }
  return statement;
}

}  // namespace

Statement compile(const Source& source, Machine& machine) {
  if (!source.objection.empty()) throw SyntaxError(source.objection_offset, source.objection);
  const SyntaxTree tree = parse(source);
  Statement statement = statement_of(tree.root(), source, machine);
  statement.is_quiet = tree.quiet || statement.form == Statement::Form::block;
  return statement;
}

}  // namespace worksheet
