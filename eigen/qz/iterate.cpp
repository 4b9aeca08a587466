// The QZ iteration: a Hessenberg-triangular pair becomes quasi-triangular.
#include <algorithm>
#include <cmath>

#include "eigen/qz/reflector.hpp"
#include "eigen/qz/stages.hpp"
#include "eigen/shared/balance_kernels.hpp"
#include "pack/messages.hpp"
#include "pack/numeric/epsilon.hpp"

namespace matrix_pack {

namespace {

// QZ steps on one block before the iteration gives up, and the one that takes the exceptional
// shift, whose coefficients follow.
constexpr int kMaxSteps = 50;
constexpr int kExceptionalStep = 10;
constexpr double kExceptionalShift[3] = {0.0, 1.0, 1.1605};

// Columns that a step takes in at a time: enough to go side by side through the row kernels.
constexpr Index kIteratedStrip = 8;

struct Iteration {
  const QzPair& pair;
  const QzKernels& kernels;
  Reflector2* pairs;  // Room for the reflectors of a step.
  Reflector3* triples;
  double epsa, epsb;  // Elements of A (of B) up to these magnitudes count as zero.
  Index first, last;  // The active block of rows and columns. What stands behind it is done.

  // How far a transformation of columns (rows) reaches: without Z, no farther than the block.
  Index first_row() const { return pair.z != nullptr ? 0 : first; }
  Index end_col() const { return pair.z != nullptr ? pair.n : last + 1; }
};

// The tolerances, from the largest row sums of A and B. A matrix of zeros counts as of norm 1.
void set_tolerances(Iteration& it) {
  const QzPair& p = it.pair;
  const auto row_sum = [&](Index count, const double* row) {
    return balance_kernels().sum_magnitudes(row, nullptr, p.n, count, count);
  };
  double anorm = 0.0;
  double bnorm = 0.0;
  for (Index i = 0; i < p.n; ++i) {
    const Index j = std::max<Index>(i - 1, 0);
    anorm = std::max(anorm, row_sum(p.n - j, &p.A(i, j)));
    bnorm = std::max(bnorm, row_sum(p.n - i, &p.B(i, i)));
  }
  it.epsa = (anorm == 0.0 ? 1.0 : anorm) * kEps;
  it.epsb = (bnorm == 0.0 ? 1.0 : bnorm) * kEps;
}

// The first row of the block that ends with the last row; what stands left of its diagonal becomes
// zero.
Index split_row(const Iteration& it) {
  for (Index l = it.last; l > 0; --l) {
    double& left = it.pair.A(l, l - 1);
    if (std::fabs(left) <= it.epsa) {
      left = 0.0;
      return l;
    }
  }
  return 0;
}

// B(l, l) counts as zero: rows l and l + 1 are reflected so that A(l+1, l) vanishes, which leaves
// an infinite eigenvalue at l and splits the block below it.
void deflate_infinite(const Iteration& it, Index l) {
  const QzPair& p = it.pair;
  p.B(l, l) = 0.0;
  const Reflector2 h = reflector(p.A(l, l), p.A(l + 1, l));
  it.kernels.chase_rows2(1, &h, it.end_col() - l, &p.A(l, l), &p.B(l, l), p.n);
  p.A(l + 1, l) = 0.0;
  if (l != it.first) p.A(l, l - 1) = -p.A(l, l - 1);
}

// The last 2x2 block of A inv(B), as far as its eigenvalues need it.
struct Corner {
  double a33, a34, a43, a44, b34;
};

Corner corner(const Iteration& it) {
  const auto divisor = [&](double x) { return std::fabs(x) < it.epsb ? it.epsb : x; };
  const QzPair& p = it.pair;
  const Index last = it.last;
  const double b33 = divisor(p.B(last - 1, last - 1));
  const double b44 = divisor(p.B(last, last));
  return {p.A(last - 1, last - 1) / b33, p.A(last - 1, last) / b44, p.A(last, last - 1) / b33,
          p.A(last, last) / b44, p.B(last - 1, last) / b44};
}

// Where a step with one real shift begins: as far down as two consecutive sub-diagonal elements
// are small.
Index start_row(const Iteration& it, double shift) {
  const QzPair& p = it.pair;
  for (Index l = it.last - 2; l > it.first; --l) {
    double t = p.A(l, l);
    if (std::fabs(p.B(l, l)) > it.epsb) t -= shift * p.B(l, l);
    if (std::fabs(p.A(l, l - 1)) <= std::fabs(t / p.A(l + 1, l)) * it.epsa) return l;
  }
  return it.first;
}

void reflect_rows(const Iteration& it, Index count, const Reflector2* h, Index row, Index col,
                  Index cols) {
  const QzPair& p = it.pair;
  it.kernels.chase_rows2(count, h, cols, &p.A(row, col), &p.B(row, col), p.n);
}

void reflect_rows(const Iteration& it, Index count, const Reflector3* h, Index row, Index col,
                  Index cols) {
  const QzPair& p = it.pair;
  it.kernels.chase_rows3(count, h, cols, &p.A(row, col), &p.B(row, col), p.n);
}

// The reflectors on rows of one step. A column takes part only when the step arrives at it, and
// undergoes all earlier reflectors then, together with its neighbours.
template <class Reflector>
struct RowChase {
  const Iteration& it;
  Index first;   // The row of the first reflector.
  Index next;    // The first column that does not take part yet.
  Reflector* h;  // By row.

