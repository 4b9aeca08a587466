#include "eigen/inverse/iteration.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>

#include "pack/memory.hpp"
#include "pack/numeric/complex_vector_kernels.hpp"
#include "pack/numeric/vector_kernels.hpp"

namespace matrix_pack {

namespace {

// Moves the eigenvalue off the one that was asked for, so that the shifted matrix is not exactly
// singular.
constexpr double kShift = 1e-12;

// A start must grow this much; how many are tried.
constexpr double kEnoughGrowth = 100.0;
constexpr int kMostTries = 5;

// Solutions in the refinement, and the squared change that ends it sooner.
constexpr int kMostSolutions = 10;
constexpr double kSmallChange = 1e-30;

// Calls between two questions to the host whether the user wants to stop.
constexpr std::uint32_t kFactorizationsPerPoll = 512;
constexpr std::uint32_t kSolutionsPerPoll = 256;
std::atomic<std::uint32_t> factorizations{0};
std::atomic<std::uint32_t> solutions{0};

// The host has no such question yet: nobody wants to stop.
bool user_wants_to_stop() {
  return false;
}

bool poll(std::atomic<std::uint32_t>& calls, std::uint32_t per_poll) {
  return calls.fetch_add(1, std::memory_order_relaxed) % per_poll == 0 && user_wants_to_stop();
}

// Pseudo-random numbers, the same in every call.
struct Generator {
  std::uint32_t state = 1;

  std::uint32_t next() {
    state = state * 214013u + 2531011u;
    return (state >> 16) & 0x7fffu;
  }
  // In [0, 1).
  double number() {
    const std::uint32_t a = next();
    const std::uint32_t b = next();
    return static_cast<double>((a * 32768u + b) * 2u) * 0x1p-31;
  }
};

double square(int n, const ConstComplexView& x) {
  return complex_vector_kernels().sum_squares(n, x);
}

void scale(int n, double factor, const ComplexView& x) {
  vector_kernels().scale(n, factor, x.re);
  vector_kernels().scale(n, factor, x.im);
}

// Fills x with a start that the solution makes grow, and solves for it; the growth goes to *growth.
Status find_start(int n, const ComplexView& a, const int* pivots, const ComplexView& x,
                  double* growth) {
  Generator random;
  for (int attempt = 1;; ++attempt) {
    std::generate_n(x.re, n, [&] { return random.number(); });
    std::fill_n(x.im, n, 0.0);
    const double s = square(n, x);
    if (s == 0.0) return Status::singular;
    scale(n, 1.0 / std::sqrt(s), x);
    if (const Status status = solve_factored(n, a, pivots, x); status != Status::done)
      return status;
    *growth = std::sqrt(square(n, x));
    // Kept: the last try fails, however much it has grown.
    if (attempt == kMostTries) return Status::not_converging;
    if (*growth >= kEnoughGrowth) return Status::done;
  }
}

// `previous` is work. Kept: the change is that from the last vector, of unit length, to the new
// solution before it is scaled.
Status refine(int n, const ComplexView& a, const int* pivots, const ComplexView& x,
              const ComplexView& previous) {
  for (int solution = 1;; ++solution) {
    std::copy_n(x.re, n, previous.re);
    std::copy_n(x.im, n, previous.im);
    poll(solutions, kSolutionsPerPoll);  // Kept: the answer makes no difference.
    if (const Status status = solve_factored(n, a, pivots, x); status != Status::done)
      return status;
    const double s = square(n, x);
    complex_vector_kernels().subtract_multiple(n, {1.0, 0.0}, x, previous);
    const double change = square(n, previous);
    scale(n, s == 0.0 ? 1.0 : 1.0 / std::sqrt(s), x);
    if (solution == kMostSolutions || change <= kSmallChange) return Status::done;
  }
}

}  // namespace

Status inverse_iteration(int n, const ComplexView& a, Complex z, const ComplexView& x) {
  const Doubles work = new_doubles(std::int64_t{2} * n);
  const Array<int> pivots = new_array<int>(n);
  if (!work || !pivots) return Status::no_memory;
  for (int i = 0; i < n; ++i) a.set(i, i, {a(i, i).re - z.re + kShift, a(i, i).im - z.im});
  if (const Status s = factor_scaled(n, a, pivots.get()); s != Status::done) return s;
  if (poll(factorizations, kFactorizationsPerPoll)) return Status::interrupted;

  double growth;
  if (const Status s = find_start(n, a, pivots.get(), x, &growth); s != Status::done) return s;
  if (growth == 0.0) return Status::singular;
  scale(n, 1.0 / growth, x);
  return refine(n, a, pivots.get(), x, {work.get(), work.get() + n});
}

}  // namespace matrix_pack
