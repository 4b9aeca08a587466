// The nodes of compiled expressions.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/worksheet/engine/machine.hpp"
#include "host/worksheet/functions/builtin.hpp"
#include "host/worksheet/operators/arithmetic.hpp"
#include "host/worksheet/operators/range.hpp"

namespace worksheet {

struct NumberNode : Node {
  NumberNode(Span where, double re, double im) : Node(where), value(number_value(re, im)) {}
  Value evaluate(Machine&) const override { return value; }
  Value value;
};

struct TextNode : Node {
  TextNode(Span where, std::string content) : Node(where), text(std::move(content)) {}
  Value evaluate(Machine& machine) const override;
  std::string text;
};

// A parameter of the function whose body this is.
struct ParameterNode : Node {
  ParameterNode(Span where, std::size_t k) : Node(where), index(k) {}
  Value evaluate(Machine& machine) const override { return machine.parameter(index); }
  std::size_t index;
};

// A variable; where none is defined, a constant of that name.
struct VariableNode : Node {
  VariableNode(Span where, Variable* v, const double* c) : Node(where), variable(v), constant(c) {}
  Value evaluate(Machine& machine) const override;
  Variable* variable;
  const double* constant;
};

// a op b op c..., from left to right.
struct ChainNode : Node {
  struct Term {
    Operator op;
    Span op_span;
    NodePtr operand;
  };
  ChainNode(Span where, NodePtr a, std::vector<Term> rest)
      : Node(where), first(std::move(a)), terms(std::move(rest)) {}
  Value evaluate(Machine& machine) const override;
  NodePtr first;
  std::vector<Term> terms;
};

struct NegateNode : Node {
  NegateNode(Span where, NodePtr a) : Node(where), operand(std::move(a)) {}
  Value evaluate(Machine& machine) const override;
  NodePtr operand;
};

// a && b && c..., or with ||: elements where there are matrices. Behind a number that decides
// nothing is evaluated.
struct LogicNode : Node {
  LogicNode(Span where, NodePtr a, std::vector<ChainNode::Term> rest)
      : Node(where), first(std::move(a)), terms(std::move(rest)) {}
  Value evaluate(Machine& machine) const override;
  NodePtr first;
  std::vector<ChainNode::Term> terms;
};

// Signs with '!' among them.
struct PrefixNode : Node {
  PrefixNode(Span where, std::string ops, NodePtr a)
      : Node(where), signs(std::move(ops)), operand(std::move(a)) {}
  Value evaluate(Machine& machine) const override;
  std::string signs;
  NodePtr operand;
};

// a:b or a:step:b; a column as a value.
struct RangeNode : Node {
  RangeNode(Span where, std::vector<NodePtr> of) : Node(where), bounds(std::move(of)) {}
  Value evaluate(Machine& machine) const override;
  Range range_of(Machine& machine, Value* error) const;
  std::vector<NodePtr> bounds;
};

// (t = a; P, L, U = b; c) in the body of a function.
struct SequenceNode : Node {
  struct Assignment {
    std::vector<std::size_t> places;  // Of the names among the values of the function.
    NodePtr expression;
  };
  SequenceNode(Span where, std::vector<Assignment> of, NodePtr result)
      : Node(where), assignments(std::move(of)), last(std::move(result)) {}
  Value evaluate(Machine& machine) const override;
  std::vector<Assignment> assignments;
  NodePtr last;
};

// a ^ b .^ c..., from right to left.
struct PowerNode : Node {
  PowerNode(Span where, std::vector<NodePtr> of, std::vector<Operator> ops)
      : Node(where), operands(std::move(of)), operators(std::move(ops)) {}
  Value evaluate(Machine& machine) const override;
  std::vector<NodePtr> operands;
  std::vector<Operator> operators;
};

// What stands behind an operand; its span begins with the operand's.
struct Suffix {
  explicit Suffix(Span where) : span(where) {}
  virtual ~Suffix() = default;
  Suffix(const Suffix&) = delete;
  Suffix& operator=(const Suffix&) = delete;

  // What becomes of the value `a` that stands at `place`, or an error value.
  virtual Value apply(Machine& machine, const Value& a, Span place) const = 0;

  const Span span;
};

struct TransposeSuffix : Suffix {
  TransposeSuffix(Span where, const Row* r) : Suffix(where), row(r) {}
  Value apply(Machine& machine, const Value& a, Span place) const override;
  const Row* row;
};

// a{unit}: a plain value that gets a unit.
struct UnitSuffix : Suffix {
  UnitSuffix(Span where, const Unit* u) : Suffix(where), unit(u) {}
  Value apply(Machine& machine, const Value& a, Span place) const override;
  const Unit* unit;
};

// An operand with what stands behind it.
struct PostfixNode : Node {
  PostfixNode(Span where, NodePtr a, std::vector<std::unique_ptr<Suffix>> rest)
      : Node(where), operand(std::move(a)), suffixes(std::move(rest)) {}
  Value evaluate(Machine& machine) const override;
  NodePtr operand;
  std::vector<std::unique_ptr<Suffix>> suffixes;
};

// a in {unit}: the same quantity in another unit.
struct ConversionNode : Node {
  ConversionNode(Span where, NodePtr a, const Unit* u)
      : Node(where), operand(std::move(a)), unit(u) {}
  Value evaluate(Machine& machine) const override;
  NodePtr operand;
  const Unit* unit;
};

struct MatrixNode : Node {
  MatrixNode(Span where, std::size_t columns, std::vector<NodePtr> by_rows)
      : Node(where), cols(columns), elements(std::move(by_rows)) {}
  Value evaluate(Machine& machine) const override;
  Value nested(Machine& machine, const std::vector<Value>& values) const;
  Value of_numbers(Machine& machine, const std::vector<Value>& values) const;
  std::size_t cols;
  std::vector<NodePtr> elements;
};

// NAME(...): a function of the worksheet, one of the language or a pack's, in this order.
struct CallNode : Node {
  CallNode(Span where, std::string n, std::vector<NodePtr> args)
      : Node(where), name(std::move(n)), arguments(std::move(args)) {}
  Value evaluate(Machine& machine) const override;

  std::string name;
  std::vector<NodePtr> arguments;
  std::vector<Span> places;            // Of the arguments.
  const Variable* variable = nullptr;  // What may hold the function; null: a parameter.
  std::size_t parameter = 0;
  const Builtin* builtin = nullptr;
  const Row* row = nullptr;

 private:
  Value value_of(Machine& machine, const Call& call) const;
  // Whether it is digits(...), which the calls in its argument answer.
  bool asks_for_digits() const;
};

// if(c, a, b): evaluates only what it gives.
struct IfNode : Node {
  IfNode(Span where, std::vector<NodePtr> parts) : Node(where), arguments(std::move(parts)) {}
  Value evaluate(Machine& machine) const override;
  std::vector<NodePtr> arguments;
};

}  // namespace worksheet
