// Reading units as users write them.
#include <algorithm>

#include "host/units/unit.hpp"
#include "host/units/unit_names.hpp"

namespace worksheet {

namespace {

// Signs of multiplication and digits above the line, as UTF-8.
constexpr std::string_view kMultiplication[] = {"*", ".", "\u00B7", "\u22C5"};
constexpr std::string_view kRaised[] = {"\u2070", "\u00B9", "\u00B2", "\u00B3", "\u2074",
                                        "\u2075", "\u2076", "\u2077", "\u2078", "\u2079"};
constexpr std::string_view kRaisedMinus = "\u207B";

constexpr int kMostParentheses = 20;
constexpr std::size_t kMostFactors = 100;  // That are written, in whatever number of names.

class UnitReader {
 public:
  explicit UnitReader(std::string_view text) : text_(text) {}

  const Unit* read(Unit::Origin origin) try {
    read_product(1, 0);
    if (at_ < text_.size()) fail("unexpected text in a unit");
    return unit_of(merged(), origin);
  } catch (const UnitPowerError& error) {
    fail(error.what());
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw UnitError(at_, what); }

  std::string_view rest() const { return text_.substr(at_); }
  bool skip(std::string_view token) {
    if (!rest().starts_with(token)) return false;
    at_ += token.size();
    return true;
  }
  void skip_blanks() {
    while (skip(" ") || skip("\t")) continue;
  }
  bool skip_multiplication() {
    const auto* const sign = std::find_if(std::begin(kMultiplication), std::end(kMultiplication),
                                          [&](std::string_view s) { return skip(s); });
    return sign != std::end(kMultiplication);
  }
  bool at_end() const { return at_ >= text_.size() || text_[at_] == ')'; }

  // The factors with those of one name joined.
  std::vector<Unit::Factor> merged() const {
    std::vector<Unit::Factor> result;
    for (const Unit::Factor& factor : factors_) {
      const auto same = std::find_if(result.begin(), result.end(),
                                     [&](const Unit::Factor& f) { return f.unit == factor.unit; });
      if (same == result.end())
        result.push_back(factor);
      else
        same->power = same->power + factor.power;
    }
    std::erase_if(result, [](const Unit::Factor& f) { return f.power == Rational(0); });
    return result;
  }

  // factor ([* /] factor)*, every factor raised to `power`.
  void read_product(const Rational& power, int depth) {
    skip_blanks();
    bool divided = false;
    for (;;) {
      read_factor(divided ? power * Rational(-1) : power, depth);
      skip_blanks();
      if (at_end()) return;
      divided = skip("/");
      if (!divided) skip_multiplication();
      skip_blanks();
    }
  }

  void read_factor(const Rational& power, int depth) {
    const std::size_t start = at_;
    if (skip("(")) {
      if (depth == kMostParentheses) fail("a unit with too many parentheses");
      const std::size_t before = factors_.size();
      read_product(1, depth + 1);
      if (!skip(")")) fail("expected ')' in a unit");
      const Rational raised = read_power() * power;
      for (std::size_t k = before; k < factors_.size(); ++k)
        factors_[k].power = factors_[k].power * raised;
      return;
    }
    if (skip("1")) return;
    const std::string name = read_name();
    if (name.empty()) fail("expected a unit");
    const NamedUnit* unit = nullptr;
    try {
      unit = find_named_unit(name);
    } catch (const std::runtime_error& error) {
      throw UnitError(start, error.what());
    }
    if (unit == nullptr) {
      const std::string likely = likely_unit(name);
      throw UnitError(start, "unknown unit: " + name +
                                 (likely.empty() ? "" : "; did you mean " + likely + "?"));
    }
    const Rational own = read_power();
    if (own == Rational(0)) throw UnitError(start, "the power 0 leaves no unit");
    if (factors_.size() == kMostFactors) throw UnitError(start, "a unit with too many factors");
    factors_.push_back({unit, own * power});
  }

  // Letters, "%" and what lies beyond ASCII, up to a sign that means something else; with digits
  // among them where that is a name, as in "inH2O".
  std::string read_name() {
    const std::size_t start = at_;
    skip_letters(false);
    std::size_t end = at_;
    skip_letters(true);
    if (at_ > end && is_unit(text_.substr(start, at_ - start))) end = at_;
    at_ = end;
    return std::string(text_.substr(start, end - start));
  }

  void skip_letters(bool digits) {
    for (; at_ < text_.size() && !at_raised_or_sign(); ++at_) {
      const char c = text_[at_];
      const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '%' ||
                          c == '_' || static_cast<unsigned char>(c) >= 0x80;
      if (!letter && !(digits && c >= '0' && c <= '9')) return;
    }
  }

  static bool is_unit(std::string_view name) try {
    return find_named_unit(std::string(name)) != nullptr;
  } catch (const std::runtime_error&) {
    return false;
  }

  bool at_raised_or_sign() const {
    auto here = [&](std::string_view s) { return rest().starts_with(s); };
    return here(kRaisedMinus) || std::any_of(std::begin(kRaised), std::end(kRaised), here) ||
           std::any_of(std::begin(kMultiplication), std::end(kMultiplication), here);
  }

  // "^2", "^-1", "^(1/2)", "2", "-1", "²", or nothing.
  Rational read_power() {
    if (skip("^") || skip("**")) {
      if (!skip("(")) return read_integer();
      const int numerator = read_integer();
      const int denominator = skip("/") ? read_integer() : 1;
      if (denominator == 0) fail("a power of a unit divides by zero");
      if (!skip(")")) fail("expected ')' in a unit");
      return {numerator, denominator};
    }
    if (const auto raised = read_raised()) return *raised;
    const bool digit = at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9';
    return digit || (rest().size() > 1 && rest()[0] == '-') ? Rational(read_integer()) : 1;
  }

  int read_integer() {
    const bool negative = skip("-");
    if (!negative) skip("+");
    int value = 0;
    const std::size_t start = at_;
    for (; at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9'; ++at_) {
      value = value * 10 + (text_[at_] - '0');
      if (value > kMostPower) throw UnitPowerError();
    }
    if (at_ == start) fail("expected the power of a unit");
    return negative ? -value : value;
  }

  std::optional<Rational> read_raised() {
    const bool negative = skip(kRaisedMinus);
    int value = 0, digits = 0;
    for (bool more = true; more && digits < 3;) {
      more = false;
      for (int d = 0; d < 10 && !more; ++d)
        if (skip(kRaised[d])) {
          value = value * 10 + d;
          more = ++digits > 0;
        }
    }
    if (digits == 0 && negative) fail("expected the power of a unit");
    return digits == 0 ? std::nullopt : std::optional(Rational(negative ? -value : value));
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Unit::Factor> factors_;
};

}  // namespace

const Unit* parse_unit(std::string_view text, Unit::Origin origin) {
  return UnitReader(text).read(origin);
}

}  // namespace worksheet
