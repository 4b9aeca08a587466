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

struct Vector {
  int n;
  double* re;
  double* im;

  double square() const { return complex_vector_kernels().sum_squares(n, re, im); }
  void scale(double factor) const {
    vector_kernels().scale(n, factor, re);
    vector_kernels().scale(n, factor, im);
  }
};

// Fills x with a start that the solution makes grow, and solves for it; the growth goes to *growth.
Status find_start(const Parts& a, const int* pivots, const Vector& x, double* growth) {
  Generator random;
  for (int attempt = 1;; ++attempt) {
    std::generate_n(x.re, x.n, [&] { return random.number(); });
    std::fill_n(x.im, x.n, 0.0);
    const double s = x.square();
    if (s == 0.0) return Status::singular;
    x.scale(1.0 / std::sqrt(s));
    if (const Status status = solve_factored(a, pivots, x.re, x.im); status != Status::done)
      return status;
    *growth = std::sqrt(x.square());
    // Kept: the last try fails, however much it has grown.
    if (attempt == kMostTries) return Status::not_converging;
    if (*growth >= kEnoughGrowth) return Status::done;
  }
}

// `previous` is work. Kept: the change is that from the last vector, of unit length, to the new
// solution before it is scaled.
Status refine(const Parts& a, const int* pivots, const Vector& x, const Vector& previous) {
  for (int solution = 1;; ++solution) {
    std::copy_n(x.re, x.n, previous.re);
    std::copy_n(x.im, x.n, previous.im);
    poll(solutions, kSolutionsPerPoll);  // Kept: the answer makes no difference.
    if (const Status status = solve_factored(a, pivots, x.re, x.im); status != Status::done)
      return status;
    const double s = x.square();
    complex_vector_kernels().subtract_multiple(x.n, {1.0, 0.0}, x.re, x.im, previous.re,
                                               previous.im);
    const double change = previous.square();
    x.scale(s == 0.0 ? 1.0 : 1.0 / std::sqrt(s));
    if (solution == kMostSolutions || change <= kSmallChange) return Status::done;
  }
}

}  // namespace

Status inverse_iteration(const Parts& a, double z_re, double z_im, double* re, double* im) {
  const int n = a.n;
  const Doubles work = new_doubles(std::int64_t{2} * n);
  const Array<int> pivots = new_array<int>(n);
  if (!work || !pivots) return Status::no_memory;
  for (int i = 0; i < n; ++i) {
    const std::ptrdiff_t k = i * a.ld + i;
    a.re[k] = a.re[k] - z_re + kShift;
    a.im[k] = a.im[k] - z_im;
  }
  if (const Status s = factor_scaled(a, pivots.get()); s != Status::done) return s;
  if (poll(factorizations, kFactorizationsPerPoll)) return Status::interrupted;

  const Vector x = {n, re, im};
  double growth;
  if (const Status s = find_start(a, pivots.get(), x, &growth); s != Status::done) return s;
  if (growth == 0.0) return Status::singular;
  x.scale(1.0 / growth);
  return refine(a, pivots.get(), x, {n, work.get(), work.get() + n});
}

}  // namespace matrix_pack
