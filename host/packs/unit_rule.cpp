#include "host/packs/unit_rule.hpp"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

#include "fmt/format.h"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

// A symbol, or a list.
struct Expression {
  std::string symbol;
  std::vector<Expression> list;
  bool is_list = false;
};

constexpr int kMostDepth = 20;

class RuleReader {
 public:
  explicit RuleReader(std::string_view text) : text_(text) {}

  Expression read() {
    Expression whole = read_one(0);
    skip_blanks();
    if (at_ < text_.size()) fail();
    return whole;
  }

 private:
  [[noreturn]] void fail() const {
    throw UnitRuleError(fmt::format("its unit rule \"{}\" makes no sense", text_));
  }

  void skip_blanks() { at_ = std::min(text_.find_first_not_of(" \t\n", at_), text_.size()); }

  Expression read_one(int depth) {
    skip_blanks();
    if (at_ >= text_.size() || depth > kMostDepth) fail();
    Expression expression;
    if (text_[at_] != '(') {
      const std::size_t end = std::min(text_.find_first_of(" \t\n()", at_), text_.size());
      expression.symbol = text_.substr(at_, end - at_);
      at_ = end;
      if (expression.symbol.empty()) fail();
      return expression;
    }
    expression.is_list = true;
    ++at_;
    for (skip_blanks(); at_ < text_.size() && text_[at_] != ')'; skip_blanks())
      expression.list.push_back(read_one(depth + 1));
    if (at_ >= text_.size()) fail();
    ++at_;
    return expression;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// A rule at work on the units of one call.
class Ruling {
 public:
  explicit Ruling(std::span<const UnitArgument> units) : units_(units) {
    for (std::size_t k = 0; k < units.size(); ++k) all_.push_back(k);
    ruling_.factors.assign(units.size(), 1.0);
    ruling_.result = {nullptr, 1.0};
  }

  UnitRuling apply(const Expression& rule) {
    if (!rule.is_list)
      check(rule.symbol, all_, 0);
    else if (is_form(rule, "%lambda", 3) && rule.list[1].is_list)
      apply_lambda(rule);
    else
      throw UnitRuleError("its unit rule is neither a lambda nor a check");
    return ruling_;
  }

  // What a row without a rule asks for.
  UnitRuling plain_only() {
    need_plain(all_);
    return ruling_;
  }

 private:
  using Indices = std::vector<std::size_t>;

  static bool is_form(const Expression& e, const char* name, std::size_t length) {
    return e.is_list && e.list.size() == length && e.list[0].symbol == name;
  }

  void apply_lambda(const Expression& lambda) {
    for (const Expression& parameter : lambda.list[1].list) names_.push_back(parameter.symbol);
    if (names_.size() != units_.size())
      throw UnitRuleError(
          fmt::format("its unit rule names {} arguments of {}", names_.size(), units_.size()));
    evaluate(lambda.list[2]);
  }

  void evaluate(const Expression& e) {
    if (is_form(e, "%sequence", 2)) {
      for (const Expression& step : e.list[1].list) evaluate(step);
      return;
    }
    if (!e.is_list || e.list.empty()) throw UnitRuleError("its unit rule has a wrong expression");
    Indices arguments;
    int number = 0;
    for (std::size_t k = 1; k < e.list.size(); ++k) {
      const std::string& symbol = e.list[k].symbol;
      const auto name = std::find(names_.begin(), names_.end(), symbol);
      if (name != names_.end())
        arguments.push_back(static_cast<std::size_t>(name - names_.begin()));
      else if (std::from_chars(symbol.data(), symbol.data() + symbol.size(), number).ec !=
               std::errc())
        throw UnitRuleError(fmt::format("its unit rule names {}, which it does not bind", symbol));
    }
    check(e.list[0].symbol, arguments, number);
  }

  void check(const std::string& name, const Indices& arguments, int number) {
    if (arguments.empty()) throw UnitRuleError("its unit rule checks nothing");
    const Unit* const first = units_[arguments[0]].unit;
    if (name == "-EqDims") {
      ruling_.result = {need_equal(arguments), 1.0};
    } else if (name == "-EqDimsDimless") {
      need_equal(arguments);
      ruling_.result = {nullptr, 1.0};
    } else if (name == "-VDimless") {
      need_plain(arguments);
      ruling_.result = {nullptr, 1.0};
    } else if (name == "-DimsLikeDiv" && arguments.size() == 2) {
      ruling_.result = divide(first, units_[arguments[1]].unit);
    } else if (name == "-DimsLikeRoot" && number > 0) {
      ruling_.result = raise(first, {1, number});
    } else if (name == "-DimsLikePower") {
      ruling_.result = raise(first, {number});
    } else if (name == "-StripUnit") {
      ruling_.result = {nullptr, 1.0};
    } else {
      throw UnitRuleError(fmt::format("its unit rule uses {}, which is not known here", name));
    }
  }

  // Gives the unit of all of them.
  const Unit* need_equal(const Indices& arguments) {
    const auto given = std::find_if(arguments.begin(), arguments.end(),
                                    [this](std::size_t k) { return !units_[k].fits_any; });
    const Unit* const unit = given == arguments.end() ? nullptr : units_[*given].unit;
    for (const std::size_t k : arguments) {
      const auto factor = units_[k].fits_any ? 1.0 : common_conversion(units_[k].unit, unit);
      if (!factor)
        throw UnitMismatch(k, fmt::format("needs arguments with one unit: {}{}", listing(arguments),
                                          conversion_hint(units_[k].unit, unit)));
      ruling_.factors[k] = *factor;
    }
    return unit;
  }

  void need_plain(const Indices& arguments) {
    for (const std::size_t k : arguments) {
      const auto factor = conversion(units_[k].unit, nullptr);
      if (!factor) throw UnitMismatch(k, fmt::format("takes plain numbers: {}", listing({k})));
      ruling_.factors[k] = *factor;
    }
  }

  // "argument 1 has kN, argument 2 has m".
  std::string listing(const Indices& arguments) const {
    std::vector<std::string> parts;
    for (const std::size_t k : arguments)
      parts.push_back(fmt::format("argument {} has {}", k + 1, unit_text(units_[k].unit)));
    return joined(parts, ", ");
  }

  std::span<const UnitArgument> units_;
  Indices all_;
  std::vector<std::string> names_;
  UnitRuling ruling_;
};

}  // namespace

UnitRuling apply_unit_rule(const char* rule, std::span<const UnitArgument> arguments) try {
  Ruling ruling(arguments);
  return rule == nullptr ? ruling.plain_only() : ruling.apply(RuleReader(rule).read());
} catch (const UnitPowerError& error) {
  throw UnitMismatch(0, fmt::format("gives no value: {}", error.what()));
}

}  // namespace worksheet
