#include "pack/numeric/kernel_sets.hpp"

namespace matrix_pack {

namespace {

bool processor_runs(KernelSet set) {
  if (set == KernelSet::baseline) return true;
#if defined(__x86_64__)
  __builtin_cpu_init();
  const bool v3 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                  __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
  if (set == KernelSet::v3) return v3;
  return v3 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

KernelSet best_set() {
  if (processor_runs(KernelSet::v4)) return KernelSet::v4;
  return processor_runs(KernelSet::v3) ? KernelSet::v3 : KernelSet::baseline;
}

}  // namespace

KernelSet kernel_set_in_use = best_set();

bool force_kernel_set(KernelSet set) noexcept {
  if (!processor_runs(set)) return false;
  kernel_set_in_use = set;
  return true;
}

const char* kernel_set_name(KernelSet set) noexcept {
  switch (set) {
    case KernelSet::v4:
      return "v4";
    case KernelSet::v3:
      return "v3";
    default:
      return "baseline";
  }
}

}  // namespace matrix_pack
