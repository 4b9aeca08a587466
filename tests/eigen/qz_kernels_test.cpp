// The kernels of the QZ method give the bits of their plain loops, in every kernel set.
#include <functional>

#include "eigen/qz/plain.hpp"
#include "eigen/qz/reflector.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using QzLoops = test::InEveryKernelSet;

using namespace test;

// Counts around the widths of vectors and tiles, and around the groups of them.
constexpr int kCounts[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 13, 16, 17, 34, 35, 66};

template <class Reflector>
std::vector<Reflector> random_reflectors(int count, unsigned seed) {
  const Dense x = random_dense(3, count, seed);
  std::vector<Reflector> h;
  for (int i = 0; i < count; ++i) {
    if constexpr (std::is_same_v<Reflector, Reflector2>)
      h.push_back(reflector(x(0, i), x(1, i)));
    else
      h.push_back(reflector(x(0, i), x(1, i), x(2, i)));
  }
  return h;
}

// Runs `body` with the kernels of each set and with the plain ones, on copies of a matrix that has
// more rows than the body touches.
using Body = std::function<void(const QzKernels&, double* x, double* y, std::ptrdiff_t ld)>;

void expect_plain_bits(int rows, int cols, const std::string& what, const Body& body) {
  const Dense start_x = random_dense(rows + 3, cols + 1, 1);
  const Dense start_y = random_dense(rows + 3, cols + 1, 2);
  Dense expected_x = start_x;
  Dense expected_y = start_y;
  body(plain::qz_kernels, expected_x.a.data() + 1, expected_y.a.data() + 1, rows + 3);
  Dense x = start_x;
  Dense y = start_y;
  body(qz_kernels(), x.a.data() + 1, y.a.data() + 1, rows + 3);
  EXPECT_TRUE(x.a == expected_x.a && y.a == expected_y.a) << what << " " << rows << "x" << cols;
}

TEST_P(QzLoops, RowsAreTransformedAsByPlainLoops) {
  for (const int count : kCounts) {
    const auto h2 = random_reflectors<Reflector2>(count, 3);
    const auto h3 = random_reflectors<Reflector3>(count, 4);
    for (const int cols : kCounts) {
      expect_plain_bits(count + 1, cols, "chase_rows2", [&](auto& k, auto* x, auto* y, auto ld) {
        k.chase_rows2(count, h2.data(), cols, x, y, ld);
      });
      expect_plain_bits(count + 2, cols, "chase_rows3", [&](auto& k, auto* x, auto* y, auto ld) {
        k.chase_rows3(count, h3.data(), cols, x, y, ld);
      });
      expect_plain_bits(count + 1, cols, "climb_rows", [&](auto& k, auto* x, auto*, auto ld) {
        k.climb_rows(count, h2.data(), cols, x, ld);
      });
    }
  }
}

TEST_P(QzLoops, ColumnsAreTransformedAsByPlainLoops) {
  const Reflector3 g = random_reflectors<Reflector3>(1, 5)[0];
  for (const int rows : kCounts) {
    for (const int count : kCounts) {
      const auto h = random_reflectors<Reflector2>(count, 6);
      expect_plain_bits(rows, count + 1, "climb_cols", [&](auto& k, auto* x, auto*, auto ld) {
        k.climb_cols(count, h.data(), rows, x, ld);
      });
    }
    const Reflector2 h = random_reflectors<Reflector2>(1, 7)[0];
    expect_plain_bits(rows, 3, "reflect_cols", [&](auto& k, auto* x, auto* y, auto ld) {
      k.reflect_cols2(h, rows, x, ld);
      k.reflect_cols3(g, h, rows, y, ld);
    });
  }
}

TEST_P(QzLoops, BackSubstitutionIsThatOfPlainLoops) {
  for (const int n : kCounts) {
    expect_plain_bits(n, 4, "pencils", [&](auto& k, auto* x, auto* y, auto ld) {
      k.add_pencil(n, 0.7, 1.3, x, x + ld, 0.9, y);
      k.add_complex_pencil(n, 0.7, 1.3, -0.6, x, x + ld, 0.9, 0.4, y + ld, y + 2 * ld);
    });
  }
}

// A reflector annihilates all but the first of its numbers and keeps their norm, also where squares
// overflow or underflow; zeros give the identity.
TEST_P(QzLoops, ReflectorsAnnihilate) {
  for (const double scale : {1.0, 1e-300, 1e-160, 1e160, 1e300}) {
    for (const auto& [p, q, r] : {std::array{3.0, 4.0, 12.0},
                                  {-3.0, 4.0, 12.0},
                                  {0.0, 4.0, -3.0},
                                  {5.0, 0.0, 0.0},
                                  {0.0, 0.0, 2.0}}) {
      double x1 = p * scale;
      double x2 = q * scale;
      double x3 = r * scale;
      const double norm = std::hypot(p, q, r);
      plain::reflect(reflector(x1, x2, x3), x1, x2, x3);
      EXPECT_NEAR(std::fabs(x1) / scale, norm, 8 * 0x1p-52 * norm);
      EXPECT_NEAR(x2 / scale, 0, 4 * 0x1p-52 * norm);
      EXPECT_NEAR(x3 / scale, 0, 4 * 0x1p-52 * norm);
    }
  }
  EXPECT_TRUE(is_identity(reflector(0, 0)) && is_identity(reflector(0, 0, 0)));
  EXPECT_FALSE(is_identity(reflector(0, 1e-320)));
}

IN_EVERY_KERNEL_SET(QzLoops);

}  // namespace
}  // namespace matrix_pack
