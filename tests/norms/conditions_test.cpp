// The condition numbers: exact and published values, singular and nearly singular matrices,
// messages.
#include <cmath>

#include "norms/norms.hpp"
#include "pack/exports.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Conditions = InHost;

using Condition = Anyval* (*)(EfiCallContext*, Anyval*);
const std::vector<Condition> kAll = {cond1, cond2, conde, condi};

TEST_F(Conditions, ValuesAreTheKnownOnes) {
  const auto check = [&](Condition condition, const Dense& a, double known) {
    // The error of the inverse grows with the condition.
    const double gate = 4 * a.rows * 0x1p-52 * known * known;
    EXPECT_NEAR(real_number(condition(c, host.matrix(a.rows, a.cols, a.a))), known, gate);
    EXPECT_NEAR(real_number(condition(c, turned(host, a))), known, 4 * gate);
  };
  for (int n : {1, 2, 5, 20}) {
    check(cond1, identity_dense(n), 1);
    check(cond2, identity_dense(n), 1);
    check(condi, identity_dense(n), 1);
    check(conde, identity_dense(n), n);
  }
  const Dense a(2, 2, {2, 1, 1, 1});
  check(cond1, a, 9);
  check(condi, a, 9);
  check(conde, a, 7);
  check(cond2, a, (7 + std::sqrt(45)) / 2);
  // Hilbert matrices of order 3, 4 and 5.
  const double one_norm[] = {748, 28375, 943656};
  const double two_norm[] = {524.0567775860644, 15513.73873892924, 476607.2502422687};
  for (int n = 3; n <= 5; ++n) {
    const Dense hilbert = filled(n, n, [](int i, int j) { return 1.0 / (i + j + 1); });
    check(cond1, hilbert, one_norm[n - 3]);
    check(condi, hilbert, one_norm[n - 3]);
    check(cond2, hilbert, two_norm[n - 3]);
  }
}

TEST_F(Conditions, AreExactWhereNothingRounds) {
  for (auto condition : {cond1, cond2, condi}) {
    expect_number(condition(c, host.matrix({{1, 0}, {0, -4}})), 4);
    expect_number(condition(c, host.complex_matrix({{{0, 4}, 0}, {0, 1}})), 4);
  }
  expect_number(cond2(c, host.matrix({{0x1p-900, 0}, {0, 1}})), 0x1p900);
}

// A nearly singular matrix gives a large number where the inverse is refused.
TEST_F(Conditions, OnlyAnExactZeroIsSingular) {
  aMatrix* nearly = host.matrix({{1, 1}, {0, 1e-17}});
  expect_error(inv(c, nearly), "singular matrix", 0, 0);
  for (auto condition : kAll) {
    EXPECT_GT(real_number(condition(c, nearly)), 1e17);
    EXPECT_LT(real_number(condition(c, nearly)), 1e18);
    expect_error(condition(c, host.matrix({{1, 0}, {0, 0}})), "singular matrix", 0, 0);
    expect_error(condition(c, host.complex_matrix({{{1, 1}, 0}, {0, 0}})), "singular matrix", 0, 0);
  }
}

TEST_F(Conditions, MessagesNameTheArgumentAtFault) {
  for (auto condition : kAll) {
    expect_error(condition(c, host.scalar(1)), "must be array", 0, 0);
    for (aMatrix* wide : {host.matrix({{1, 2, 3}, {4, 5, 6}}), host.complex_matrix({{1, 2}})})
      if (condition == cond1)
        expect_error(condition(c, wide), "must be square", 1, 0);
      else
        expect_error(condition(c, wide), "must be square", 0, 1);
  }
  // Without a real array there is nothing to factorize.
  expect_error(cond1(c, host.lean(2, 2)), "Unknown error", 0, 0);
  expect_error(cond2(c, host.lean(2, 2)), "singular matrix", 0, 0);
}

}  // namespace
}  // namespace matrix_pack
