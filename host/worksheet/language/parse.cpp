#include "host/worksheet/language/parse.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/worksheet/engine/limits.hpp"
#include "host/worksheet/language/grammar.hpp"

namespace worksheet {

namespace {

namespace pegtl = tao::pegtl;
using Kind = Syntax::Kind;

void check_nesting(const std::string& text) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '(' || text[at] == '[') ++depth;
    if (text[at] == ')' || text[at] == ']') depth -= std::min<std::size_t>(depth, 1);
    if (depth > kNestingLimit.most) throw SyntaxError(at, kNestingLimit.message);
  }
}

// The kind that a rule of the grammar gives.
template <class Rule>
inline constexpr Kind kind_of = Kind::none;

#define KIND_OF_RULE(name) \
  template <>              \
  inline constexpr Kind kind_of<grammar::name> = Kind::name
KIND_OF_RULE(definition);
KIND_OF_RULE(assignment);
KIND_OF_RULE(display);
KIND_OF_RULE(target);
KIND_OF_RULE(defined_name);
KIND_OF_RULE(parameter);
KIND_OF_RULE(shown);
KIND_OF_RULE(wanted_unit);
KIND_OF_RULE(comparison);
KIND_OF_RULE(sum);
KIND_OF_RULE(product);
KIND_OF_RULE(signed_power);
KIND_OF_RULE(power);
KIND_OF_RULE(exponent_operand);
KIND_OF_RULE(comparison_operator);
KIND_OF_RULE(sum_operator);
KIND_OF_RULE(product_operator);
KIND_OF_RULE(minus);
KIND_OF_RULE(postfix);
KIND_OF_RULE(index);
KIND_OF_RULE(transpose);
KIND_OF_RULE(unit_content);
KIND_OF_RULE(number);
KIND_OF_RULE(imaginary_mark);
KIND_OF_RULE(text);
KIND_OF_RULE(matrix);
KIND_OF_RULE(row);
KIND_OF_RULE(call);
KIND_OF_RULE(call_name);
KIND_OF_RULE(arguments);
KIND_OF_RULE(variable);
#undef KIND_OF_RULE

// Whether a piece with a single child stands for that child.
bool is_folded(Kind kind) {
  return kind == Kind::comparison || kind == Kind::sum || kind == Kind::product ||
         kind == Kind::signed_power || kind == Kind::power || kind == Kind::postfix;
}

// The pieces found so far, as the parser enters rules and leaves them.
class TreeBuilder {
 public:
  explicit TreeBuilder(std::string_view text) : text_(text) {}

  void enter(std::size_t offset) { open_.push_back({done_.size(), offset}); }

  // Drops what was found since the rule was entered.
  void give_up() {
    done_.resize(open_.back().first_piece);
    open_.pop_back();
  }

  // Makes one piece of what was found since the rule was entered.
  void leave(Kind kind, std::size_t end) {
    const auto [first, begin] = open_.back();
    open_.pop_back();
    if (kind == Kind::none || (is_folded(kind) && done_.size() == first + 1)) return;
    const auto inside = done_.begin() + static_cast<std::ptrdiff_t>(first);
    Syntax piece = {kind, {begin, end}, text_.substr(begin, end - begin), {}};
    piece.children.assign(std::move_iterator(inside), std::move_iterator(done_.end()));
    done_.resize(first);
    done_.push_back(std::move(piece));
  }

  Syntax take() { return std::move(done_.front()); }

 private:
  struct Rule {
    std::size_t first_piece;
    std::size_t offset;
  };

  std::string_view text_;
  std::vector<Syntax> done_;  // Those of open rules one behind the other.
  std::vector<Rule> open_;
};

// What the parser does at each rule.
template <class Rule>
struct Control : pegtl::normal<Rule> {
  // The others find no pieces.
  static constexpr bool kIsFollowed =
      kind_of<Rule> != Kind::none || !std::is_same_v<typename Rule::subs_t, pegtl::empty_list>;

  template <class Input>
  static void start(const Input& in, TreeBuilder& tree) {
    if constexpr (kIsFollowed) tree.enter(in.byte());
  }
  template <class Input>
  static void success(const Input& in, TreeBuilder& tree) {
    if constexpr (kIsFollowed) tree.leave(kind_of<Rule>, in.byte());
  }
  template <class Input>
  static void failure(const Input&, TreeBuilder& tree) {
    if constexpr (kIsFollowed) tree.give_up();
  }
  template <class Input>
  [[noreturn]] static void raise(const Input& in, TreeBuilder&) {
    throw SyntaxError(in.byte(), grammar::message<Rule>);
  }
};

}  // namespace

Syntax parse(const Source& source) {
  check_nesting(source.text);
  pegtl::memory_input input(source.text, "");
  TreeBuilder tree(source.text);
  if (!pegtl::parse<grammar::statement, pegtl::nothing, Control, pegtl::apply_mode::nothing>(input,
                                                                                             tree))
    throw SyntaxError(0, "expected a statement");
  return tree.take();
}

}  // namespace worksheet
