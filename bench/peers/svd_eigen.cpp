#include <Eigen/Dense>
#include <complex>

#include "bench/peers/eigen_peers.hpp"

namespace bench::eigen {

namespace {

template <class Number>
using Matrix = Eigen::Matrix<Number, Eigen::Dynamic, Eigen::Dynamic>;
using Reals = Eigen::Map<Matrix<double>>;
using Complex = std::complex<double>;

template <class Number>
Eigen::Map<const Matrix<Number>> square(int n, const double* a) {
  return {reinterpret_cast<const Number*>(a), n, n};
}

template <class Number>
double largest_column_sum(int n, const double* a) {
  return square<Number>(n, a).cwiseAbs().colwise().sum().maxCoeff();
}

template <class Number>
double largest_row_sum(int n, const double* a) {
  return square<Number>(n, a).cwiseAbs().rowwise().sum().maxCoeff();
}

}  // namespace

void svd(int m, int n, double* a, double* s, double* u, double* v) {
  const unsigned wanted = u == nullptr ? 0 : Eigen::ComputeThinU | Eigen::ComputeThinV;
  const Eigen::BDCSVD<Matrix<double>> svd(Reals(a, m, n), wanted);
  Reals(s, n, 1) = svd.singularValues();
  if (u == nullptr) return;
  Reals(u, m, n) = svd.matrixU();
  Reals(v, n, n) = svd.matrixV();
}

void complex_singular_values(int n, double* a, double* s) {
  const Eigen::BDCSVD<Matrix<Complex>> svd(square<Complex>(n, a), 0);
  Reals(s, n, 1) = svd.singularValues();
}

void hermitian_eigenvalues(int n, double* a, double* d) {
  const Eigen::SelfAdjointEigenSolver<Matrix<Complex>> solver(square<Complex>(n, a),
                                                              Eigen::EigenvaluesOnly);
  Reals(d, n, 1) = solver.eigenvalues();
}

double norm1(int n, const double* a) {
  return largest_column_sum<double>(n, a);
}
double normi(int n, const double* a) {
  return largest_row_sum<double>(n, a);
}
double norme(int n, const double* a) {
  return square<double>(n, a).norm();
}
double complex_norm1(int n, const double* a) {
  return largest_column_sum<Complex>(n, a);
}
double complex_normi(int n, const double* a) {
  return largest_row_sum<Complex>(n, a);
}
double complex_norme(int n, const double* a) {
  return square<Complex>(n, a).norm();
}

}  // namespace bench::eigen
