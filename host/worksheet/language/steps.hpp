// Statements that are compiled: blocks, and what stands in them.
//
// A loop runs its body again and again without recursion; each step of a body reclaims what it made
// and no variable keeps. Every step looks whether the evaluation is to end.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "host/worksheet/language/indices.hpp"

namespace worksheet {

// Where a block goes on after a step.
enum class Flow { next, leave, again, failed };

struct Step {
  explicit Step(Span where) : span(where) {}
  virtual ~Step() = default;
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;

  // Flow::failed with an error value in *error.
  virtual Flow run(Machine& machine, Value* error) const = 0;

  const Span span;
};

using StepPtr = std::unique_ptr<Step>;

struct Body {
  // One step after another; what is out of memory is an error of its step.
  Flow run(Machine& machine, Value* error) const;
  std::vector<StepPtr> steps;
};

// An expression for its effect.
struct ExpressionStep : Step {
  explicit ExpressionStep(NodePtr e) : Step(e->span), expression(std::move(e)) {}
  Flow run(Machine& machine, Value* error) const override;
  NodePtr expression;
};

// a, b = expression
struct AssignStep : Step {
  AssignStep(Span where, std::vector<Variable*> t, NodePtr e)
      : Step(where), targets(std::move(t)), expression(std::move(e)) {}
  Flow run(Machine& machine, Value* error) const override;
  std::vector<Variable*> targets;
  NodePtr expression;
};

// a += expression, A[i, j] = expression, A[i, j] += expression
struct UpdateStep : Step {
  UpdateStep(Span where, Span name_at, Variable* v, NodePtr e)
      : Step(where), place(name_at), variable(v), expression(std::move(e)) {}
  Flow run(Machine& machine, Value* error) const override;

  Span place;  // Of the name.
  Variable* variable;
  std::unique_ptr<IndexList> indices;  // Null for the whole variable.
  bool has_operator = false;
  Operator op = Operator::add;
  Span op_span;
  NodePtr expression;

 private:
  Value value(Machine& machine, const Value& old) const;
  Value update(Machine& machine) const;
  Value update_part(Machine& machine) const;
};

struct ForStep : Step {
  ForStep(Span where, Variable* v, NodePtr values, const RangeNode* r, Body b)
      : Step(where), variable(v), expression(std::move(values)), range(r), body(std::move(b)) {}
  Flow run(Machine& machine, Value* error) const override;

  Variable* variable;
  NodePtr expression;
  const RangeNode* range;  // The expression, if it is a range: it is not made.
  Body body;

 private:
  template <class At>
  Flow run_through(Machine& machine, std::ptrdiff_t count, At at, Value* error) const;
};

struct WhileStep : Step {
  WhileStep(Span where, NodePtr c, Body b)
      : Step(where), condition(std::move(c)), body(std::move(b)) {}
  Flow run(Machine& machine, Value* error) const override;
  NodePtr condition;
  Body body;
};

struct BranchStep : Step {
  struct Branch {
    NodePtr condition;  // Null behind `else`.
    Body body;
  };
  BranchStep(Span where, std::vector<Branch> b) : Step(where), branches(std::move(b)) {}
  Flow run(Machine& machine, Value* error) const override;
  std::vector<Branch> branches;
};

// break, continue
struct JumpStep : Step {
  JumpStep(Span where, Flow f) : Step(where), flow(f) {}
  Flow run(Machine&, Value*) const override { return flow; }
  Flow flow;
};

// A step as a whole statement: no value, or an error.
struct StepNode : Node {
  explicit StepNode(StepPtr s) : Node(s->span) { body.steps.push_back(std::move(s)); }
  Value evaluate(Machine& machine) const override;
  Body body;
};

}  // namespace worksheet
