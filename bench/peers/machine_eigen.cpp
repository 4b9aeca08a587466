#include "bench/peers/machine_eigen.hpp"

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench::eigen {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kRounds = 40;

// The shortest time of several calls.
template <class Body>
double seconds(Body body) {
  double best = 1e9;
  for (int k = 0; k < kRounds; ++k) {
    const auto start = Clock::now();
    body();
    best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return best;
}

#if defined(__AVX512F__)
constexpr int kWidth = 8;
#elif defined(__AVX__)
constexpr int kWidth = 4;
#else
constexpr int kWidth = 2;
#endif
typedef double Vector __attribute__((vector_size(8 * kWidth)));

// Keeps the compiler from knowing what is in x.
void touch(Vector& x) {
  asm volatile("" : "+x"(x));
}

}  // namespace

double peak_operations() {
  // As many sums as hide the latency of an addition. The compiler sees neither that the product is
  // always the same one nor that it could be fused with the sum.
  constexpr int kSums = 10;
  constexpr int kSteps = 20000;
  Vector sums[kSums] = {};
  Vector x = {}, y = {};
  x += 1.0;
  y += 1e-3;
  const double t = seconds([&] {
    for (int step = 0; step < kSteps; ++step)
      for (Vector& sum : sums) {
        touch(x);
        Vector product = x * y;
        touch(product);
        sum += product;
      }
  });
  for (Vector& sum : sums) touch(sum);
  return 2.0 * kWidth * kSums * kSteps / t;
}

double bandwidth(std::size_t bytes) {
  std::vector<double> a(bytes / sizeof(double), 1.0);
  const double t = seconds([&] {
    for (double& x : a) x *= 1.0000001;
  });
  return 2.0 * static_cast<double>(bytes) / t;
}

}  // namespace bench::eigen
