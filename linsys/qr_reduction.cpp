#include "linsys/qr_reduction.hpp"

#include <algorithm>
#include <cmath>

#include "linsys/qr_kernels.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/lines.hpp"
#include "pack/numeric/rotation_batch.hpp"
#include "pack/numeric/transpose_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// A reduction in progress. Rows of R and of Q^T are rotated together. Both stand in panels (see
// pack/numeric/rotation_kernels.hpp), whose columns are their rows from the last one up. A column
// of R leaves its panel when its turn comes.
struct Reduction {
  int m;
  int n;
  double* r;  // m x n: the columns that have left the panels.
  double* r_panels;
  double* q_panels;             // Behind those of R.
  double* abreast;              // Room for columns that are cleared abreast.
  bool at_once;                 // Whether nothing waits.
  Batch<Sweep, Rotation> kept;  // The rotations that wait for Q^T.
  int applied;                  // So many of their sweeps no longer wait for R.
  int beyond;                   // The first column of R for which the others wait.
  int unclear;                  // The first column that may not stay zero below its pivot row.
  Edge* rows;  // Of the rows of Q^T, which begin as unit vectors; null where they are stored whole.
  Edge* edges;  // Of the rotations that are kept, one more for each sweep.
};

// So many elements of a row of R and of Q^T together are rotated at once, whatever it costs.
constexpr Index kSmall = 128;

// Columns of R behind the panel at hand that are rotated at once: what makes a rotation takes so
// long that this costs nothing.
constexpr Index kNearby = 3 * kPanelRows;

// Of a column whose sum of squares is smaller it is not known what underflow has left of its norm.
constexpr double kSmallestSquares = 1e-280;

// Smaller accumulators are stored whole: there is little to leave out.
constexpr int kSmallestWithEdges = 65;

// Rows of an array of `rows` rows in whole panels.
constexpr Index in_whole_panels(Index rows) {
  return (rows + kPanelRows - 1) / kPanelRows * kPanelRows;
}

// Where row k of R has column c. The row below it has it kPanelRows elements before.
double* in_panel(const Reduction& d, int k, int c) {
  const Index lane = c % kPanelRows;
  return d.r_panels + (c - lane) * d.m + (d.m - 1 - k) * kPanelRows + lane;
}

void fill_r_panels(const Reduction& d) {
  for (int c = 0; c < d.n; c += kPanelRows)
    transpose_kernels().transpose(d.m, std::min<Index>(kPanelRows, d.n - c),
                                  {d.r + Index{c} * d.m, d.m}, {in_panel(d, 0, c), -kPanelRows});
}

double* take_column(const Reduction& d, int c) {
  double* const column = d.r + Index{c} * d.m;
  const double* x = in_panel(d, 0, c);
  for (int k = 0; k < d.m; ++k, x -= kPanelRows) column[k] = *x;
  return column;
}

// Q from its panels; where its rows were not stored whole, from their edges.
void take_q(const Reduction& d, double* q) {
  for (int k = 0; k < d.m; ++k, q += d.m) {
    const double* x = d.q_panels + Index{d.m - 1 - k} * kPanelRows;
    for (Index i = 0; i < d.m; i += kPanelRows, x += kPanelRows * d.m)
      std::copy_n(x, std::min(kPanelRows, d.m - i), q + i);
    if (d.rows != nullptr) std::fill_n(q, d.rows[k].reach, d.rows[k].above);
  }
}

void apply_to_r(Reduction& d) {
  if (d.beyond < d.n && d.applied < d.kept.count)
    rotation_kernels().rotate_panels(d.n - d.beyond, d.m, in_panel(d, d.m - 1, d.beyond),
                                     d.kept.sweeps + d.applied, d.kept.count - d.applied, false);
  d.applied = d.kept.count;
}

void apply_all(Reduction& d) {
  apply_to_r(d);
  if (d.kept.count > 0)
    rotation_kernels().rotate_panels(d.m, d.m, d.q_panels, d.kept.sweeps, d.kept.count,
                                     d.rows != nullptr);
  d.kept.clear();
  d.applied = 0;
}

