#include "host/worksheet/language/compile.hpp"

#include <algorithm>
#include <optional>
#include <tao/pegtl/contrib/parse_tree.hpp>

#include "fmt/format.h"
#include "host/packs/unit.hpp"
#include "host/worksheet/data/data_file.hpp"
#include "host/worksheet/language/expressions.hpp"
#include "host/worksheet/language/grammar.hpp"

namespace worksheet {

namespace {

namespace pegtl = tao::pegtl;
using Tree = pegtl::parse_tree::node;

// Brackets within brackets beyond this are refused: the parser and the evaluation are recursive.
constexpr int kMostNesting = 100;

// Puts a rule's only child in its place. Unlike the library's own way, others keep their extent.
struct FoldSingle : pegtl::parse_tree::apply<FoldSingle> {
  template <class Node>
  static void transform(std::unique_ptr<Node>& tree) {
    if (tree->children.size() == 1) tree = std::move(tree->children.front());
  }
};

template <class Rule>
using Selector = pegtl::parse_tree::selector<
    Rule,
    pegtl::parse_tree::store_content::on<
        grammar::number, grammar::imaginary_mark, grammar::text, grammar::unit_content,
        grammar::call_name, grammar::call, grammar::arguments, grammar::matrix, grammar::row,
        grammar::variable, grammar::index, grammar::transpose, grammar::minus,
        grammar::product_operator, grammar::sum_operator, grammar::comparison_operator,
        grammar::target, grammar::parameter, grammar::defined_name, grammar::definition,
        grammar::assignment, grammar::display, grammar::wanted_unit, grammar::shown,
        grammar::exponent_operand>,
    FoldSingle::on<grammar::power, grammar::signed_power, grammar::product, grammar::sum,
                   grammar::comparison, grammar::postfix>>;

Span span_of(const Tree& tree) {
  return {tree.m_begin.byte, tree.m_end.byte};
}

[[noreturn]] void fail(const Tree& tree, const std::string& message) {
  throw SyntaxError(tree.m_begin.byte, message);
}

// Refuses text whose brackets are nested too deeply for the recursive steps that follow.
void check_nesting(const std::string& text) {
  int depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '(' || text[at] == '[') ++depth;
    if (text[at] == ')' || text[at] == ']') --depth;
    if (depth > kMostNesting) throw SyntaxError(at, "brackets are nested too deeply");
  }
}

