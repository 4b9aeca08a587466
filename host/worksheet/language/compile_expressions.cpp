#include <algorithm>

#include "fmt/format.h"
#include "host/text/numbers.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"
#include "host/worksheet/language/compiler.hpp"

namespace worksheet {

namespace {

using Kind = Syntax::Kind;

double number_in(const Syntax& piece, std::string_view digits) {
  const auto value = parse_real(digits);
  if (!value) fail_at(piece, "the number is too large");
  return *value;
}

std::string unescaped(std::string_view quoted) {
  std::string text;
  for (std::size_t at = 1; at + 1 < quoted.size(); ++at) {
    char c = quoted[at];
    if (c == '\\') {
      c = quoted[++at];
      if (c == 'n') c = '\n';
      if (c == 't') c = '\t';
    }
    text += c;
  }
  return text;
}

Operator operator_of(const Syntax& piece) {
  const std::string_view text = piece.text();
  for (int k = 0;; ++k)
    if (text == operator_text(static_cast<Operator>(k))) return static_cast<Operator>(k);
}

}  // namespace

NodePtr Compiler::node(const Syntax& piece) {
  if (stack_is_low()) fail_at(piece, kNestingLimit.message);
  switch (piece.kind()) {
    case Kind::number:
    case Kind::imaginary:
      return number(piece);
    case Kind::text:
      return std::make_unique<TextNode>(piece.span(), unescaped(piece.text()));
    case Kind::matrix:
      return matrix(piece);
    case Kind::call:
      return call(piece);
    case Kind::variable:
      return variable(piece);
    case Kind::postfix:
      return postfix(piece);
    case Kind::power:
      return power(piece);
    case Kind::prefix:
      return prefix(piece);
    case Kind::range:
      return range(piece);
    case Kind::sequence:
      return sequence(piece);
    case Kind::last_index:
      return std::make_unique<LastIndexNode>(piece.span());
    case Kind::negation:
      return std::make_unique<NegateNode>(piece.span(), node(piece.child()));
    case Kind::conversion:
      return std::make_unique<ConversionNode>(piece.span(), node(piece.child()),
                                              unit(piece.child().next(), Unit::Origin::asked));
    default:
      return chain(piece);
  }
}

std::vector<NodePtr> Compiler::nodes(const Syntax& first) {
  std::vector<NodePtr> made;
  for (Syntax at = first; at; at = at.next()) made.push_back(node(at));
  return made;
}

std::optional<std::size_t> Compiler::place_of(std::string_view name) const {
  const auto at = std::find(names_.rbegin(), names_.rend(), name);
  if (at == names_.rend()) return std::nullopt;
  return places_[static_cast<std::size_t>(names_.rend() - at) - 1];
}

NodePtr Compiler::number(const Syntax& piece) {
  std::string_view text = piece.text();
  const bool imaginary = piece.kind() == Kind::imaginary;
  if (imaginary) text.remove_suffix(1);
  const double value = number_in(piece, text);
  return std::make_unique<NumberNode>(piece.span(), imaginary ? 0.0 : value,
                                      imaginary ? value : 0.0);
}

// Pairs of an operation and an operand.
std::vector<ChainNode::Term> Compiler::terms(const Syntax& first) {
  std::vector<ChainNode::Term> made;
  for (Syntax op = first; op; op = op.next().next())
    made.push_back({operator_of(op), op.span(), node(op.next())});
  return made;
}

NodePtr Compiler::chain(const Syntax& piece) {
  NodePtr first = node(piece.child());
  std::vector<ChainNode::Term> rest = terms(piece.child().next());
  if (piece.kind() == Kind::logic)
    return std::make_unique<LogicNode>(piece.span(), std::move(first), std::move(rest));
  return std::make_unique<ChainNode>(piece.span(), std::move(first), std::move(rest));
}

NodePtr Compiler::power(const Syntax& piece) {
  std::vector<NodePtr> operands;
  std::vector<Operator> operators;
  operands.push_back(node(piece.child()));
  for (Syntax op = piece.child().next(); op; op = op.next().next()) {
    operators.push_back(operator_of(op));
    operands.push_back(node(op.next()));
  }
  return std::make_unique<PowerNode>(piece.span(), std::move(operands), std::move(operators));
}

NodePtr Compiler::prefix(const Syntax& piece) {
  std::string signs;
  Syntax at = piece.child();
  for (; at.next(); at = at.next()) signs += at.text();
  return std::make_unique<PrefixNode>(piece.span(), std::move(signs), node(at));
}

std::unique_ptr<RangeNode> Compiler::range(const Syntax& piece) {
  return std::make_unique<RangeNode>(piece.span(), nodes(piece.child()));
}

NodePtr Compiler::sequence(const Syntax& piece) {
  if (!in_function_)
    fail_at(piece.child(), "names within parentheses belong to the body of a function");
  const std::size_t known = names_.size();
  std::vector<SequenceNode::Assignment> assignments;
  Syntax at = piece.child();
  for (; at.next(); at = at.next()) assignments.push_back(local_assignment(at));
  NodePtr last = node(at);
  names_.resize(known);
  places_.resize(known);
  return std::make_unique<SequenceNode>(piece.span(), std::move(assignments), std::move(last));
}

SequenceNode::Assignment Compiler::local_assignment(const Syntax& piece) {
  Syntax at = piece.child();
  std::vector<std::string> assigned;
  for (; at.next(); at = at.next()) assigned.emplace_back(at.text());
  SequenceNode::Assignment made;
  made.expression = node(at);
  if (assigned.size() > kTargetLimit.most) fail_at(piece, kTargetLimit.message);
  for (std::string& name : assigned) {
    if (place_count_ == kParameterLimit.most + kLocalLimit.most)
      fail_at(piece, kLocalLimit.message);
    names_.push_back(std::move(name));
    places_.push_back(place_count_);
    made.places.push_back(place_count_++);
  }
  return made;
}

NodePtr Compiler::postfix(const Syntax& piece) {
  NodePtr operand = node(piece.child());
  std::vector<std::unique_ptr<Suffix>> suffixes;
  for (Syntax at = piece.child().next(); at; at = at.next()) {
    const std::size_t brace = at.kind() == Kind::unit ? 1 : 0;
    suffixes.push_back(suffix(at, {piece.span().begin, at.span().end + brace}));
  }
  return std::make_unique<PostfixNode>(piece.span(), std::move(operand), std::move(suffixes));
}

std::unique_ptr<Suffix> Compiler::suffix(const Syntax& piece, Span span) {
  if (piece.kind() == Kind::transpose)
    return std::make_unique<TransposeSuffix>(span, machine_.find_row(Transpose_sString->text));
  if (piece.kind() == Kind::unit) return std::make_unique<UnitSuffix>(span, unit(piece));
  return std::make_unique<IndexSuffix>(indices(piece, span));
}

IndexList Compiler::indices(const Syntax& piece, Span span) {
  const Syntax second = piece.child().next();
  if (second && second.next()) fail_at(second.next(), "a matrix has two indices");
  IndexList list;
  list.span = span;
  list.origin = machine_.variable("ORIGIN");
  for (Syntax at = piece.child(); at; at = at.next()) {
    IndexList::Index& index = list.indices.emplace_back();
    if (at.kind() == Kind::range) {
      auto made = range(at);
      index.range = made.get();
      index.node = std::move(made);
    } else if (at.kind() != Kind::everything) {
      index.node = node(at);
    }
  }
  return list;
}

const Unit* Compiler::unit(const Syntax& piece, Unit::Origin origin) {
  try {
    return parse_unit(piece.text(), origin);
  } catch (const UnitError& error) {
    throw SyntaxError(piece.span().begin + error.offset, error.what());
  }
}

NodePtr Compiler::matrix(const Syntax& piece) {
  const std::size_t cols = piece.child().child_count();
  std::vector<NodePtr> elements;
  for (Syntax row = piece.child(); row; row = row.next()) {
    const std::size_t length = row.child_count();
    if (length != cols)
      fail_at(row, fmt::format("this row has length {}, the first one {}", length, cols));
    for (Syntax at = row.child(); at; at = at.next()) elements.push_back(node(at));
  }
  return std::make_unique<MatrixNode>(piece.span(), cols, std::move(elements));
}

NodePtr Compiler::call(const Syntax& piece) {
  const std::string name(piece.child().text());
  const Syntax first = piece.child().next();
  std::vector<Span> places;
  for (Syntax at = first; at; at = at.next()) {
    if (places.size() == kMostArguments) fail_at(at, kArgumentLimit.message);
    places.push_back(at.span());
  }
  if (name == "if") {
    if (places.size() != 3) fail_at(piece, "if takes a condition and two expressions");
    return std::make_unique<IfNode>(piece.span(), nodes(first));
  }
  auto made = std::make_unique<CallNode>(piece.span(), name, nodes(first));
  made->places = std::move(places);
  if (const auto index = place_of(name))
    made->parameter = *index;
  else
    made->variable = machine_.variable(name);
  made->builtin = find_builtin(name);
  made->row = machine_.find_row(name);
  return made;
}

NodePtr Compiler::variable(const Syntax& piece) {
  const std::string_view name = piece.text();
  if (const auto index = place_of(name))
    return std::make_unique<ParameterNode>(piece.span(), *index);
  return std::make_unique<VariableNode>(piece.span(), machine_.variable(name), find_constant(name));
}

}  // namespace worksheet
