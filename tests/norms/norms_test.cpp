// The norms: exact values, relations, messages and extreme elements.
#include "norms/norms.hpp"

#include <cmath>

#include "norms/norm_cores.hpp"
#include "tests/support/eigen_zoo.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Norms = InHost;

TEST_F(Norms, ValuesOfSmallMatricesAreExact) {
  aMatrix* a = host.matrix({{1, -2, 3}, {-4, 5, -6}, {7, -8, 20}});
  expect_number(norm1(c, a), 29);
  expect_number(normi(c, a), 35);
  expect_number(norme(c, host.matrix({{1, 2}, {2, 4}})), 5);
  expect_number(norm2(c, host.matrix({{3, 0}, {0, -5}})), 5);
  // 3 + 4i, 5 + 12i, 8 - 6i and 2i: the moduli are 5, 13, 10 and 2.
  aMatrix* z = host.complex_matrix({{{3, 4}, {5, 12}}, {{8, -6}, {0, 2}}});
  expect_number(norm1(c, z), 15);
  expect_number(normi(c, z), 18);
  expect_number(norme(c, z), std::sqrt(25.0 + 169 + 100 + 4));
  expect_number(norm2(c, host.complex_matrix({{{0, 0}, {0, -3}}, {2, 0}})), 3);
  expect_number(norm2(c, host.complex_matrix({{{3, 4}}})), 5);
}

// One nonzero element at every place; without and with an imaginary array, and without a real one.
TEST_F(Norms, ASingleElementIsItsMagnitude) {
  for (int n : {1, 2, 5})
    for (std::size_t at = 0; at < std::size_t(n * n); ++at) {
      aMatrix* const real = host.matrix(n, n, std::vector<double>(std::size_t(n * n)));
      aMatrix* const complex = host.complex_matrix(n, n, elements(real));
      aMatrix* const imaginary = host.complex_matrix(n, n, elements(real));
      ::operator delete(std::exchange(imaginary->re, nullptr));
      real->re[at] = complex->re[at] = imaginary->im[at] = -7;
      for (aMatrix* a : {real, complex, imaginary})
        for (auto norm : {norm1, norm2, norme, normi}) expect_number(norm(c, a), 7);
    }
  for (auto norm : {norm1, norm2, norme, normi}) {
    expect_number(norm(c, host.lean(3, 3)), 0);
    expect_number(norm(c, host.complex_matrix({{0, 0}, {0, 0}})), 0);
  }
}

TEST_F(Norms, ComplexNorm2AgreesWithTheSingularValues) {
  WorstRatio worst("complex norm2 against singular values", 10);
  for (const int n : {1, 2, 3, 5, 8, 9, 33})
    for (const auto& [name, a, imaginary] : zoo(n, n, 31)) {
      // The eigenvalue iteration multiplies squares of squares: it has no room for extreme sizes.
      if (size_of(a) > 1e50 || (size_of(a) > 0 && size_of(a) < 1e-50)) continue;
      TestHost host;
      const double real = real_number(norm2(c, host.matrix(n, n, a.a)));
      const double complex = real_number(norm2(c, turned(host, a)));
      if (real == 0) {
        EXPECT_EQ(complex, 0) << name;
      } else {
        worst.expect(std::fabs(complex - real) / (n * 0x1p-52 * real), name);
      }
    }
}

TEST_F(Norms, MessagesNameTheArgumentAtFault) {
  for (auto norm : {norm1, norm2, norme, normi}) {
    expect_error(norm(c, host.scalar(1)), "must be array", 0, 1);
    expect_error(norm(c, host.string("a")), "must be array", 0, 1);
    expect_error(norm(c, host.matrix({{1, 2, 3}, {4, 5, 6}})), "must be square", 0, 1);
    expect_error(norm(c, host.complex_matrix({{1, 2}})), "must be square", 0, 1);
  }
  for (auto core : {norm1_real, norm1_complex, normi_real, normi_complex}) {
    double norm;
    EXPECT_STREQ(core(host.complex_matrix({{1, 2}}), &norm), "must be square");
  }
}

// The scaled modulus does not overflow early, the squares of norme do; under the guard of norme and
// normi a fault becomes a message, outside it an infinity or a NaN goes on.
TEST_F(Norms, ExtremeElements) {
  aMatrix* large = host.complex_matrix({{{3e200, 4e200}, 0}, {0, 0}});
  EXPECT_DOUBLE_EQ(real_number(norm1(c, large)), 5e200);
  EXPECT_DOUBLE_EQ(real_number(normi(c, large)), 5e200);
  expect_error(norme(c, large), "overflow", 0, 0);
  expect_number(norme(c, host.matrix({{1e-200}})), 0);
  expect_number(norm1(c, host.matrix({{kInf, 1}, {1, 1}})), kInf);
  expect_number(normi(c, host.matrix({{kInf, 1}, {1, 1}})), kInf);
  expect_number(norm1(c, host.complex_matrix({{{kInf, 1}}})), kInf);
  // A NaN is never the largest sum.
  expect_number(norm1(c, host.matrix({{kNan, 1}, {1, 1}})), 2);
  expect_error(normi(c, host.matrix({{kNan, 1}, {1, 1}})), "floating point error", 0, 0);
  expect_error(norm2(c, host.matrix({{kNan, 1}, {1, 1}})), "too many iterations", 0, 0);
  EXPECT_TRUE(std::isnan(real_number(norm2(c, host.complex_matrix({{{kNan, 0}}})))));
}

}  // namespace
}  // namespace matrix_pack
