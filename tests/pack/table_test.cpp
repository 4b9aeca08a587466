// The function table and its records.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "pack/exports.hpp"

namespace {

const char* const kNullRule = nullptr;
constexpr const char* kR1 = " (%lambda (a) (-EqDims a)) ";

struct ExpectedRow {
  const char* name;
  sFunctionInfo* signature;
  const sCons* context;
  int flags;
  const char* rule;
};

std::vector<ExpectedRow> expected_rows() {
  const sCons* origin = &ORIGINLIST;
  const sCons* tol = &TOLLIST;
  const char* strip = StripUnit_sString->text;
  return {
      {"rows", Any_to_Any, nullptr, 8, strip},
      {"cols", Any_to_Any, nullptr, 8, strip},
      {"identity", Any_to_Mat, nullptr, 8, kNullRule},
      {"last", Any_Any_to_Num, origin, 12, strip},
      {"length", Any_to_Num, nullptr, 12, strip},
      {"max", Any_to_Num, nullptr, 12, kR1},
      {"min", Any_to_Num, nullptr, 12, kR1},
      {"reverse", Any_to_Mat, nullptr, 12, kR1},
      {"submatrix", Any_Any_Any_Any_Any_Any_to_Any, origin, 12,
       " (%lambda(a b c d e) ( %sequence ( (-VDimless b c d e) ( -EqDims a ) ) ) )"},
      {Transpose_sString->text, Any_to_Mat, nullptr, 12, "-EqDims"},
      {"tr", Any_to_Any, nullptr, 12, "-EqDims"},
      {"augment", Any_Any_to_Mat, nullptr, 12, "-EqDims"},
      {"stack", Mat_Mat_to_Mat, nullptr, 12, "-EqDims"},
      {"matrix", Any_Any_Any_to_Mat, nullptr, 0, " (%lambda(a b function ) ( -VDimless a b )  )"},
      {"cond1", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"cond2", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"conde", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"condi", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"cholesky", Any_to_Mat, nullptr, 12, " (%lambda (a)( -DimsLikeRoot a 2 ) ) "},
      {diag_sString->text, Any_to_Mat, nullptr, 12, kNullRule},
      {"eigenvals", Any_Any_to_Any, tol, 12, kR1},
      {"eigenvecs", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"eigenvec", Any_Any_to_Mat, nullptr, 12, "-EqDimsDimless"},
      {"genvals", Any_Any_Any_to_Any, tol, 12, "-DimsLikeDiv"},
      {"genvecs", Any_Any_Any_to_Any, tol, 12, " (%lambda(a b)( -EqDimsDimless a ) ) "},
      {"geninv", Any_Any_to_Mat, tol, 12, " (%lambda (a)( -DimsLikePower a -1 ) ) "},
      {"lsolve", Any_Any_to_Mat, nullptr, 12, " (%lambda(a b)( -DimsLikeDiv b a ) ) "},
      {"lu", Any_to_Mat, nullptr, 12, kNullRule},
      {"norm1", Any_to_Num, nullptr, 12, "-EqDims"},
      {"norm2", Any_to_Num, nullptr, 12, "-EqDims"},
      {"norme", Any_to_Any, nullptr, 12, "-EqDims"},
      {"normi", Any_to_Any, nullptr, 12, "-EqDims"},
      {"qr", Any_to_Any, nullptr, 12, kNullRule},
      {"rank", Any_to_Any, nullptr, 12, "-EqDimsDimless"},
      {"rref", Any_to_Mat, nullptr, 12, kNullRule},
      {"svd", Any_to_Any, nullptr, 12, kNullRule},
      {"svds", Any_to_Any, nullptr, 12, kNullRule},
  };
}

TEST(FunctionTable, HasEveryRowAsPublished) {
  const std::vector<ExpectedRow> expected = expected_rows();
  ASSERT_EQ(numFuncs, 37);
  ASSERT_EQ(expected.size(), 37u);
  std::set<AnyHandler> handlers;
  for (std::size_t k = 0; k < expected.size(); ++k) {
    const FunctionEntry& row = theEfi[k];
    SCOPED_TRACE(expected[k].name);
    ASSERT_NE(row.name, nullptr);
    EXPECT_EQ(row.name->kind, kStringKind);
    EXPECT_STREQ(row.name->text, expected[k].name);
    EXPECT_EQ(row.signature, expected[k].signature);
    EXPECT_EQ(row.context, expected[k].context);
    EXPECT_EQ(row.flags, expected[k].flags);
    for (const std::uint8_t padding : row.padding) EXPECT_EQ(padding, 0);
    EXPECT_EQ(row.reserved, 0);
    EXPECT_NE(row.handler, nullptr);
    handlers.insert(row.handler);
    EXPECT_STREQ(row.unit_rule == nullptr ? nullptr : row.unit_rule->text, expected[k].rule);
  }
  EXPECT_EQ(handlers.size(), 37u);
}

TEST(FunctionTable, KeepsTheThreeConventionsOfLength) {
  for (int k = 0; k < numFuncs; ++k) {
    const FunctionEntry& row = theEfi[k];
    SCOPED_TRACE(row.name->text);
    const bool hosts_own = row.name == Transpose_sString || row.name == diag_sString;
    if (!hosts_own) {
      EXPECT_EQ(row.name->length, std::string(row.name->text).size() + 1);
    }
    if (row.unit_rule == nullptr || row.unit_rule == StripUnit_sString) continue;
    const std::string rule = row.unit_rule->text;
    EXPECT_EQ(row.unit_rule->length, rule.size() + (rule[0] == '-' ? 1 : 0));
  }
  EXPECT_EQ(string_rows.length, 5);
  EXPECT_EQ(theEfi[9].unit_rule->length, 8);
  EXPECT_EQ(theEfi[5].unit_rule->length, 27);
}

TEST(FunctionTable, NamesTheContextVariables) {
  EXPECT_TRUE(ORIGINLIST.car == ORIGIN_sUnIdent && ORIGINLIST.cdr == nullptr);
  EXPECT_TRUE(TOLLIST.car == &identifier_TOL && TOLLIST.cdr == nullptr);
  EXPECT_EQ(identifier_TOL.kind, 10);
  EXPECT_TRUE(identifier_TOL.word1 == 0 && identifier_TOL.word3 == 2);
  EXPECT_EQ(identifier_TOL.name, &string_TOL);
  EXPECT_STREQ(string_TOL.text, "TOL");
  EXPECT_TRUE(string_TOL.length == 4 && string_TOL.zero == 0);
}

}  // namespace
