#include "bench/peers/spectrum_eigen.hpp"

#include <Eigen/Eigenvalues>
#include <algorithm>

namespace bench::eigen {

namespace {

template <class Solver, class Scalar, class Value>
void solve(int n, const Scalar* a, Value* lambda, Value* x, bool vectors) {
  using Matrix = Eigen::Matrix<Scalar, Eigen::Dynamic, Eigen::Dynamic>;
  const Eigen::Map<const Matrix> map(a, n, n);
  const auto finish = [&](const Solver& solver) {
    std::copy_n(solver.eigenvalues().data(), n, lambda);
    if (!vectors) return;
    const auto columns = solver.eigenvectors().eval();
    std::copy_n(columns.data(), columns.size(), x);
  };
  if constexpr (std::is_same_v<Solver, Eigen::SelfAdjointEigenSolver<Matrix>>)
    finish(Solver(map, vectors ? Eigen::ComputeEigenvectors : Eigen::EigenvaluesOnly));
  else
    finish(Solver(map, vectors));
}

}  // namespace

void symmetric_spectrum(int n, const double* a, double* lambda, double* x) {
  solve<Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>>(n, a, lambda, x, x != nullptr);
}

void general_spectrum(int n, const double* a, std::complex<double>* lambda,
                      std::complex<double>* x) {
  solve<Eigen::EigenSolver<Eigen::MatrixXd>>(n, a, lambda, x, x != nullptr);
}

void complex_spectrum(int n, const std::complex<double>* a, std::complex<double>* lambda,
                      std::complex<double>* x) {
  solve<Eigen::ComplexEigenSolver<Eigen::MatrixXcd>>(n, a, lambda, x, x != nullptr);
}

}  // namespace bench::eigen
