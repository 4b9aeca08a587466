// Rotations that are kept back give the bits of rotations applied at once, in every kernel set; the
// arrays that hold them are filled to their ends.
#include "pack/memory.hpp"
#include "pack/numeric/rising_rotations.hpp"
#include "pack/numeric/vector_plain.hpp"
#include "svd/recorded_rotations.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using Rotations = test::InEveryKernelSet;

using namespace test;

// A rotation that depends on its sweep and column.
Rotation rotation(int sweep, int column) {
  const double angle = 0.1 * sweep + 0.37 * column;
  return {std::cos(angle), std::sin(angle)};
}

// More sweeps than are kept back at once, all of them short, or as long as can be, and then one
// that fills what room is left.
std::vector<std::pair<int, int>> sweeps(int n) {
  std::vector<std::pair<int, int>> all;
  for (int k = 0; k < 70; ++k) all.emplace_back(k % (n - 1), std::min(k % (n - 1) + k % 3, n - 2));
  for (int k = 0; k < 70; ++k) all.emplace_back(k == 32 && n > 33 ? n - 33 : 0, n - 2);
  return all;
}

constexpr int kOrders[] = {2, 3, 7, 8, 9, 20, 33, 34, 70};
constexpr int kRows = 45;

TEST_P(Rotations, RisingOnesAreThoseOfThePlainLoop) {
  for (const int n : kOrders) {
    const Dense start = random_dense(kRows, n, 1);
    Dense expected = start;
    for (int k = 0; const auto& [first, last] : sweeps(n)) {
      for (int j = last; j >= first; --j) {
        const auto [c, s] = rotation(k, j);
        plain::rotate(kRows, c, s, &expected(0, j + 1), &expected(0, j));
      }
      ++k;
    }
    Dense a = start;
    RisingRotations rotations;
    ASSERT_TRUE(rotations.open(a.a.data(), kRows, kRows, n));
    for (int k = 0; const auto& [first, last] : sweeps(n)) {
      Rotation* place = rotations.sweep(first, last);
      for (int j = last; j >= first; --j) *place++ = rotation(k, j);
      ++k;
    }
    rotations.flush();
    EXPECT_EQ(a.a, expected.a) << n;
  }
}

TEST_P(Rotations, RecordedOnesAreThoseOfThePlainLoop) {
  for (const int n : kOrders) {
    const Dense left_start = random_dense(kRows, n, 2), right_start = random_dense(n, n, 3);
    Dense expected_left = left_start, expected_right = right_start;
    for (int k = 0; const auto& [first, last] : sweeps(n)) {
      for (int j = first; j <= last; ++j) {
        const auto [c, s] = rotation(k, j);
        plain::rotate(n, c, s, &expected_right(0, j), &expected_right(0, j + 1));
        plain::rotate(kRows, s, c, &expected_left(0, j), &expected_left(0, j + 1));
      }
      if (k++ == 40) plain::rotate(kRows, 0.6, 0.8, &expected_left(0, 0), &expected_left(0, n - 1));
    }
    plain::scale(n, -1, &expected_right(0, n - 1));
    Dense left = left_start, right = right_start;
    const Doubles work = new_doubles(RecordedRotations::work_size(n));
    RecordedRotations rotations(n, {kRows, left.a.data(), kRows}, {n, right.a.data(), n},
                                work.get());
    for (int k = 0; const auto& [first, last] : sweeps(n)) {
      rotations.begin_sweep(first, last - first + 1);
      for (int j = first; j <= last; ++j) {
        const auto [c, s] = rotation(k, j);
        rotations.right(c, s);
        rotations.left(s, c);
      }
      if (k++ == 40) rotations.cancel(0, n - 1, 0.6, 0.8);
    }
    rotations.negate(n - 1);
    rotations.finish();
    EXPECT_EQ(right.a, expected_right.a) << n;
    EXPECT_EQ(left.a, expected_left.a) << n;
  }
}

IN_EVERY_KERNEL_SET(Rotations);

}  // namespace
}  // namespace matrix_pack
