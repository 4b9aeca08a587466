#include "bench/peers/qz_eigen.hpp"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <complex>

namespace bench::eigen {

void generalized(int n, const double* a, const double* b, double* alpha, double* beta, double* x) {
  const Eigen::Map<const Eigen::MatrixXd> ma(a, n, n);
  const Eigen::Map<const Eigen::MatrixXd> mb(b, n, n);
  Eigen::GeneralizedEigenSolver<Eigen::MatrixXd> solver(n);
  solver.compute(ma, mb, x != nullptr);
  std::copy_n(solver.alphas().data(), n, reinterpret_cast<std::complex<double>*>(alpha));
  std::copy_n(solver.betas().data(), n, beta);
  if (x == nullptr) return;
  const Eigen::MatrixXcd vectors = solver.eigenvectors();
  std::copy_n(vectors.data(), vectors.size(), reinterpret_cast<std::complex<double>*>(x));
}

}  // namespace bench::eigen
