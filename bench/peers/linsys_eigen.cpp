#include <Eigen/Dense>
#include <algorithm>
#include <complex>

#include "bench/peers/eigen_peers.hpp"

namespace bench::eigen {

namespace {

template <class Number>
using Matrix = Eigen::Matrix<Number, Eigen::Dynamic, Eigen::Dynamic>;
template <class Number>
using Map = Eigen::Map<Matrix<Number>>;
template <class Number>
using VectorMap = Eigen::Map<Eigen::Matrix<Number, Eigen::Dynamic, 1>>;
using Complex = std::complex<double>;

Complex* complex(double* a) {
  return reinterpret_cast<Complex*>(a);
}

template <class Number>
void factor(int n, Number* a, int* position) {
  Map<Number> m(a, n, n);
  const Eigen::PartialPivLU<Eigen::Ref<Matrix<Number>>> lu(m);
  std::copy_n(lu.permutationP().indices().data(), n, position);
}

template <class Number>
void invert_matrix(int n, Number* a) {
  Map<Number> m(a, n, n);
  m = m.partialPivLu().inverse().eval();
}

template <class Number>
void solve_system(int n, Number* a, Number* b) {
  Map<Number> m(a, n, n);
  VectorMap<Number> x(b, n);
  const Eigen::PartialPivLU<Eigen::Ref<Matrix<Number>>> lu(m);
  x = lu.solve(x).eval();
}

}  // namespace

std::string version() {
  return "Eigen " + std::to_string(EIGEN_WORLD_VERSION) + "." +
         std::to_string(EIGEN_MAJOR_VERSION) + "." + std::to_string(EIGEN_MINOR_VERSION) + " (" +
         Eigen::SimdInstructionSetsInUse() + ")";
}

void lu(int n, double* a, int* position) {
  factor(n, a, position);
}
void complex_lu(int n, double* a, int* position) {
  factor(n, complex(a), position);
}
void invert(int n, double* a) {
  invert_matrix(n, a);
}
void complex_invert(int n, double* a) {
  invert_matrix(n, complex(a));
}
void solve(int n, double* a, double* b) {
  solve_system(n, a, b);
}
void complex_solve(int n, double* a, double* b) {
  solve_system(n, complex(a), complex(b));
}

void cholesky(int n, double* a) {
  Map<double> m(a, n, n);
  const Eigen::LLT<Eigen::Ref<Matrix<double>>> llt(m);
}

void qr(int m, int n, double* a, double* q) {
  Map<double> r(a, m, n);
  const Eigen::HouseholderQR<Eigen::Ref<Matrix<double>>> qr(r);
  Map<double>(q, m, m) = qr.householderQ();
}

}  // namespace bench::eigen
