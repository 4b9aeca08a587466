#include "bench/peers/peers.hpp"

#include <cblas.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/peers/eigen_peers.hpp"
#include "bench/peers/lapack.hpp"

namespace bench {

namespace {

constexpr const char* kVariable = "OPENBLAS_CORETYPE";

// What OpenBLAS has for x86 processors with wide vectors; others keep its own choice.
constexpr const char* kCoreTypes[] = {"Haswell", "Zen", "SkylakeX", "Cooperlake", "Sapphirerapids"};

// Seconds that the probe takes with a core type; a large number if it does not run here.
double seconds_with(const char* core_type) {
  const std::string command = std::string(kVariable) + "=" + core_type + " /proc/" +
                              std::to_string(getpid()) + "/exe --probe 2>/dev/null";
  double seconds = 1e9;
  if (std::FILE* const output = popen(command.c_str(), "r")) {
    if (std::fscanf(output, "%lf", &seconds) != 1) seconds = 1e9;
    pclose(output);
  }
  return seconds;
}

}  // namespace

std::string peers(bool with_blis) {
  std::string names =
      std::string(openblas_get_config()) + " (core type " + openblas_get_corename() + ")";
  if (with_blis) names += "; " + blis_version() + " and the reference LAPACK";
  return names + "; " + eigen::version();
}

void choose_core_type(char** argv) {
  if (std::getenv(kVariable) != nullptr) return;
  const char* best = nullptr;
  double least = 1e9;
  for (const char* core_type : kCoreTypes) {
    const double seconds = seconds_with(core_type);
    if (seconds < least) {
      least = seconds;
      best = core_type;
    }
  }
  if (best == nullptr) return;
  setenv(kVariable, best, 1);
  execv("/proc/self/exe", argv);
}

int probe() {
  use_one_thread();
  constexpr int kOrder = 400;
  const std::vector<double> a(kOrder * kOrder, 1.0), b(a);
  std::vector<double> c(a);
  double least = 1e9;
  for (int k = 0; k < 20; ++k) {
    const auto start = std::chrono::steady_clock::now();
    cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, kOrder, kOrder, kOrder, 1.0, a.data(),
                kOrder, b.data(), kOrder, 0.0, c.data(), kOrder);
    const auto end = std::chrono::steady_clock::now();
    least = std::min(least, std::chrono::duration<double>(end - start).count());
  }
  std::printf("%g\n", least);
  return 0;
}

void use_one_thread() {
  openblas_set_num_threads(1);
}

}  // namespace bench