  RowChase(const Iteration& iteration, Index row, Reflector* room)
      : it(iteration), first(row), next(row), h(room) {}

  // Lets column `col` and its neighbours take part, from the reflector on row `row` on.
  void take_in(Index col, Index row) {
    if (next > col) return;
    const Index cols = std::min(kIteratedStrip, it.last + 1 - next);
    if (row > first) reflect_rows(it, row - first, h, first, next, cols);
    next += cols;
  }

  // The next reflector, on row `row` and those below it.
  void add(Index row, const Reflector& reflector) {
    h[row - first] = reflector;
    const Index col = std::max(row - 1, first);
    reflect_rows(it, 1, &h[row - first], row, col, next - col);
  }

  // Row `row` has no reflector any more: the columns at which the step did not arrive.
  void finish(Index row) {
    if (row > first) reflect_rows(it, row - first, h, first, next, it.end_col() - next);
  }
};

// A reflector on columns k + 1 and k annihilates B(k+1, k).
void restore_triangle(const Iteration& it, Index k) {
  const QzPair& p = it.pair;
  const Reflector2 h = reflector(p.B(k + 1, k + 1), p.B(k + 1, k));
  const Index row = it.first_row();
  const Index rows = std::min(it.last, k + 2) + 1 - row;
  it.kernels.reflect_cols2(h, rows, &p.A(row, k), p.n);
  it.kernels.reflect_cols2(h, rows, &p.B(row, k), p.n);
  p.B(k + 1, k) = 0.0;
  if (p.z != nullptr) it.kernels.reflect_cols2(h, p.n, p.column_of_z(k), p.n);
}

// A reflector on columns k + 2, k + 1 and k annihilates B(k+2, k+1) and B(k+2, k), then one on
// columns k + 1 and k annihilates B(k+1, k).
void restore_triangle3(const Iteration& it, Index k) {
  const QzPair& p = it.pair;
  const Reflector3 g = reflector(p.B(k + 2, k + 2), p.B(k + 2, k + 1), p.B(k + 2, k));
  // Row k + 1 as the first reflector leaves it.
  const double t = p.B(k + 1, k + 2) + g.u2 * p.B(k + 1, k + 1) + g.u3 * p.B(k + 1, k);
  const Reflector2 h = reflector(p.B(k + 1, k + 1) + t * g.v2, p.B(k + 1, k) + t * g.v3);
  const Index row = it.first_row();
  const Index rows = std::min(it.last, k + 3) + 1 - row;
  it.kernels.reflect_cols3(g, h, rows, &p.A(row, k), p.n);
  it.kernels.reflect_cols3(g, h, rows, &p.B(row, k), p.n);
  p.B(k + 2, k) = 0.0;
  p.B(k + 2, k + 1) = 0.0;
  p.B(k + 1, k) = 0.0;
  if (p.z != nullptr) it.kernels.reflect_cols3(g, h, p.n, p.column_of_z(k), p.n);
}

// One QZ step with a real shift. It begins with the first column of (A - shift B) inv(B), in row l.
void single_step(const Iteration& it, Index l, double shift) {
  const QzPair& p = it.pair;
  if (l != it.first) p.A(l, l - 1) = -p.A(l, l - 1);
  double a1 = p.A(l, l) / p.B(l, l) - shift;
  double a2 = p.A(l + 1, l) / p.B(l, l);
  RowChase<Reflector2> rows(it, l, it.pairs);
  Index k = l;
  for (; k < it.last; ++k) {
    if (k > l) {
      a1 = p.A(k, k - 1);
      a2 = p.A(k + 1, k - 1);
    }
    const Reflector2 h = reflector(a1, a2);
    if (is_identity(h)) break;
    rows.take_in(k + 1, k);
    rows.add(k, h);
    if (k > l) p.A(k + 1, k - 1) = 0.0;
    restore_triangle(it, k);
  }
  rows.finish(k);
}

// One QZ step with two shifts. It begins with (a1, a2, a3) in the first rows of the block.
void double_step(const Iteration& it, double a1, double a2, double a3) {
  const QzPair& p = it.pair;
  const Index l = it.first;
  const Index upper = it.last - 1;
  RowChase<Reflector3> rows(it, l, it.triples);
  for (Index k = l; k < upper; ++k) {
    if (k > l) {
      a1 = p.A(k, k - 1);
      a2 = p.A(k + 1, k - 1);
      a3 = p.A(k + 2, k - 1);
    }
    const Reflector3 h = reflector(a1, a2, a3);
    rows.take_in(k + 2, k);
    rows.add(k, h);
    if (is_identity(h)) continue;
    if (k > l) {
      p.A(k + 1, k - 1) = 0.0;
      p.A(k + 2, k - 1) = 0.0;
    }
    restore_triangle3(it, k);
  }
  rows.finish(upper);
  // The last two rows.
  const Reflector2 h = reflector(p.A(upper, upper - 1), p.A(it.last, upper - 1));
  if (is_identity(h)) return;
  reflect_rows(it, 1, &h, upper, upper - 1, it.end_col() - upper + 1);
  p.A(it.last, upper - 1) = 0.0;
  restore_triangle(it, upper);
}

// The first column of (A inv(B) - s) (A inv(B) - s') for the complex eigenvalues s, s' of the
// corner, divided by its last sub-diagonal factor.
void complex_step(const Iteration& it, const Corner& c) {
  const QzPair& p = it.pair;
  const Index l = it.first;
  const double b11 = p.B(l, l);
  const double b22 = std::fabs(p.B(l + 1, l + 1)) < it.epsb ? it.epsb : p.B(l + 1, l + 1);
  const double a11 = p.A(l, l) / b11;
  const double a21 = p.A(l + 1, l) / b11;
  const double a12 = p.A(l, l + 1) / b22;
  const double a22 = p.A(l + 1, l + 1) / b22;
  const double b12 = p.B(l, l + 1) / b22;
  const double d3 = c.a33 - a11;
  const double d4 = c.a44 - a11;
  double_step(it, (d3 * d4 - c.a34 * c.a43 + c.a43 * c.b34 * a11) / a21 + a12 - a11 * b12,
              (a22 - a11) - a21 * b12 - d3 - d4 + c.a43 * c.b34, p.A(l + 2, l + 1) / b22);
}

// One QZ step on the block: with both eigenvalues of the corner for shifts when they are complex,
// else with the one nearer to its last element. It may find an infinite eigenvalue instead.
void step(const Iteration& it) {
  const Corner c = corner(it);
  const double t = 0.5 * (c.a43 * c.b34 - c.a33 - c.a44);
  const double r = t * t + c.a34 * c.a43 - c.a33 * c.a44;
  if (r < 0.0) return complex_step(it, c);
  const double root = std::sqrt(r);
  const double s1 = -t + root;
  const double s2 = -t - root;
  const double shift = std::fabs(s2 - c.a44) < std::fabs(s1 - c.a44) ? s2 : s1;
  const Index l = start_row(it, shift);
  if (std::fabs(it.pair.B(l, l)) <= it.epsb)
    deflate_infinite(it, l);
  else
    single_step(it, l, shift);
}

// Steps until a block of order 1 or 2 splits off at the end of the active block, and takes it off.
const char* deflate_block(Iteration& it) {
  for (int steps = 0;;) {
    it.first = split_row(it);
    if (it.first >= it.last - 1) break;
    if (std::fabs(it.pair.B(it.first, it.first)) <= it.epsb) {
      deflate_infinite(it, it.first);
      continue;
    }
    if (steps == kMaxSteps) return kTooManyIterations;
    if (++steps == kExceptionalStep)
      double_step(it, kExceptionalShift[0], kExceptionalShift[1], kExceptionalShift[2]);
    else
      step(it);
  }
  it.last = it.first - 1;
  return nullptr;
}

}  // namespace

const char* qz_iterate(const QzPair& pair, Reflector2* pairs, Reflector3* triples) {
  Iteration it = {pair, qz_kernels(), pairs, triples, 0.0, 0.0, 0, pair.n - 1};
  set_tolerances(it);
  while (it.last >= 2)
    if (const char* message = deflate_block(it)) return message;
  if (pair.n >= 2) pair.B(pair.n - 1, 0) = it.epsb;
  return nullptr;
}

}  // namespace matrix_pack
