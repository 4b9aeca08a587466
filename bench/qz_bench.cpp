// The generalized eigenproblem.
#include <algorithm>
#include <complex>
#include <memory>

#include "bench/bench.hpp"
#include "bench/peers/lapack.hpp"
#include "bench/peers/qz_eigen.hpp"
#include "eigen/eigen.hpp"
#include "eigen/qz/stages.hpp"

namespace bench {
namespace {

using Complex = std::complex<double>;

// A random pair and, behind it in one array, all that a contender computes: the vectors as real
// columns (of a complex pair the real and the imaginary part of the first), alpha, beta, work.
struct Problem {
  Problem(int order, bool with_vectors)
      : n(order),
        square(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)),
        line(static_cast<std::size_t>(n)),
        vectors(with_vectors),
        a(random_numbers(square, 1)),
        b(random_numbers(square, 2)) {
    double most = 0;
    lapack().dggev_work(LAPACK_COL_MAJOR, 'N', job(), n, nullptr, n, nullptr, n, nullptr, nullptr,
                        nullptr, nullptr, 1, nullptr, n, &most, -1);
    work = std::max(static_cast<std::size_t>(most), 2 * square + 8 * line);
  }

  char job() const { return vectors ? 'V' : 'N'; }
  Numbers room() const {
    Numbers all = a;
    all.insert(all.end(), b.begin(), b.end());
    all.resize(all.size() + square + 3 * line + work);
    for (std::size_t i = 0; i < line; ++i) all[2 * square + i * (line + 1)] = 1.0;
    return all;
  }
  double* x(double* all) const { return all + 2 * square; }
  double* alfr(double* all) const { return all + 3 * square; }
  double* alfi(double* all) const { return alfr(all) + line; }
  double* beta(double* all) const { return alfi(all) + line; }
  double* free(double* all) const { return beta(all) + line; }

