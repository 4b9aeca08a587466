// LAPACK on the BLAS of a peer: OpenBLAS with the LAPACK of its own, or BLIS with the reference
// LAPACK.
//
// Both have the same symbols, so the second one lives in a namespace of its own (dlmopen). A
// contest calls lapack().dgetrf_work(...); the runner says whose that is before it times a
// contender.
#pragma once

#include <cblas.h>
#include <lapacke.h>

#include <string>

namespace bench {

// clang-format off
#define BENCH_LAPACK_ROUTINES(X)                                                         \
  X(dgeev_work) X(dgesdd_work) X(dgesvd_work) X(dgetrf_work) X(dgetri_work) X(dggev_work) \
  X(dlange_work) X(dsyev_work) X(zgeev_work) X(zgesdd_work) X(zgetrf_work) X(zgetri_work) \
  X(zheev_work) X(zlange_work) X(dgeqrf_work) X(dgesv_work) X(dorgqr_work) X(dpotrf_work) \
  X(zgesv_work)
// clang-format on

struct Lapack {
#define BENCH_ROUTINE(name) decltype(&LAPACKE_##name) name = nullptr;
  BENCH_LAPACK_ROUTINES(BENCH_ROUTINE)
#undef BENCH_ROUTINE
  decltype(&cblas_dgemm) dgemm = nullptr;
  decltype(&cblas_dscal) dscal = nullptr;
};

enum class Blas { openblas, blis };

// The routines in use: OpenBLAS's to begin with.
const Lapack& lapack();

// From now on those of this one.
void use(Blas blas);

// Loads BLIS; false where this machine does not have it.
bool load_blis();

// The name and version of BLIS, and for which processors its kernels in use are.
std::string blis_version();

}  // namespace bench