// Notes the edges of the rows of Q^T that a sweep rotates, the first of them being `row`. What
// stands left of them, zeros of either sign, goes through the rotations as any element does.
void note_edges(Sweep& sweep, Edge* row, Edge* edge) {
  sweep.edges = edge;
  Edge lower = *row;
  for (Index t = 0; t < sweep.count; ++t) {
    const auto [c, s] = sweep.rotations[t];
    const Edge upper = row[-1];
    *edge++ = lower;
    *row-- = {upper.reach, lower.above * c + upper.above * s};
    lower = {upper.reach, upper.above * c - lower.above * s};
  }
  *row = *edge = lower;
}

// The rotations on the elements of a column, that of the first lower row being *x.
void rotate_up(double* x, const Rotation* rotations, Index count) {
  for (Index t = 0; t < count; ++t, --x) {
    const auto [c, s] = rotations[t];
    const double lower = x[0];
    const double upper = x[-1];
    x[0] = lower * c + upper * s;
    x[-1] = upper * c - lower * s;
  }
}

// Keeps back `count` rotations, the first of which is of the rows `last` and `last` + 1.
void keep_sweep(Reduction& d, int last, Index count, const Rotation* rotations) {
  d.kept.add(count);
  Sweep& sweep = d.kept.sweeps[d.kept.count - 1];
  sweep = {d.m - 2 - last, count, rotations, nullptr};
  if (d.rows != nullptr)
    note_edges(sweep, d.rows + last + 1, d.edges + (rotations - d.kept.room) + d.kept.count - 1);
}

// Clears the elements of column c from that of row `last` + 1 up to that of row p + 1 as long as
// they count. Returns how many there are.
int clear_run(Reduction& d, int c, int last, int p, double tol) {
  if (d.kept.is_full(last - p + 1)) apply_all(d);
  Rotation* const rotations = d.kept.room + d.kept.used;
  const int lane = static_cast<int>(c % kPanelRows);
  double* const v = d.r + Index{c} * d.m + last + 1;
  const auto [count, all_numbers] =
      qr_kernels().clear(last - p + 1, tol, v, in_panel(d, last + 1, c - lane), d.m, lane + 1,
                         d.beyond - (c - lane), rotations);
  if (!all_numbers) d.unclear = 0;
  for (int j = d.unclear; j < c; ++j) rotate_up(d.r + Index{j} * d.m + last + 1, rotations, count);
  if (!d.at_once) keep_sweep(d, last, count, rotations);
  return static_cast<int>(count);
}

// Reduces column c, its pivot row being p. True when the column takes the row.
bool reduce_column(Reduction& d, int c, int p) {
  double* const v = take_column(d, c);
  const double norm = std::sqrt(vector_kernels().sum_squares(d.m, v));
  if (norm == 0.0) {
    const bool clear = std::all_of(v + p, v + d.m, [](double x) { return x == 0.0; });
    if (!clear) d.unclear = std::min(d.unclear, c);
    return false;
  }
  const double tol = ((c + 1) * norm * kEps) / std::sqrt(static_cast<double>(d.m - p));
  bool taken = counts(v[p], tol);
  for (int i = d.m - 2; i >= p;) {
    const bool rotates = counts(v[i + 1], tol);
    i -= rotates ? clear_run(d, c, i, p, tol) : 1;
    taken |= rotates;
  }
  std::fill(v + p + (taken ? 1 : 0), v + d.m, 0.0);
  return taken;
}

// Doubles of room for columns that are cleared abreast.
constexpr Index room_abreast(Index rows) {
  return (kRowsBefore + rows + kRowsBehind) * kAbreast;
}

// Columns c, c + 1... of R, from their panel and, below row p, from those that were cleared
// abreast.
void take_abreast(const Reduction& d, int c, int p) {
  double* const columns = d.r + Index{c} * d.m;
  transpose_kernels().transpose(kAbreast, p, {in_panel(d, 0, c), -kPanelRows}, {columns, d.m});
  const double* x = d.abreast + (kRowsBefore + d.m - 1 - p) * kAbreast;
  for (int k = 0; k < kAbreast; ++k, x -= kAbreast)
    for (int j = 0; j < kAbreast; ++j) columns[j * Index{d.m} + p + k] = j < k ? 0.0 : x[j];
  for (int j = 0; j < kAbreast; ++j)
    std::fill_n(columns + j * Index{d.m} + p + kAbreast, d.m - p - kAbreast, 0.0);
}

// The rotations kept last, `count` sweeps of them, on the columns c... of their panel. (What has
// left the panel may be overwritten.)
void apply_within_panel(const Reduction& d, int c, int count) {
  const int lane = c % static_cast<int>(kPanelRows);
  if (lane == 0) return;
  const int from = lane <= kPanelRows / 2 ? 0 : lane;
  rotation_kernels().rotate_panels(kPanelRows - from, d.m, in_panel(d, d.m - 1, c - lane + from),
                                   d.kept.sweeps + d.kept.count - count, count, false);
}

