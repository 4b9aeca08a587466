// The QR decomposition by plane rotations.
#include "linsys/qr.hpp"

#include <algorithm>
#include <cmath>

#include "linsys/linsys.hpp"
#include "pack/checks.hpp"
#include "pack/elements.hpp"
#include "pack/frame/guard.hpp"
#include "pack/memory.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"
#include "pack/numeric/rotation_batch.hpp"
#include "pack/numeric/transpose_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"
#include "pack/results.hpp"

namespace matrix_pack {

namespace {

// Columns of R that are kept up to date at once; the columns beyond follow in one go.
constexpr int kBlock = 32;

// A reduction in progress. Rows of R and of Q^T are rotated together; both are held transposed, so
// that a row is contiguous: `rt` is n x m (column k is row k of R), Q is m x m.
struct Reduction {
  int m;
  int n;
  RealView rt;
  double* v;             // The column of R at hand.
  Rotation* rotations;   // Its rotations, from the bottom up.
  RotationBatch beyond;  // For the rows of R, in the columns beyond the block.
  RotationBatch all_of_q;
  int unclear;  // The first column that may not stay zero below its pivot row.
  Edge*
      rows;  // Of each row of Q^T, which begins as a unit vector; null where they are stored whole.
  Edge* edges;  // Of the rotations that are kept back for Q, one more for each sweep.
};

// Smaller accumulators are one panel of rows: nothing can be left out.
constexpr int kSmallestWithEdges = 65;

// Outside the open interval (-tol, tol); so is a NaN.
bool counts(double x, double tol) {
  return !(-tol < x && x < tol);
}

// Notes the edges of the rows of Q^T that the last sweep rotates, `last` + 1 being the first of
// them. What stands left of them, zeros of either sign, goes through the rotations as any element
// does.
void note_edges(Reduction& d, int last, int count, const Rotation* rotations) {
  auto& kept = d.all_of_q.kept;
  Edge* edge = d.edges + (rotations - kept.room) + (kept.count - 1);
  kept.sweeps[kept.count - 1].edges = edge;
  for (int t = 0; t < count; ++t) {
    Edge& lower = d.rows[last + 1 - t];
    Edge& upper = d.rows[last - t];
    *edge++ = lower;
    const auto [c, s] = rotations[t];
    const double x = lower.above;
    const double y = upper.above;
    lower = {upper.reach, x * c + y * s};
    upper.above = y * c - x * s;
  }
  *edge = d.rows[last + 1 - count];
}

// Rotates rows first...last + 1 of R, from the last one up, in the columns around c up to end - 1,
// and notes the rotations for the columns beyond and for Q.
void rotate_rows(Reduction& d, int first, int last, int c, int end) {
  const int count = last - first + 1;
  const Sweep sweep = {0, count, d.rotations};
  const auto rotate = [&](int from, int to) {
    const RealView rising = {&d.rt(from, last + 1), -d.rt.ld};
    rotation_kernels().rotate(to - from, rising, &sweep, 1, nullptr);
  };
  if (d.unclear < c) rotate(d.unclear, c);
  rotate(c + 1, end);
  const int from_last = d.m - 2 - last;
  if (end < d.n) std::copy_n(d.rotations, count, d.beyond.sweep(from_last, count));
  Rotation* const for_q = d.all_of_q.sweep(from_last, count);
  std::copy_n(d.rotations, count, for_q);
  if (d.edges != nullptr) note_edges(d, last, count, for_q);
}

// Clears v below row p from the bottom up, leaving out what is negligible; every run of rotations
// without a gap goes to `rotate`. True when some element counted.
template <class Rotate>
bool clear_below(Reduction& d, int p, double tol, const Rotate& rotate) {
  bool taken = counts(d.v[p], tol);
  int count = 0;  // Of the run at hand.
  for (int i = d.m - 2; i >= p; --i) {
    if (!counts(d.v[i + 1], tol)) {
      if (count > 0) rotate(i + 1, i + count);
      count = 0;
      continue;
    }
    taken = true;
    const double a = d.v[i];
    const double b = d.v[i + 1];
    const Givens g = givens_coeffs(a, b);
    d.v[i] = g.c * a + g.s * b;
    if (std::isnan(g.c)) d.unclear = 0;
    // The lower row stands first: the sine changes its sign.
    d.rotations[count++] = {g.c, -g.s};
  }
  if (count > 0) rotate(p, p + count - 1);
  return taken;
}

// Reduces column c, its pivot row being p, in the block of columns that ends at `end`. True when
// the column takes the row.
bool reduce_column(Reduction& d, int c, int end, int p) {
  for (int k = 0; k < d.m; ++k) d.v[k] = d.rt(c, k);
  const double norm = std::sqrt(vector_kernels().sum_squares(d.m, d.v));
  if (norm == 0.0) {
    const bool clear = std::all_of(d.v + p, d.v + d.m, [](double x) { return x == 0.0; });
    if (!clear) d.unclear = std::min(d.unclear, c);
    return false;
  }
  const double tol = ((c + 1) * norm * kEps) / std::sqrt(static_cast<double>(d.m - p));
  const bool taken =
      clear_below(d, p, tol, [&](int first, int last) { rotate_rows(d, first, last, c, end); });
  std::fill(d.v + p + (taken ? 1 : 0), d.v + d.m, 0.0);
  for (int k = p; k < d.m; ++k) d.rt(c, k) = d.v[k];
  return taken;
}

void reduce(Reduction& d) {
  int p = 0;
  for (int first = 0; first < d.n && p < d.m; first += kBlock) {
    const int end = std::min(first + kBlock, d.n);
    d.beyond.columns.x = &d.rt(end, d.m - 1);
    d.beyond.rows = d.n - end;
    for (int c = first; c < end && p < d.m; ++c)
      if (reduce_column(d, c, end, p)) ++p;
    d.beyond.apply();
  }
  d.all_of_q.apply();
}

}  // namespace

Givens givens_coeffs(double a, double b) {
  if (b == 0.0) return {1.0, 0.0};
  if (std::fabs(b) <= std::fabs(a)) {
    const double t = b / a;
    const double c = 1.0 / std::sqrt(t * t + 1.0);
    return {c, c * t};
  }
  const double t = a / b;
  const double s = 1.0 / std::sqrt(t * t + 1.0);
  return {s * t, s};
}

const char* qr_core(EfiCallContext* context, aMatrix* a, aMatrix** q, aMatrix** r) {
  if (const char* message = matrix_copy(context, a, r)) return message;
  const int m = a->rows;
  const int n = a->cols;
  Doubles q_part = new_zero_part(m, m);
  if (!q_part) return kOutOfMemory;
  const RealView q_view = {q_part.get(), m};
  for (int k = 0; k < m; ++k) q_view(k, k) = 1.0;

  // A matrix without a real array is zero: there is nothing to rotate.
  if ((*r)->re != nullptr && m > 0) {
    const Doubles rt_part = new_part(n, m);
    const Doubles work = new_doubles(m + panel_size(m));
    const Array<Rotation> rotations = new_array<Rotation>(m + 2 * kept_rotations(m));
    const bool edged = m >= kSmallestWithEdges;
    const Array<Edge> edges = new_array<Edge>(edged ? m + kept_rotations(m) + kMostEdgedSweeps : 0);
    if (!rt_part || !work || !rotations || !edges) return kOutOfMemory;
    for (Index k = 0; edged && k < m; ++k) edges[k] = {k, 0.0};
    double* const panel = work.get() + m;
    Rotation* const kept = rotations.get() + m;
    const RealView rt = {rt_part.get(), n};
    // Sweeps rise: the rows of R and of Q^T are counted from the last one up.
    Reduction d = {m,
                   n,
                   rt,
                   work.get(),
                   rotations.get(),
                   {n, {nullptr, -rt.ld}, m, kept, panel},
                   {m, {q_view.column(m - 1), -q_view.ld}, m, kept + kept_rotations(m), panel},
                   n,
                   edged ? edges.get() : nullptr,
                   edged ? edges.get() + m : nullptr};
    transpose_kernels().transpose(m, n, (*r)->re, m, rt.x);
    reduce(d);
    for (Index k = 0; edged && k < m; ++k)
      std::fill_n(q_view.column(k), edges[k].reach, edges[k].above);
    transpose_kernels().transpose(n, m, rt.x, n, (*r)->re);
  }
  *q = new_matrix(context, m, m, std::move(q_part));
  return *q == nullptr ? kOutOfMemory : nullptr;
}

Anyval* qr(EfiCallContext* context, Anyval* v) {
  return contained(context, [=]() -> Anyval* {
    if (!is_matrix(v)) return argument_error(context, 1, kMustBeArray);
    aMatrix* const a = as_matrix(v);
    if (is_complex(a)) return argument_error(context, 1, kMustBeReal);
    if (a->re != nullptr && !holds_elements(a)) return argument_error(context, 1, kSizeMismatch);
    aMatrix* q = nullptr;
    aMatrix* r = nullptr;
    if (const char* message = qr_core(context, a, &q, &r)) return call_error(context, message);
    aMatrix* joined = nullptr;
    return pack_two_r(context, q, r, &joined) ? joined : sError_OutOfMemory;
  });
}

}  // namespace matrix_pack