double number_in(const Tree& tree, std::string_view digits) {
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

Operator operator_of(const Tree& tree) {
  const std::string_view text = tree.string_view();
  for (int k = 0;; ++k)
    if (text == operator_text(static_cast<Operator>(k))) return static_cast<Operator>(k);
}

// Makes nodes of a parse tree, in the scope of a function's parameters.
class Compiler {
 public:
  Compiler(Machine& machine, const std::vector<std::string>& parameters)
      : machine_(machine), parameters_(parameters) {}

  NodePtr node(const Tree& tree);
  // An expression, possibly in a wanted unit.
  NodePtr shown(const Tree& tree);

 private:
  NodePtr number(const Tree& tree);
  NodePtr chain(const Tree& tree);
  NodePtr signed_operand(const Tree& tree);
  NodePtr power(const Tree& tree);
  NodePtr postfix(const Tree& tree);
  NodePtr matrix(const Tree& tree);
  const Unit* unit(const Tree& tree);
  NodePtr call(const Tree& tree);
  NodePtr variable(const Tree& tree);
  std::vector<NodePtr> nodes(const std::vector<std::unique_ptr<Tree>>& trees);
  std::optional<std::size_t> parameter(std::string_view name) const;

  Machine& machine_;
  const std::vector<std::string>& parameters_;
};

NodePtr Compiler::node(const Tree& tree) {
  if (tree.is_type<grammar::number>()) return number(tree);
  if (tree.is_type<grammar::text>())
    return std::make_unique<TextNode>(span_of(tree), unescaped(tree.string_view()));
  if (tree.is_type<grammar::matrix>()) return matrix(tree);
  if (tree.is_type<grammar::call>()) return call(tree);
  if (tree.is_type<grammar::variable>()) return variable(tree);
  if (tree.is_type<grammar::postfix>()) return postfix(tree);
  if (tree.is_type<grammar::power>()) return power(tree);
  if (tree.is_type<grammar::signed_power>() || tree.is_type<grammar::exponent_operand>())
    return signed_operand(tree);
  return chain(tree);
}

std::vector<NodePtr> Compiler::nodes(const std::vector<std::unique_ptr<Tree>>& trees) {
  std::vector<NodePtr> made;
  for (const auto& tree : trees) made.push_back(node(*tree));
  return made;
}

std::optional<std::size_t> Compiler::parameter(std::string_view name) const {
  const auto at = std::find(parameters_.begin(), parameters_.end(), name);
  if (at == parameters_.end()) return std::nullopt;
  return static_cast<std::size_t>(at - parameters_.begin());
}

NodePtr Compiler::number(const Tree& tree) {
  std::string_view text = tree.string_view();
  const bool imaginary = !tree.children.empty();
  if (imaginary) text.remove_suffix(1);
  const double value = number_in(tree, text);
  return std::make_unique<NumberNode>(span_of(tree), imaginary ? 0.0 : value,
                                      imaginary ? value : 0.0);
}

// operand (operator operand)*
NodePtr Compiler::chain(const Tree& tree) {
  std::vector<ChainNode::Term> terms;
  for (std::size_t k = 1; k + 1 < tree.children.size(); k += 2) {
    const Tree& op = *tree.children[k];
    terms.push_back({operator_of(op), span_of(op), node(*tree.children[k + 1])});
  }
  return std::make_unique<ChainNode>(span_of(tree), node(*tree.children[0]), std::move(terms));
}

// minus* operand
NodePtr Compiler::signed_operand(const Tree& tree) {
  NodePtr operand = node(*tree.children.back());
  if (tree.children.size() % 2 == 1) return operand;
  return std::make_unique<NegateNode>(span_of(tree), std::move(operand));
}

// a ^ b ^ c is a ^ (b ^ c).
NodePtr Compiler::power(const Tree& tree) {
  auto k = tree.children.size() - 1;
  NodePtr result = node(*tree.children[k]);
  while (k-- > 0) {
    const Span span = {tree.children[k]->m_begin.byte, tree.m_end.byte};
    std::vector<ChainNode::Term> term;
    term.push_back({Operator::power, span, std::move(result)});
    result = std::make_unique<ChainNode>(span, node(*tree.children[k]), std::move(term));
  }
  return result;
}

NodePtr Compiler::postfix(const Tree& tree) {
  NodePtr result = node(*tree.children[0]);
  for (std::size_t k = 1; k < tree.children.size(); ++k) {
    const Tree& suffix = *tree.children[k];
    const Span span = {tree.m_begin.byte, suffix.m_end.byte};
    if (suffix.is_type<grammar::transpose>()) {
      result = std::make_unique<TransposeNode>(span, std::move(result),
                                               machine_.find_row(Transpose_sString->text));
    } else if (suffix.is_type<grammar::index>()) {
      if (suffix.children.size() > 2) fail(*suffix.children[2], "a matrix has two indices");
      result = std::make_unique<IndexNode>(span, std::move(result), nodes(suffix.children),
                                           machine_.variable("ORIGIN"));
    } else {
      result = std::make_unique<UnitNode>(span, std::move(result), unit(suffix));
    }
  }
  return result;
}

const Unit* Compiler::unit(const Tree& tree) {
  try {
    return parse_unit(tree.string_view());
  } catch (const UnitError& error) {
    throw SyntaxError(tree.m_begin.byte + error.offset, error.what());
  }
}

NodePtr Compiler::shown(const Tree& tree) {
  NodePtr value = node(*tree.children[0]);
  if (tree.children.size() == 1) return value;
  const Tree& wanted = *tree.children[1]->children[0];
  return std::make_unique<ConversionNode>(span_of(tree), std::move(value), unit(wanted));
}

NodePtr Compiler::matrix(const Tree& tree) {
  const std::size_t cols = tree.children.front()->children.size();
  std::vector<NodePtr> elements;
  for (const auto& row : tree.children) {
    if (row->children.size() != cols)
      fail(*row,
           fmt::format("this row has length {}, the first one {}", row->children.size(), cols));
    for (const auto& element : row->children) elements.push_back(node(*element));
  }
  return std::make_unique<MatrixNode>(span_of(tree), cols, std::move(elements));
}

NodePtr Compiler::call(const Tree& tree) {
  const std::string name = tree.children[0]->string();
  const auto& arguments = tree.children[1]->children;
  if (arguments.size() > kMostArguments) fail(*arguments[kMostArguments], "too many arguments");
  if (name == "if") {
    if (arguments.size() != 3) fail(tree, "if takes a condition and two expressions");
    return std::make_unique<IfNode>(span_of(tree), nodes(arguments));
  }
  auto made = std::make_unique<CallNode>(span_of(tree), name, nodes(arguments));
  for (const auto& argument : arguments) made->spans.push_back(span_of(*argument));
  if (const auto index = parameter(name))
    made->parameter = *index;
  else
    made->variable = machine_.variable(name);
  made->elementary = find_elementary(name);
  made->row = machine_.find_row(name);
  return made;
}

NodePtr Compiler::variable(const Tree& tree) {
  const std::string_view name = tree.string_view();
  if (const auto index = parameter(name))
    return std::make_unique<ParameterNode>(span_of(tree), *index);
  return std::make_unique<VariableNode>(span_of(tree), machine_.variable(name),
                                        find_constant(name));
}

// name(parameters) = expression
Statement definition(const Tree& tree, const Source& source, Machine& machine) {
  auto function = std::make_unique<Function>();
  function->name = tree.children.front()->string();
  for (std::size_t k = 1; k + 1 < tree.children.size(); ++k) {
    const std::string name = tree.children[k]->string();
    if (std::find(function->parameters.begin(), function->parameters.end(), name) !=
        function->parameters.end())
      fail(*tree.children[k], fmt::format("{} is twice among the parameters", name));
    if (function->parameters.size() == kMostArguments)
      fail(*tree.children[k], "too many parameters");
    function->parameters.push_back(name);
  }
  function->body = Compiler(machine, function->parameters).shown(*tree.children.back());
  function->source = std::make_unique<Source>(source);
  Statement statement;
  statement.form = Statement::Form::definition;
  statement.targets.push_back(machine.variable(function->name));
  statement.function = std::move(function);
  return statement;
}

Statement statement_of(const Tree& tree, const Source& source, Machine& machine) {
  if (tree.is_type<grammar::definition>()) return definition(tree, source, machine);
  Statement statement;
  if (tree.is_type<grammar::assignment>()) statement.form = Statement::Form::assignment;
  for (std::size_t k = 0; k + 1 < tree.children.size(); ++k) {
    Variable* const target = machine.variable(tree.children[k]->string_view());
    if (std::find(statement.targets.begin(), statement.targets.end(), target) !=
        statement.targets.end())
      fail(*tree.children[k], fmt::format("{} is twice on the left", target->name));
    statement.targets.push_back(target);
  }
  statement.expression = Compiler(machine, {}).shown(*tree.children.back());
  return statement;
}

}  // namespace

Statement compile(const Source& source, Machine& machine) {
  check_nesting(source.text);
  pegtl::memory_input input(source.text, "");
  try {
    const auto root =
        pegtl::parse_tree::parse<grammar::statement, Selector, pegtl::nothing, grammar::Control>(
            input);
    if (root == nullptr) throw SyntaxError(0, "expected a statement");
    return statement_of(*root->children.at(0), source, machine);
  } catch (const pegtl::parse_error& error) {
    throw SyntaxError(error.positions().front().byte, std::string(error.message()));
  }
}

}  // namespace worksheet