// Reduces kAbreast columns from c on, their pivot rows being p, p + 1... False when nothing is
// done: where an element may be negligible, columns are reduced one by one. Rotations change the
// norm of a column by far less than the factor of two here.
bool reduce_abreast(Reduction& d, int c, int p) {
  const Index rows = d.m - p;
  if (rows <= 2 * kAbreast || d.unclear < d.n) return false;
  const auto length = [=](Index j) { return rows - 1 - j; };
  if (d.kept.is_full(kAbreast * length(0), kAbreast)) apply_all(d);
  Rotation* rotations[kAbreast];
  rotations[0] = d.kept.room + d.kept.used;
  for (Index j = 1; j < kAbreast; ++j) rotations[j] = rotations[j - 1] + length(j - 1);
  const ClearedAbreast cleared = qr_kernels().clear_abreast(
      rows, d.m, in_panel(d, d.m - 1, c), d.abreast + kRowsBefore * kAbreast, rotations);
  for (int j = 0; j < kAbreast; ++j) {
    const double tol = (c + j + 1) * std::sqrt(cleared.squares[j]) * kEps /
                       std::sqrt(static_cast<double>(rows - j));
    if (cleared.squares[j] < kSmallestSquares || cleared.smallest[j] < 2.0 * tol) return false;
  }
  for (int j = 0; j < kAbreast; ++j) keep_sweep(d, d.m - 2, length(j), rotations[j]);
  take_abreast(d, c, p);
  return true;
}

void reduce(Reduction& d) {
  int p = 0;
  for (int c = 0; c < d.n;) {
    const int begin = c;
    const int end = std::min<int>(c + kPanelRows, d.n);
    if (!d.at_once) {
      d.beyond = end;
      while (c + kAbreast <= end && reduce_abreast(d, c, p)) {
        c += kAbreast;
        p += kAbreast;
        apply_within_panel(d, c, kAbreast);
      }
      if (c == begin) d.beyond = std::min<int>(end + kNearby, d.n);
    }
    for (; c < end && p < d.m; ++c)
      if (reduce_column(d, c, p)) ++p;
    apply_to_r(d);
    for (; c < end; ++c) take_column(d, c);
  }
  apply_all(d);
}

}  // namespace

bool rotate_to_triangle(int m, int n, double* r, double* q) {
  const Index r_rows = in_whole_panels(n);
  const Index q_size = in_whole_panels(m) * m;
  const bool at_once = r_rows + m <= kSmall;
  const bool edged = !at_once && m >= kSmallestWithEdges;
  const Index abreast_size = at_once ? 0 : room_abreast(m);
  const Doubles panels = new_doubles(r_rows * m + q_size + abreast_size + kLine);
  const Array<Rotation> rotations = new_array<Rotation>(at_once ? m : kept_rotations(m));
  const Array<Edge> edges = new_array<Edge>(edged ? m + kept_rotations(m) + kMostEdgedSweeps : 0);
  if (!panels || !rotations || !edges) return false;
  double* const r_panels = line_start(panels.get());
  double* const q_panels = r_panels + r_rows * m;
  double* const abreast = q_panels + q_size;
  std::fill_n(abreast, abreast_size, 0.0);
  Reduction d = {m, n, r, r_panels, q_panels, abreast, at_once, {}, 0, 0, n, nullptr, nullptr};
  d.kept.room = rotations.get();
  d.kept.capacity = at_once ? m : kept_rotations(m);
  if (at_once) d.beyond = static_cast<int>(r_rows) + m;
  if (edged) d.rows = edges.get();
  if (edged) d.edges = edges.get() + m;
  if (n < r_rows) std::fill(q_panels - kPanelRows * m, q_panels, 0.0);
  std::fill_n(q_panels, q_size, 0.0);
  for (Index k = 0; k < m; ++k) {
    if (edged) edges[k] = {k, 0.0};
    q_panels[k / kPanelRows * kPanelRows * m + (m - 1 - k) * kPanelRows + k % kPanelRows] = 1.0;
  }
  fill_r_panels(d);
  reduce(d);
  take_q(d, q);
  return true;
}

}  // namespace matrix_pack