  int n;
  std::size_t square, line;
  bool vectors;
  Numbers a, b;
  std::size_t work;
};

// Functions of the eigenvalues that do not depend on their order: sums of 1 / (lambda - s).
Numbers fingerprint(const std::vector<Complex>& lambda) {
  Numbers numbers;
  for (const Complex s : {Complex(0.3, 0.2), Complex(-2, 0.1), Complex(1, 3)}) {
    Complex sum = 0;
    for (const Complex& l : lambda) sum += 1.0 / (l - s);
    numbers.push_back(sum.real());
    numbers.push_back(sum.imag());
  }
  return numbers;
}

// The eigenvalues that columns of vectors stand for: x'B'A x / x'B'B x.
Numbers fingerprint_of_vectors(const Problem& p, const std::vector<Complex>& x) {
  std::vector<Complex> lambda;
  for (std::size_t j = 0; j < p.line; ++j) {
    std::vector<Complex> ax(p.line);
    std::vector<Complex> bx(p.line);
    for (std::size_t k = 0; k < p.line; ++k)
      for (std::size_t i = 0; i < p.line; ++i) {
        ax[i] += p.a[k * p.line + i] * x[j * p.line + k];
        bx[i] += p.b[k * p.line + i] * x[j * p.line + k];
      }
    Complex above = 0;
    double below = 0;
    for (std::size_t i = 0; i < p.line; ++i) {
      above += std::conj(bx[i]) * ax[i];
      below += std::norm(bx[i]);
    }
    lambda.push_back(above / below);
  }
  return fingerprint(lambda);
}

// What core and LAPACK leave in their room.
Numbers numbers_in_room(const Problem& p, const double* room) {
  auto* const all = const_cast<double*>(room);
  std::vector<Complex> lambda;
  for (std::size_t j = 0; j < p.line; ++j)
    lambda.push_back(Complex(p.alfr(all)[j], p.alfi(all)[j]) / p.beta(all)[j]);
  if (!p.vectors) return fingerprint(lambda);
  std::vector<Complex> x(p.square);
  for (std::size_t j = 0; j < p.line; ++j) {
    const double sign = p.alfi(all)[j] > 0 ? 1 : p.alfi(all)[j] < 0 ? -1 : 0;
    const double* const re = p.x(all) + (sign < 0 ? j - 1 : j) * p.line;
    for (std::size_t i = 0; i < p.line; ++i)
      x[j * p.line + i] = Complex(re[i], sign == 0 ? 0 : sign * re[p.line + i]);
  }
  return fingerprint_of_vectors(p, x);
}

std::vector<Complex> elements_of(const aMatrix* m) {
  std::vector<Complex> elements;
  const int count = m->rows * m->cols;
  for (int k = 0; k < count; ++k) elements.emplace_back(m->re[k], m->im == nullptr ? 0 : m->im[k]);
  return elements;
}

void solve_by_core(const Problem& p, double* all) {
  const matrix_pack::QzPair pair = {p.n, all, all + p.square, p.vectors ? p.x(all) : nullptr};
  const matrix_pack::QzValues values = {p.alfr(all), p.alfi(all), p.beta(all)};
  static std::vector<matrix_pack::Reflector2> pairs;
  static std::vector<matrix_pack::Reflector3> triples;
  pairs.resize(2 * p.line);
  triples.resize(p.line);
  matrix_pack::qz_reduce(pair, pairs.data());
  matrix_pack::qz_iterate(pair, pairs.data(), triples.data());
  matrix_pack::qz_eigenvalues(pair, values);
  if (p.vectors) matrix_pack::qz_vectors(pair, values, p.free(all));
}

void solve_by_lapack(const Problem& p, double* all) {
  lapack().dggev_work(LAPACK_COL_MAJOR, 'N', p.job(), p.n, all, p.n, all + p.square, p.n,
                      p.alfr(all), p.alfi(all), p.beta(all), nullptr, 1, p.x(all), p.n, p.free(all),
                      static_cast<lapack_int>(p.work));
}

Contest contest(int n, bool vectors) {
  const auto p = std::make_shared<Problem>(n, vectors);
  const auto numbers = [=](const double* all) { return numbers_in_room(*p, all); };
  Contest c;
  c.tolerance = 1e-7;
  c.core = in_place(
      p->room(), [=](double* all) { solve_by_core(*p, all); }, numbers);
  c.handler = handler_call(
      [=](Host& host) {
        aComplex* tolerance = nullptr;
        host.store().new_scalar(&tolerance);
        tolerance->kind = kScalarKind;
        tolerance->re = 1e-9;
        tolerance->im = 0;
        return std::vector<Anyval*>{host.matrix(n, n, p->a), host.matrix(n, n, p->b), tolerance};
      },
      [=](EfiCallContext* context, const auto& v) {
        return (vectors ? matrix_pack::genvecs : matrix_pack::genvals)(context, v[0], v[1], v[2]);
      },
      [=](Host&, Anyval* value) {
        const std::vector<Complex> found = elements_of(static_cast<aMatrix*>(value));
        return vectors ? fingerprint_of_vectors(*p, found) : fingerprint(found);
      });
  c.lapack = in_place(
      p->room(), [=](double* all) { solve_by_lapack(*p, all); }, numbers);
  // Eigen's numbers stand side by side in the work: alpha, beta, vectors.
  c.eigen = in_place(
      p->room(),
      [=](double* all) {
        double* const alpha = p->free(all);
        double* const x = alpha + 3 * p->line;
        eigen::generalized(n, all, all + p->square, alpha, alpha + 2 * p->line,
                           vectors ? x : nullptr);
      },
      [=](const double* all) {
        const double* const alpha = p->free(const_cast<double*>(all));
        const double* const beta = alpha + 2 * p->line;
        const auto* const x = reinterpret_cast<const Complex*>(beta + p->line);
        if (vectors) return fingerprint_of_vectors(*p, {x, x + p->square});
        std::vector<Complex> lambda;
        for (std::size_t j = 0; j < p->line; ++j)
          lambda.push_back(Complex(alpha[2 * j], alpha[2 * j + 1]) / beta[j]);
        return fingerprint(lambda);
      });
  return c;
}

const std::vector<int> kQzSizes = {3, 10, 30, 100, 300};

const bool added[] = {
    add(
        "genvals", [](int n) { return contest(n, false); }, kQzSizes),
    add(
        "genvecs", [](int n) { return contest(n, true); }, kQzSizes),
};

}  // namespace
}  // namespace bench
