// Reflections of columns have the bits of the plain loops, in every kernel set.
#include "pack/numeric/lines.hpp"
#include "pack/numeric/reflection_kernels.hpp"
#include "pack/numeric/vector_plain.hpp"
#include "tests/support/kernel_sets.hpp"
#include "tests/support/zoo.hpp"

namespace matrix_pack {
namespace {

using Reflections = test::InEveryKernelSet;

using namespace test;

// Reflections one after the other, as the factors of a bidiagonalization need them: each sums from
// a row above the one from which the one before it reflects, or from that one. Heights that take
// one pass or two, columns that are whole lines or not, and lines that begin anywhere.
TEST_P(Reflections, OfColumnsAreThoseOfThePlainLoops) {
  constexpr int kCols = 5, kCount = 12;
  for (const int rows : {14, 200, 203, 1032, 1033})
    for (const int ahead : {0, 1}) {
      const Dense vectors = random_dense(rows, kCount, 5);
      const Dense start = random_dense(rows, kCols, 6);
      std::vector<ColumnReflection> reflections;
      for (int i = kCount - 1; i >= 0; --i) {
        const double* const v = &vectors.a[std::size_t(i * rows + i)];
        reflections.push_back({i + 1, v + 1, i + ahead, v + ahead, 3.0 * rows, -2.0});
      }
      Dense expected = start;
      for (const ColumnReflection& r : reflections)
        for (int j = 0; j < kCols; ++j) {
          double* const c = &expected(0, j);
          const double f = plain::dot(rows - r.sum_row, c + r.sum_row, r.x) / r.d / r.g;
          plain::axpy(rows - r.row, f, r.v, c + r.row);
        }
      std::vector<double> room(start.a.size() + 2 * kLine);
      for (const int offset : {0, 3}) {
        double* const a = line_start(room.data()) + offset;
        std::copy(start.a.begin(), start.a.end(), a);
        reflection_kernels().reflect_columns(rows, kCols, {a, rows}, reflections.data(), kCount);
        EXPECT_TRUE(std::equal(expected.a.begin(), expected.a.end(), a)) << rows << ' ' << ahead;
      }
    }
}

IN_EVERY_KERNEL_SET(Reflections);

}  // namespace
}  // namespace matrix_pack
