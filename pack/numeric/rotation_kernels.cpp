#include "pack/numeric/rotation_kernels.hpp"

#include "pack/numeric/lanes/sweeps.hpp"

namespace matrix_pack::MATRIX_KERNEL_SET {

namespace {

// Rows that are rotated together. They are copied side by side, so that no stride of the matrix can
// make columns displace each other from the cache; missing rows of the vectors in use are filled
// with zeros, which stay zeros.
constexpr Index kRows = 4 * kWidth;
static_assert(kPanelRows % kRows == 0);

// How many vectors go through the sweeps for so many rows.
Index vectors_for(Index rows) {
  if (rows > 2 * kWidth) return 4;
  return rows > kWidth ? 2 : 1;
}

void copy_in(Index rows, Index cols, ConstRealView from, double* panel) {
  for (Index k = 0; k < cols; ++k, panel += kRows) {
    const double* const a = from.column(k);
    if (rows == kRows) {
      for (int p = 0; p < 4; ++p) store_vector(panel + p * kWidth, load_vector(a + p * kWidth));
    } else {
      for (Index j = 0; j < rows; ++j) panel[j] = a[j];
      for (Index j = rows; j < kWidth * vectors_for(rows); ++j) panel[j] = 0.0;
    }
  }
}

void copy_out(Index rows, Index cols, const double* panel, RealView to) {
  for (Index k = 0; k < cols; ++k, panel += kRows) {
    double* const a = to.column(k);
    if (rows == kRows) {
      for (int p = 0; p < 4; ++p) store_vector(a + p * kWidth, load_vector(panel + p * kWidth));
    } else {
      for (Index j = 0; j < rows; ++j) a[j] = panel[j];
    }
  }
}

// `count` rotations from column a on, of kVectors vectors of rows. The column that two rotations
// share stays in registers.
template <int kVectors, class V = Vector>
MATRIX_INLINE void rotate_run(double* a, Index ld, const Rotation* rotations, Index count) {
  constexpr Index kLanesOfV = sizeof(V) / sizeof(double);
  V x[kVectors];
  for (int p = 0; p < kVectors; ++p) x[p] = load<V>(a + p * kLanesOfV);
  for (Index j = 0; j < count; ++j, a += ld) {
    const double c = rotations[j].c;
    const double s = rotations[j].s;
    for (int p = 0; p < kVectors; ++p) {
      const V y = load<V>(a + ld + p * kLanesOfV);
      store<V>(a + p * kLanesOfV, x[p] * c + y * s);
      x[p] = y * c - x[p] * s;
    }
  }
  for (int p = 0; p < kVectors; ++p) store<V>(a + p * kLanesOfV, x[p]);
}

// All sweeps on one panel, whose first column is `first`.
//   from_column   where each sweep begins in this panel, if not with its first column
//   kLd           elements from a column to the next
template <int kVectors, Index kLd>
void rotate_panel(double* panel, Index first, const Sweep* sweeps, Index sweep_count,
                  const Index* from_column) {
  const auto range = [=](Index i) {
    const Sweep& sweep = sweeps[i];
    return Range{from_column == nullptr ? sweep.first : from_column[i], sweep.first + sweep.count};
  };
  by_tiles(sweep_count, 1, range, [=](Index i, Index from, Index to) MATRIX_INLINE_LAMBDA {
    // Each sweep asks for one more column of the next tile, which may be far away.
    const double* const ahead = panel + (to + 2 * i + 1 - first) * kLd;
    for (int p = 0; p < kVectors; ++p) __builtin_prefetch(ahead + p * kWidth, 1, 3);
    rotate_run<kVectors>(panel + (from - first) * kLd, kLd,
                         sweeps[i].rotations + (from - sweeps[i].first), to - from);
  });
}

// The same for a panel of `rows` rows, at most kRows.
template <Index kLd>
void rotate_rows(Index rows, double* panel, Index first, const Sweep* sweeps, Index sweep_count,
                 const Index* from_column) {
  switch (vectors_for(rows)) {
    case 1:
      return rotate_panel<1, kLd>(panel, first, sweeps, sweep_count, from_column);
    case 2:
      return rotate_panel<2, kLd>(panel, first, sweeps, sweep_count, from_column);
    default:
      return rotate_panel<4, kLd>(panel, first, sweeps, sweep_count, from_column);
  }
}

// One sweep where the columns stand.
void rotate_in_place(Index rows, RealView a, const Sweep& sweep) {
  double* const x = a.column(sweep.first);
  Index j = 0;
  for (; j + kRows <= rows; j += kRows) rotate_run<4>(x + j, a.ld, sweep.rotations, sweep.count);
  for (; j + 2 * kWidth <= rows; j += 2 * kWidth)
    rotate_run<2>(x + j, a.ld, sweep.rotations, sweep.count);
  over_elements(j, rows, [&]<class V>(Index k, V) MATRIX_INLINE_LAMBDA {
    rotate_run<1, V>(x + k, a.ld, sweep.rotations, sweep.count);
  });
}

// How many rotations of the sweep find nothing stored in the rows before `end`; sought from
// `expected` on.
Index unstored(const Sweep& sweep, Index end, Index expected) {
  Index count = larger(0, smaller(expected, sweep.count));
  while (count > 0 && sweep.edges[count].reach < end) --count;
  while (count < sweep.count && sweep.edges[count + 1].reach >= end) ++count;
  return count;
}

// Where the sweeps begin in the panel of the rows before `end`, whose first column is `first`. The
// first column that a sweep meets there is stored now, if it has not been.
void begin_sweeps(double* panel, Index first, Index end, const Sweep* sweeps, Index sweep_count,
                  Index* from_column) {
  Index expected = first;
  for (Index i = 0; i < sweep_count; ++i) {
    const Sweep& sweep = sweeps[i];
    const Index skipped = unstored(sweep, end, expected - sweep.first);
    expected = from_column[i] = sweep.first + skipped;
    if (skipped == sweep.count || sweep.edges[skipped].reach < end) continue;
    double* const column = panel + (from_column[i] - first) * kPanelRows;
    for (Index k = 0; k < kRows; ++k) column[k] = sweep.edges[skipped].above;
  }
}

// So few rows are not worth a copy.
constexpr Index kFewRows = 4;

// The columns of all sweeps: from `first` to `end`, which takes part.
Range columns_of(const Sweep* sweeps, Index sweep_count) {
  return range_of_all(sweep_count, [=](Index i) {
    return Range{sweeps[i].first, sweeps[i].first + sweeps[i].count};
  });
}

void rotate(Index rows, RealView a, const Sweep* sweeps, Index sweep_count, double* work) {
  if (sweep_count == 1 || rows <= kFewRows) {
    for (Index i = 0; i < sweep_count; ++i) rotate_in_place(rows, a, sweeps[i]);
    return;
  }
  double* const panel = line_start(work);
  const auto [first, end] = columns_of(sweeps, sweep_count);
  const Index cols = end - first + 1;
  for (Index j = 0; j < rows; j += kRows) {
    const Index count = smaller(kRows, rows - j);
    const RealView block = a.from(j, first);
    copy_in(count, cols, block, panel);
    rotate_rows<kRows>(count, panel, first, sweeps, sweep_count, nullptr);
    copy_out(count, cols, panel, block);
  }
}

void rotate_panels(Index rows, Index cols, double* panels, const Sweep* sweeps, Index sweep_count,
                   bool edged) {
  const auto [first, end] = columns_of(sweeps, sweep_count);
  for (Index j = 0; j < rows; j += kRows) {
    const Index count = smaller(kRows, rows - j);
    const Index before = j / kPanelRows * kPanelRows;  // The rows of the panels before this one.
    double* const panel = panels + before * cols + first * kPanelRows + (j - before);
    Index begins[kMostEdgedSweeps];
    if (edged) begin_sweeps(panel, first, j + count, sweeps, sweep_count, begins);
    rotate_rows<kPanelRows>(count, panel, first, sweeps, sweep_count, edged ? begins : nullptr);
  }
}

}  // namespace

const RotationKernels rotation_kernels_table = {rotate, rotate_panels};

}  // namespace matrix_pack::MATRIX_KERNEL_SET
