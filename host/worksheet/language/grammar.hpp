// The grammar of statements.
#pragma once

#include <tao/pegtl.hpp>

namespace worksheet::grammar {

using namespace tao::pegtl;

struct blank : one<' ', '\t', '\r', '\n'> {};
struct ws : star<blank> {};

template <char c>
struct token : seq<one<c>, ws> {};

struct letter : sor<ranges<'a', 'z', 'A', 'Z', '_', '_'>, utf8::range<0x80, 0x10FFFF>> {};
struct name_character : sor<letter, digit> {};
struct keyword : seq<sor<string<'i', 'n'>, string<'i', 'f'>>, not_at<name_character>> {};
struct identifier : seq<letter, star<name_character>> {};
struct name : seq<not_at<keyword>, identifier> {};

struct digits : plus<digit> {};
struct exponent_digits : plus<digit> {};
struct exponent : seq<one<'e', 'E'>, opt<one<'+', '-'>>, must<exponent_digits>> {};
struct decimal
    : seq<sor<seq<digits, opt<one<'.'>, opt<digits>>>, seq<one<'.'>, digits>>, opt<exponent>> {};
struct imaginary_mark : one<'i', 'j'> {};
struct end_of_number : not_at<name_character> {};
struct number : seq<decimal, opt<imaginary_mark>, must<end_of_number>> {};

struct escape : seq<one<'\\'>, must<one<'"', '\\', 'n', 't'>>> {};
struct quote_end : one<'"'> {};
struct text_content : star<sor<escape, not_one<'"', '\\', '\n'>>> {};
struct text : seq<one<'"'>, text_content, must<quote_end>> {};

struct unit_end : one<'}'> {};
struct unit_content : star<not_one<'}', '\n'>> {};
struct unit : seq<one<'{'>, unit_content, must<unit_end>> {};

struct expression;
struct operand_expected : seq<expression> {};

struct arguments : opt<list_must<operand_expected, token<','>>> {};
struct parenthesis_end : one<')'> {};
struct call_name : identifier {};
struct call : seq<call_name, ws, token<'('>, arguments, must<parenthesis_end>> {};
struct parenthesized : seq<token<'('>, must<operand_expected>, must<parenthesis_end>> {};

struct bracket_end : one<']'> {};
struct row : list_must<operand_expected, token<','>> {};
struct matrix : seq<token<'['>, must<row>, star<token<';'>, must<row>>, must<bracket_end>> {};

struct variable : name {};
struct primary : sor<number, text, matrix, parenthesized, call, variable> {};

struct subscripts : list_must<operand_expected, token<','>> {};
struct index : seq<token<'['>, must<subscripts>, must<bracket_end>> {};
struct transpose : one<'\''> {};
struct postfix : seq<primary, ws, star<sor<index, transpose, unit>, ws>> {};

struct minus : one<'-'> {};
struct sign : sor<minus, one<'+'>> {};
// The exponent may have a sign of its own; a sign before the base applies to the whole power.
struct exponent_operand : seq<star<sign, ws>, must<postfix>> {};
struct power : seq<postfix, star<token<'^'>, exponent_operand>> {};
struct signed_power : seq<star<sign, ws>, power> {};

struct product_operator : one<'*', '/'> {};
struct product_operand : seq<signed_power> {};
struct product : seq<product_operand, star<product_operator, ws, must<product_operand>>> {};
struct sum_operator : one<'+', '-'> {};
struct sum : seq<product, star<sum_operator, ws, must<product>>> {};
struct comparison_operator
    : sor<string<'<', '='>, string<'>', '='>, string<'=', '='>, string<'!', '='>, one<'<', '>'>> {};
struct comparison : seq<sum, star<comparison_operator, ws, must<sum>>> {};
struct in_keyword : seq<string<'i', 'n'>, not_at<name_character>, ws> {};
struct wanted_unit : seq<in_keyword, must<unit>, ws> {};
struct conversion : seq<comparison, star<wanted_unit>> {};
struct expression : seq<conversion> {};

struct assignment_sign : seq<one<'='>, not_at<one<'='>>, ws> {};
struct target : name {};
struct targets : list<seq<target, ws>, token<','>> {};
struct parameter : name {};
struct parameters : list<seq<parameter, ws>, token<','>> {};
struct defined_name : name {};
struct definition : seq<defined_name, ws, token<'('>, parameters, token<')'>, assignment_sign,
                        must<operand_expected>> {};
struct assignment : seq<targets, assignment_sign, must<operand_expected>> {};
struct display : seq<must<operand_expected>> {};
struct end_of_statement : eof {};
struct statement : seq<ws, sor<definition, assignment, display>, must<end_of_statement>> {};

// What to say where a rule had to match and did not.
template <class>
inline constexpr const char* message = "unexpected text";
template <>
inline constexpr auto message<exponent_digits> = "expected the digits of an exponent";
template <>
inline constexpr auto message<end_of_number> = "a number ends in a letter";
template <>
inline constexpr auto message<one<'"', '\\', 'n', 't'>> = "expected one of \\\" \\\\ \\n \\t";
template <>
inline constexpr auto message<quote_end> = "expected '\"' at the end of the text";
template <>
inline constexpr auto message<unit_end> = "expected '}'";
template <>
inline constexpr auto message<unit> = "expected a unit in braces";
template <>
inline constexpr auto message<operand_expected> = "expected an expression";
template <>
inline constexpr auto message<parenthesis_end> = "expected ')'";
template <>
inline constexpr auto message<bracket_end> = "expected ']'";
template <>
inline constexpr auto message<row> = "expected an element";
template <>
inline constexpr auto message<subscripts> = "expected an index";
template <>
inline constexpr auto message<postfix> = "expected an exponent";
template <>
inline constexpr auto message<product_operand> = "expected an operand";
template <>
inline constexpr auto message<product> = "expected an operand";
template <>
inline constexpr auto message<sum> = "expected an operand";

}  // namespace worksheet::grammar
