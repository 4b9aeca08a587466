#include "host/worksheet/language/compile.hpp"

#include <algorithm>
#include <optional>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/text/numbers.hpp"
#include "host/worksheet/language/expressions.hpp"
#include "host/worksheet/language/parse.hpp"

namespace worksheet {

namespace {

using Kind = Syntax::Kind;

[[noreturn]] void fail(const Syntax& at, const std::string& message) {
  throw SyntaxError(at.span.begin, message);
}

double number_in(const Syntax& tree, std::string_view digits) {
  const auto value = parse_real(digits);
  if (!value) fail(tree, "the number is too large");
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

Operator operator_of(const Syntax& tree) {
  const std::string_view text = tree.text;
  for (int k = 0;; ++k)
    if (text == operator_text(static_cast<Operator>(k))) return static_cast<Operator>(k);
}

// Makes nodes of the pieces of a statement, in the scope of a function's parameters.
class Compiler {
 public:
  Compiler(Machine& machine, const std::vector<std::string>& parameters)
      : machine_(machine), parameters_(parameters) {}

  NodePtr node(const Syntax& tree);

 private:
  NodePtr number(const Syntax& tree);
  NodePtr chain(const Syntax& tree);
  NodePtr signed_operand(const Syntax& tree);
  NodePtr power(const Syntax& tree);
  NodePtr postfix(const Syntax& tree);
  NodePtr conversion(const Syntax& tree);
  NodePtr matrix(const Syntax& tree);
  const Unit* unit(const Syntax& tree);
  NodePtr call(const Syntax& tree);
  NodePtr variable(const Syntax& tree);
  std::vector<NodePtr> nodes(const std::vector<Syntax>& trees);
  std::optional<std::size_t> parameter(std::string_view name) const;

  Machine& machine_;
  const std::vector<std::string>& parameters_;
};

NodePtr Compiler::node(const Syntax& tree) {
  switch (tree.kind) {
    case Kind::number:
      return number(tree);
    case Kind::text:
      return std::make_unique<TextNode>(tree.span, unescaped(tree.text));
    case Kind::matrix:
      return matrix(tree);
    case Kind::call:
      return call(tree);
    case Kind::variable:
      return variable(tree);
    case Kind::postfix:
      return postfix(tree);
    case Kind::power:
      return power(tree);
    case Kind::conversion:
      return conversion(tree);
    case Kind::signed_power:
    case Kind::exponent_operand:
      return signed_operand(tree);
    default:
      return chain(tree);
  }
}

std::vector<NodePtr> Compiler::nodes(const std::vector<Syntax>& trees) {
  std::vector<NodePtr> made;
  for (const Syntax& tree : trees) made.push_back(node(tree));
  return made;
}

std::optional<std::size_t> Compiler::parameter(std::string_view name) const {
  const auto at = std::find(parameters_.begin(), parameters_.end(), name);
  if (at == parameters_.end()) return std::nullopt;
  return static_cast<std::size_t>(at - parameters_.begin());
}

NodePtr Compiler::number(const Syntax& tree) {
  std::string_view text = tree.text;
  const bool imaginary = !tree.children.empty();
  if (imaginary) text.remove_suffix(1);
  const double value = number_in(tree, text);
  return std::make_unique<NumberNode>(tree.span, imaginary ? 0.0 : value, imaginary ? value : 0.0);
}

// operand (operator operand)*
NodePtr Compiler::chain(const Syntax& tree) {
  std::vector<ChainNode::Term> terms;
  for (std::size_t k = 1; k + 1 < tree.children.size(); k += 2) {
    const Syntax& op = tree.children[k];
    terms.push_back({operator_of(op), op.span, node(tree.children[k + 1])});
  }
  return std::make_unique<ChainNode>(tree.span, node(tree.children[0]), std::move(terms));
}

// minus* operand
NodePtr Compiler::signed_operand(const Syntax& tree) {
  NodePtr operand = node(tree.children.back());
  if (tree.children.size() % 2 == 1) return operand;
  return std::make_unique<NegateNode>(tree.span, std::move(operand));
}

// a ^ b ^ c is a ^ (b ^ c).
NodePtr Compiler::power(const Syntax& tree) {
  auto k = tree.children.size() - 1;
  NodePtr result = node(tree.children[k]);
  while (k-- > 0) {
    const Span span = {tree.children[k].span.begin, tree.span.end};
    std::vector<ChainNode::Term> term;
    term.push_back({Operator::power, span, std::move(result)});
    result = std::make_unique<ChainNode>(span, node(tree.children[k]), std::move(term));
  }
  return result;
}

NodePtr Compiler::postfix(const Syntax& tree) {
  NodePtr result = node(tree.children[0]);
  for (std::size_t k = 1; k < tree.children.size(); ++k) {
    const Syntax& suffix = tree.children[k];
    const Span span = {tree.span.begin, suffix.span.end};
    if (suffix.kind == Kind::transpose) {
      result = std::make_unique<TransposeNode>(span, std::move(result),
                                               machine_.find_row(Transpose_sString->text));
    } else if (suffix.kind == Kind::index) {
      if (suffix.children.size() > 2) fail(suffix.children[2], "a matrix has two indices");
      result = std::make_unique<IndexNode>(span, std::move(result), nodes(suffix.children),
                                           machine_.variable("ORIGIN"));
    } else {
      result = std::make_unique<UnitNode>(span, std::move(result), unit(suffix));
    }
  }
  return result;
}

const Unit* Compiler::unit(const Syntax& tree) {
  try {
    return parse_unit(tree.text);
  } catch (const UnitError& error) {
    throw SyntaxError(tree.span.begin + error.offset, error.what());
  }
}

// operand (in {unit})*
NodePtr Compiler::conversion(const Syntax& tree) {
  NodePtr result = node(tree.children[0]);
  for (std::size_t k = 1; k < tree.children.size(); ++k) {
    const Syntax& wanted = tree.children[k].children[0];
    const Span span = {tree.span.begin, wanted.span.end + 1};
    result = std::make_unique<ConversionNode>(span, std::move(result), unit(wanted));
  }
  return result;
}

NodePtr Compiler::matrix(const Syntax& tree) {
  const std::size_t cols = tree.children.front().children.size();
  std::vector<NodePtr> elements;
  for (const Syntax& row : tree.children) {
    if (row.children.size() != cols)
      fail(row, fmt::format("this row has length {}, the first one {}", row.children.size(), cols));
    for (const Syntax& element : row.children) elements.push_back(node(element));
  }
  return std::make_unique<MatrixNode>(tree.span, cols, std::move(elements));
}

NodePtr Compiler::call(const Syntax& tree) {
  const std::string name(tree.children[0].text);
  const auto& arguments = tree.children[1].children;
  if (arguments.size() > kMostArguments) fail(arguments[kMostArguments], "too many arguments");
  if (name == "if") {
    if (arguments.size() != 3) fail(tree, "if takes a condition and two expressions");
    return std::make_unique<IfNode>(tree.span, nodes(arguments));
  }
  auto made = std::make_unique<CallNode>(tree.span, name, nodes(arguments));
  for (const Syntax& argument : arguments) made->places.push_back(argument.span);
  if (const auto index = parameter(name))
    made->parameter = *index;
  else
    made->variable = machine_.variable(name);
  made->builtin = find_builtin(name);
  made->row = machine_.find_row(name);
  return made;
}

NodePtr Compiler::variable(const Syntax& tree) {
  const std::string_view name = tree.text;
  if (const auto index = parameter(name)) return std::make_unique<ParameterNode>(tree.span, *index);
  return std::make_unique<VariableNode>(tree.span, machine_.variable(name), find_constant(name));
}

// name(parameters) = expression
Statement definition(const Syntax& tree, const Source& source, Machine& machine) {
  auto function = std::make_unique<Function>();
  function->name = tree.children.front().text;
  for (std::size_t k = 1; k + 1 < tree.children.size(); ++k) {
    const std::string name(tree.children[k].text);
    if (std::find(function->parameters.begin(), function->parameters.end(), name) !=
        function->parameters.end())
      fail(tree.children[k], fmt::format("{} is twice among the parameters", name));
    if (function->parameters.size() == kMostArguments)
      fail(tree.children[k], "too many parameters");
    function->parameters.push_back(name);
  }
  function->body = Compiler(machine, function->parameters).node(tree.children.back());
  function->source = std::make_unique<Source>(source);
  Statement statement;
  statement.form = Statement::Form::definition;
  statement.targets.push_back(machine.variable(function->name));
  statement.function = std::move(function);
  return statement;
}

Statement statement_of(const Syntax& tree, const Source& source, Machine& machine) {
  if (tree.kind == Kind::definition) return definition(tree, source, machine);
  Statement statement;
  if (tree.kind == Kind::assignment) statement.form = Statement::Form::assignment;
  for (std::size_t k = 0; k + 1 < tree.children.size(); ++k) {
    Variable* const target = machine.variable(tree.children[k].text);
    if (std::find(statement.targets.begin(), statement.targets.end(), target) !=
        statement.targets.end())
      fail(tree.children[k], fmt::format("{} is twice on the left", target->name));
    statement.targets.push_back(target);
  }
  statement.expression = Compiler(machine, {}).node(tree.children.back());
  return statement;
}

}  // namespace

Statement compile(const Source& source, Machine& machine) {
  return statement_of(parse(source), source, machine);
}

}  // namespace worksheet
