// The instruction sets for which the inner loops are compiled, and the one in use.
//
// Every *_kernels.cpp is compiled once per set, in a namespace named after the set, and ends with a
// constant table of its functions. All sets give the same bits: they differ in vector width only.
// A kernel header declares its table type and then, by MATRIX_SELECT_KERNELS, the accessor that
// returns the table of the set in use:
//
//   struct ProductKernels { void (*subtract_product)(...); };
//   MATRIX_SELECT_KERNELS(ProductKernels, product_kernels)  // product_kernels()
#pragma once

namespace matrix_pack {

enum class KernelSet { baseline, v3, v4 };

// What kernel_set returns; only kernel_sets.cpp changes it.
extern KernelSet kernel_set_in_use;

// The best set that this processor runs, unless a test has forced another.
inline KernelSet kernel_set() noexcept {
  return kernel_set_in_use;
}

// For tests: uses `set` from now on. False, and no change, when this processor or build lacks it.
bool force_kernel_set(KernelSet set) noexcept;

const char* kernel_set_name(KernelSet set) noexcept;

}  // namespace matrix_pack

#if defined(__x86_64__)
#define MATRIX_SELECT_KERNELS(Table, name) \
  namespace baseline {                     \
  extern const Table name##_table;         \
  }                                        \
  namespace v3 {                           \
  extern const Table name##_table;         \
  }                                        \
  namespace v4 {                           \
  extern const Table name##_table;         \
  }                                        \
  inline const Table& name() {             \
    switch (kernel_set()) {                \
      case KernelSet::v4:                  \
        return v4::name##_table;           \
      case KernelSet::v3:                  \
        return v3::name##_table;           \
      default:                             \
        return baseline::name##_table;     \
    }                                      \
  }
#else
#define MATRIX_SELECT_KERNELS(Table, name) \
  namespace baseline {                     \
  extern const Table name##_table;         \
  }                                        \
  inline const Table& name() {             \
    return baseline::name##_table;         \
  }
#endif
