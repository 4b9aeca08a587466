// Rotations that are kept back give the bits of rotations applied at once, in every kernel set; the
// arrays that hold them are filled to their ends.
#include <optional>

#include "pack/memory.hpp"
#include "pack/numeric/rotation_batch.hpp"
#include "pack/numeric/vector_plain.hpp"
#include "tests/support/allocation_faults.hpp"
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

constexpr int kBatchOrders[] = {2, 3, 7, 8, 9, 20, 33, 34, 70};
constexpr int kRows = 205;

TEST_P(Rotations, OfSweepsThatFallAndRiseAreThoseOfThePlainLoop) {
  for (const int n : kBatchOrders)
    for (const bool rising : {false, true}) {
      const Dense start = random_dense(kRows, n, 1);
      Dense expected = start, a = start;
      const Array<Rotation> room = new_array<Rotation>(kept_rotations(n));
      const Doubles panel = new_doubles(panel_size(n));
      const RealView columns = {a.a.data(), kRows};
      RotationBatch batch(kRows, rising ? RealView{columns.column(n - 1), -kRows} : columns, n,
                          room.get(), panel.get());
      const auto all = sweeps(n);
      // Without memory for panels the array is rotated where it stands.
      auto faults =
          std::make_optional<AllocationFaults>(0, Failing::once, n % 2 == 0 ? SIZE_MAX : 0);
      for (int k = 0; const auto& [first, last] : all) {
        Rotation* place = batch.sweep(first, last - first + 1);
        for (int j = first; j <= last; ++j) {
          *place++ = rotation(k, j);
          const auto [c, s] = rotation(k, j);
          const int at = rising ? n - 1 - j : j;
          plain::rotate(kRows, c, s, &expected(0, at), &expected(0, rising ? at - 1 : at + 1));
        }
        // Of columns that are no neighbours, before the panels and in them.
        if (++k == 10 || k == 135) {
          batch.rotate(0, n - 1, {0.6, 0.8});
          plain::rotate(kRows, 0.6, 0.8, &expected(0, rising ? n - 1 : 0),
                        &expected(0, rising ? 0 : n - 1));
        }
      }
      batch.finish();
      const bool happened = faults->happened();
      faults.reset();
      EXPECT_EQ(happened, n % 2 != 0 && kRows * n > RotationBatch::kFewElements);
      EXPECT_EQ(a.a, expected.a) << n << rising;
    }
}

IN_EVERY_KERNEL_SET(Rotations);

}  // namespace
}  // namespace matrix_pack
