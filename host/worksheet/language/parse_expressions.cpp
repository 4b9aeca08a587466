// Expressions: operators, from those that bind least on.
#include "host/worksheet/language/parser.hpp"

namespace worksheet {

Parser::Index Parser::expression(const char* expected) {
  const std::size_t begin = at_;
  Index value = chain(kEither, expected);
  while (word() == "in") {
    advance(2);
    if (look() != '{') fail("expected a unit in braces");
    List parts;
    add(parts, value);
    add(parts, unit());
    value = make(Kind::conversion, begin, end_, parts.first);
  }
  return value;
}

// The length of the operator of that level that stands here; 0 if none does. An operator with a
// '=' behind it changes what stands on the left.
std::size_t Parser::operator_length(Level level) const {
  const char c = look(), next = look(1);
  switch (level) {
    case kEither:
      return c == '|' && next == '|' ? 2 : 0;
    case kBoth:
      return c == '&' && next == '&' ? 2 : 0;
    case kComparison:
      if (next == '=' && (c == '<' || c == '>' || c == '=' || c == '!')) return 2;
      return c == '<' || c == '>' ? 1 : 0;
    case kSum:
      return c == '+' || c == '-' ? 1 : 0;
    default:
      if (c == '.' && (next == '*' || next == '/')) return 2;
      return c == '*' || c == '/' || c == '\\' ? 1 : 0;
  }
}

Parser::Index Parser::chain(Level level, const char* expected) {
  if (level == kRange) return range(expected);
  if (level == kOperand) return signed_power(expected);
  const auto tighter = static_cast<Level>(level + 1);
  const std::size_t begin = at_;
  const Index first = chain(tighter, expected);
  if (operator_length(level) == 0) return first;
  List parts;
  add(parts, first);
  while (const std::size_t length = operator_length(level)) {
    add(parts, make(Kind::operation, at_, at_ + length));
    advance(length);
    add(parts, chain(tighter, kNoOperand));
  }
  return make(level <= kBoth ? Kind::logic : Kind::chain, begin, end_, parts.first);
}

Parser::Index Parser::range(const char* expected) {
  const std::size_t begin = at_;
  const Index first = chain(kSum, expected);
  if (look() != ':') return first;
  List parts;
  add(parts, first);
  for (int more = 0; more < 2 && take(':'); ++more) add(parts, chain(kSum, kNoOperand));
  return make(Kind::range, begin, end_, parts.first);
}

// Takes plus and minus signs; gives whether they change the sign.
bool Parser::take_signs() {
  bool minus = false;
  for (; look() == '+' || look() == '-'; advance(1)) minus ^= look() == '-';
  return minus;
}

// Takes signs with '!' among them as operations.
void Parser::take_prefixes(List& list) {
  for (;;) {
    const std::size_t begin = at_;
    if (take_signs()) add(list, make(Kind::operation, begin, begin + 1));
    if (look() != '!' || look(1) == '=') return;
    add(list, make(Kind::operation, at_, at_ + 1));
    advance(1);
  }
}

std::size_t Parser::power_length() const {
  if (look() == '^') return 1;
  return look() == '.' && look(1) == '^' ? 2 : 0;
}

// A sign before the base applies to the whole power; the exponent may have one of its own.
Parser::Index Parser::signed_power(const char* expected) {
  const std::size_t begin = at_;
  const bool minus = take_signs();
  List prefixes;
  if (look() == '!') {
    at_ = begin;
    take_prefixes(prefixes);
  }
  const std::size_t base = at_;
  Index result = postfix(begin, expected);
  if (power_length() != 0) {
    List parts;
    add(parts, result);
    while (const std::size_t length = power_length()) {
      add(parts, make(Kind::operation, at_, at_ + length));
      advance(length);
      const std::size_t start = at_;
      const bool negative = take_signs();
      const Index exponent = postfix(at_, "expected an exponent");
      add(parts, negative ? make(Kind::negation, start, end_, exponent) : exponent);
    }
    result = make(Kind::power, base, end_, parts.first);
  }
  if (prefixes.first != 0) {
    add(prefixes, result);
    return make(Kind::prefix, begin, end_, prefixes.first);
  }
  return minus ? make(Kind::negation, begin, end_, result) : result;
}

}  // namespace worksheet
