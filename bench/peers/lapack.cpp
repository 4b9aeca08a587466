#include "bench/peers/lapack.hpp"

#include <dlfcn.h>

namespace bench {

namespace {

Lapack openblas_routines() {
  Lapack l;
#define BENCH_ROUTINE(name) l.name = &LAPACKE_##name;
  BENCH_LAPACK_ROUTINES(BENCH_ROUTINE)
#undef BENCH_ROUTINE
  l.dgemm = &cblas_dgemm;
  l.dscal = &cblas_dscal;
  return l;
}

const Lapack kOpenblas = openblas_routines();
Lapack blis;
const Lapack* in_use = &kOpenblas;

template <class Function>
bool find(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
  return function != nullptr;
}

}  // namespace

const Lapack& lapack() {
  return *in_use;
}

void use(Blas blas) {
  in_use = blas == Blas::blis ? &blis : &kOpenblas;
}

bool load_blis() {
  constexpr int kNow = RTLD_NOW;
  // By their paths: the names alone lead to what the system prefers. What LAPACKE wants is then
  // there by name.
  const auto load = [](Lmid_t space, const char* file) {
    return dlmopen(space, (std::string(BENCH_LIBRARIES "/") + file).c_str(), kNow);
  };
  void* const blas = load(LM_ID_NEWLM, "blis-serial/libblas.so.3");
  Lmid_t space;
  if (blas == nullptr || dlinfo(blas, RTLD_DI_LMID, &space) != 0) return false;
  void* const reference = load(space, "lapack/liblapack.so.3");
  void* const lapacke = load(space, "liblapacke.so.3");
  if (reference == nullptr || lapacke == nullptr) return false;
  bool found = find(blas, "cblas_dgemm", blis.dgemm) && find(blas, "cblas_dscal", blis.dscal);
#define BENCH_ROUTINE(name) found = found && find(lapacke, "LAPACKE_" #name, blis.name);
  BENCH_LAPACK_ROUTINES(BENCH_ROUTINE)
#undef BENCH_ROUTINE
  return found;
}

std::string blis_version() {
  // The library that is BLAS alone hides what tells it.
  void* const library = dlopen(BENCH_LIBRARIES "/blis-serial/libblis.so.4", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return "BLIS";
  const char* (*version)() = nullptr;
  int (*architecture)() = nullptr;
  const char* (*name)(int) = nullptr;
  if (!find(library, "bli_info_get_version_str", version) ||
      !find(library, "bli_arch_query_id", architecture) || !find(library, "bli_arch_string", name))
    return "BLIS";
  return std::string("BLIS ") + version() + " " + name(architecture());
}

}  // namespace bench
