// Elements of matrices with and without part arrays, and sizes that are exhausted memory.
#include <cmath>
#include <limits>

#include "pack/elements.hpp"
#include "pack/memory.hpp"
#include "tests/support/test_host.hpp"

namespace matrix_pack {
namespace {

using namespace test;
using Elements = InHost;

TEST_F(Elements, AbsentArraysReadAsZeroAndAppearWithTheFirstNonzeroValue) {
  aMatrix* lean = host.lean(2, 3);
  EXPECT_TRUE(elem_re(lean, 1, 2) == 0.0 && !std::signbit(elem_re(lean, 1, 2)));
  EXPECT_EQ(elem_im(lean, 1, 2), 0.0);
  set_elem(lean, 1, 2, 0.0, std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(lean->re, nullptr);
  EXPECT_EQ(lean->im, nullptr);
  store_if_present(lean->re, 2, 1, 2, 5.0);
  EXPECT_EQ(lean->re, nullptr);

  set_im(lean, 1, 2, 4.0);
  EXPECT_EQ(lean->re, nullptr);
  EXPECT_EQ(im_parts(lean), (std::vector<double>{0, 0, 0, 0, 0, 4}));
  set_im(lean, 1, 2, 0.0);
  EXPECT_EQ(elem_im(lean, 1, 2), 0.0);
  ASSERT_NE(lean->im, nullptr);
}

TEST_F(Elements, HugeMagnitudesAreFoundFromTheirBoundsOn) {
  const double below307 = std::nextafter(1e307, 0.0);
  const double below104 = std::nextafter(1e104, 0.0);
  EXPECT_FALSE(has_huge_element(host.matrix({{1, -below307}})));
  EXPECT_TRUE(has_huge_element(host.matrix({{1, -1e307}})));
  EXPECT_TRUE(has_huge_element(host.imaginary({{1}, {1e307}})));
  EXPECT_FALSE(has_huge_offdiag(host.matrix({{1e200, below104}, {0, 1}})));
  EXPECT_TRUE(has_huge_offdiag(host.matrix({{1, 0}, {-1e104, 1}})));
  EXPECT_TRUE(has_huge_offdiag(host.imaginary({{1, 1e104}, {0, 1}})));
}

TEST(Memory, ASizeThatCannotBeRepresentedIsExhaustedMemory) {
  EXPECT_EQ(new_part(65536, 8192), nullptr);  // 2^32 bytes: one more than a matrix can state.
  EXPECT_EQ(new_part(0x7FFFFFFF, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(new_part(-2, -2), nullptr);
  EXPECT_EQ(new_doubles(std::numeric_limits<std::int64_t>::max() / 4), nullptr);
  EXPECT_NE(new_part(0, 5), nullptr);
}

}  // namespace
}  // namespace matrix_pack
