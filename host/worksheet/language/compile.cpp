#include "host/worksheet/language/compile.hpp"

#include <algorithm>
#include <optional>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/text/numbers.hpp"
#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/engine/stack.hpp"
#include "host/worksheet/language/expressions.hpp"
#include "host/worksheet/language/parse.hpp"

namespace worksheet {

namespace {

using Kind = Syntax::Kind;

[[noreturn]] void fail(const Syntax& at, const std::string& message) {
  throw SyntaxError(at.span().begin, message);
}

double number_in(const Syntax& piece, std::string_view digits) {
  const auto value = parse_real(digits);
  if (!value) fail(piece, "the number is too large");
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

// Makes nodes of the pieces of a statement, in the scope of a function's parameters.
class Compiler {
 public:
  Compiler(Machine& machine, const std::vector<std::string>& parameters)
      : machine_(machine), parameters_(parameters) {}

  NodePtr node(const Syntax& piece);

 private:
  NodePtr number(const Syntax& piece);
  NodePtr chain(const Syntax& piece);
  NodePtr postfix(const Syntax& piece);
  std::unique_ptr<Suffix> suffix(const Syntax& piece, Span span);
  NodePtr matrix(const Syntax& piece);
  const Unit* unit(const Syntax& piece, Unit::Origin origin = Unit::Origin::written);
  NodePtr call(const Syntax& piece);
  NodePtr variable(const Syntax& piece);
  // Of `first` and those behind it.
  std::vector<NodePtr> nodes(const Syntax& first);
  std::optional<std::size_t> parameter(std::string_view name) const;

  Machine& machine_;
  const std::vector<std::string>& parameters_;
};

NodePtr Compiler::node(const Syntax& piece) {
  if (stack_is_low()) fail(piece, kNestingLimit.message);
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
      return std::make_unique<PowerNode>(piece.span(), nodes(piece.child()));
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

std::optional<std::size_t> Compiler::parameter(std::string_view name) const {
  const auto at = std::find(parameters_.begin(), parameters_.end(), name);
  if (at == parameters_.end()) return std::nullopt;
  return static_cast<std::size_t>(at - parameters_.begin());
}

NodePtr Compiler::number(const Syntax& piece) {
  std::string_view text = piece.text();
  const bool imaginary = piece.kind() == Kind::imaginary;
  if (imaginary) text.remove_suffix(1);
  const double value = number_in(piece, text);
  return std::make_unique<NumberNode>(piece.span(), imaginary ? 0.0 : value,
                                      imaginary ? value : 0.0);
}

NodePtr Compiler::chain(const Syntax& piece) {
  NodePtr first = node(piece.child());
  std::vector<ChainNode::Term> terms;
  for (Syntax op = piece.child().next(); op; op = op.next().next())
    terms.push_back({operator_of(op), op.span(), node(op.next())});
  return std::make_unique<ChainNode>(piece.span(), std::move(first), std::move(terms));
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
  const Syntax second = piece.child().next();
  if (second && second.next()) fail(second.next(), "a matrix has two indices");
  return std::make_unique<IndexSuffix>(span, nodes(piece.child()), machine_.variable("ORIGIN"));
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
      fail(row, fmt::format("this row has length {}, the first one {}", length, cols));
    for (Syntax at = row.child(); at; at = at.next()) elements.push_back(node(at));
  }
  return std::make_unique<MatrixNode>(piece.span(), cols, std::move(elements));
}

NodePtr Compiler::call(const Syntax& piece) {
  const std::string name(piece.child().text());
  const Syntax first = piece.child().next();
  std::vector<Span> places;
  for (Syntax at = first; at; at = at.next()) {
    if (places.size() == kMostArguments) fail(at, kArgumentLimit.message);
    places.push_back(at.span());
  }
  if (name == "if") {
    if (places.size() != 3) fail(piece, "if takes a condition and two expressions");
    return std::make_unique<IfNode>(piece.span(), nodes(first));
  }
  auto made = std::make_unique<CallNode>(piece.span(), name, nodes(first));
  made->places = std::move(places);
  if (const auto index = parameter(name))
    made->parameter = *index;
  else
    made->variable = machine_.variable(name);
  made->builtin = find_builtin(name);
  made->row = machine_.find_row(name);
  return made;
}

NodePtr Compiler::variable(const Syntax& piece) {
  const std::string_view name = piece.text();
  if (const auto index = parameter(name))
    return std::make_unique<ParameterNode>(piece.span(), *index);
  return std::make_unique<VariableNode>(piece.span(), machine_.variable(name), find_constant(name));
}

// Takes the names in front of the expression; `at` is then the expression. A second one of a name
// is refused as being twice `where`.
std::vector<std::string> names(Syntax& at, const Limit& limit, const char* where) {
  std::vector<std::string> taken;
  for (; at.next(); at = at.next()) {
    std::string name(at.text());
    if (std::find(taken.begin(), taken.end(), name) != taken.end())
      fail(at, fmt::format("{} is twice {}", name, where));
    if (taken.size() == limit.most) fail(at, limit.message);
    taken.push_back(std::move(name));
  }
  return taken;
}

Statement definition(const Syntax& piece, const Source& source, Machine& machine) {
  auto function = std::make_unique<Function>();
  Syntax at = piece.child();
  function->name = at.text();
  at = at.next();
  function->parameters = names(at, kParameterLimit, "among the parameters");
  function->body = Compiler(machine, function->parameters).node(at);
  function->source = std::make_unique<Source>(source);
  Statement statement;
  statement.form = Statement::Form::definition;
  statement.targets.push_back(machine.variable(function->name));
  statement.function = std::move(function);
  return statement;
}

Statement statement_of(const Syntax& piece, const Source& source, Machine& machine) {
  if (piece.kind() == Kind::definition) return definition(piece, source, machine);
  Statement statement;
  if (piece.kind() == Kind::assignment) statement.form = Statement::Form::assignment;
  Syntax at = piece.child();
  for (const std::string& name : names(at, kTargetLimit, "on the left"))
    statement.targets.push_back(machine.variable(name));
  statement.expression = Compiler(machine, {}).node(at);
  return statement;
}

}  // namespace

Statement compile(const Source& source, Machine& machine) {
  if (!source.objection.empty()) throw SyntaxError(source.objection_offset, source.objection);
  const SyntaxTree tree = parse(source);
  return statement_of(tree.root(), source, machine);
}

}  // namespace worksheet
