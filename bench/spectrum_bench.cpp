// Eigenvalues and eigenvectors of symmetric, general and complex matrices.
#include <complex>
#include <memory>

#include "bench/bench.hpp"
#include "bench/peers/lapack.hpp"
#include "bench/peers/spectrum_eigen.hpp"
#include "pack/exports.hpp"

namespace bench {
namespace {

using Complex = std::complex<double>;

enum class Kind { symmetric, general, complex };

// A random matrix, and room for what a contender computes.
struct Problem {
  Problem(int order, Kind matrix_kind, bool with_vectors)
      : n(order),
        kind(matrix_kind),
        vectors(with_vectors),
        re(random_numbers(size(), 1)),
        im(kind == Kind::complex ? random_numbers(size(), 2) : Numbers()),
        real_values(static_cast<std::size_t>(3 * n)),
        real_vectors(size()),
        values(static_cast<std::size_t>(n)),
        columns(size()) {
    for (std::size_t j = 0; kind == Kind::symmetric && j < line(); ++j)
      for (std::size_t i = 0; i < j; ++i) re[j * line() + i] = re[i * line() + j];
  }

  std::size_t line() const { return static_cast<std::size_t>(n); }
  std::size_t size() const { return line() * line(); }
  Complex element(std::size_t k) const { return {re[k], im.empty() ? 0.0 : im[k]}; }

  int n;
  Kind kind;
  bool vectors;
  Numbers re, im, real_values, real_vectors;
  std::vector<Complex> values, columns;
};

using Shared = std::shared_ptr<Problem>;

// Functions of the eigenvalues that do not depend on their order: sums of 1 / (lambda - s). What is
// given are the vectors, when the contest is about them: their Rayleigh quotients count.
Numbers fingerprint(const Problem& p, const std::vector<Complex>& found) {
  std::vector<Complex> lambda = found;
  if (p.vectors) {
    lambda.assign(p.line(), 0);
    for (std::size_t j = 0; j < p.line(); ++j) {
      const Complex* const x = found.data() + j * p.line();
      double size = 0;
      for (std::size_t i = 0; i < p.line(); ++i) {
        Complex ax = 0;
        for (std::size_t k = 0; k < p.line(); ++k) ax += p.element(k * p.line() + i) * x[k];
        lambda[j] += std::conj(x[i]) * ax;
        size += std::norm(x[i]);
      }
      lambda[j] /= size;
    }
  }
  Numbers numbers;
  for (const Complex s : {Complex(0.3, 20), Complex(-2, 30), Complex(1, -40)}) {
    Complex sum = 0;
    for (const Complex& l : lambda) sum += 1.0 / (l - s);
    numbers.push_back(sum.real());
    numbers.push_back(sum.imag());
  }
  return numbers;
}

Numbers of_real(const Problem& p, const Numbers& found, std::size_t count) {
  return fingerprint(p, {found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count)});
}

Contender by_lapack(const Shared& p) {
  const char job = p->vectors ? 'V' : 'N';
  const int n = p->n;
  if (p->kind == Kind::symmetric)
    return in_place(
        p->re,
        [=](double* a) {
          LAPACKE_dsyev(LAPACK_COL_MAJOR, job, 'L', n, a, n, p->real_values.data());
        },
        [=](const double* a) {
          return p->vectors ? fingerprint(*p, {a, a + p->size()})
                            : of_real(*p, p->real_values, p->line());
        });
  if (p->kind == Kind::general)
    return in_place(
        p->re,
        [=](double* a) {
          double* const w = p->real_values.data();
          LAPACKE_dgeev(LAPACK_COL_MAJOR, 'N', job, n, a, n, w, w + n, nullptr, 1,
                        p->real_vectors.data(), n);
        },
        [=](const double*) {
          const double* const w = p->real_values.data();
          for (std::size_t j = 0; j < p->line(); ++j) p->values[j] = {w[j], w[p->line() + j]};
          if (!p->vectors) return fingerprint(*p, p->values);
          // Of a pair, the columns hold the real and the imaginary part of the first.
          for (std::size_t j = 0; j < p->line(); ++j) {
            const double sign = w[p->line() + j] > 0 ? 1 : w[p->line() + j] < 0 ? -1 : 0;
            const double* const x = &p->real_vectors[(sign < 0 ? j - 1 : j) * p->line()];
            for (std::size_t i = 0; i < p->line(); ++i)
              p->columns[j * p->line() + i] = {x[i], sign == 0 ? 0 : sign * x[p->line() + i]};
          }
          return fingerprint(*p, p->columns);
        });
  return in_place(
      interleaved(p->re, p->im),
      [=](double* a) {
        LAPACKE_zgeev(LAPACK_COL_MAJOR, 'N', job, n, reinterpret_cast<lapack_complex_double*>(a), n,
                      reinterpret_cast<lapack_complex_double*>(p->values.data()), nullptr, 1,
                      reinterpret_cast<lapack_complex_double*>(p->columns.data()), n);
      },
      [=](const double*) { return fingerprint(*p, p->vectors ? p->columns : p->values); });
}

Contender by_eigen(const Shared& p) {
  Complex* const x = p->vectors ? p->columns.data() : nullptr;
  const auto found = [=](const double*) {
    return fingerprint(*p, p->vectors ? p->columns : p->values);
  };
  if (p->kind == Kind::symmetric)
    return in_place(
        p->re,
        [=](double* a) {
          eigen::symmetric_spectrum(p->n, a, p->real_values.data(),
                                    p->vectors ? p->real_vectors.data() : nullptr);
        },
        [=](const double*) {
          return p->vectors ? of_real(*p, p->real_vectors, p->size())
                            : of_real(*p, p->real_values, p->line());
        });
  if (p->kind == Kind::general)
    return in_place(
        p->re, [=](double* a) { eigen::general_spectrum(p->n, a, p->values.data(), x); }, found);
  return in_place(
      interleaved(p->re, p->im),
      [=](double* a) {
        eigen::complex_spectrum(p->n, reinterpret_cast<Complex*>(a), p->values.data(), x);
      },
      found);
}

Contest contest(int n, Kind kind, bool vectors) {
  const auto p = std::make_shared<Problem>(n, kind, vectors);
  Contest c;
  c.tolerance = 1e-8;
  c.handler = handler_call(
      [=](Host& host) {
        aComplex* tolerance = nullptr;
        host.store().new_scalar(&tolerance);
        *tolerance = {{kScalarKind}, 0, 1e-12, 0.0};
        return std::vector<Anyval*>{host.matrix(n, n, p->re, p->im), tolerance};
      },
      [=](EfiCallContext* context, const auto& v) {
        return vectors ? eigenvecs(context, v[0]) : eigenvals(context, v[0], v[1]);
      },
      [=](Host&, Anyval* value) {
        const auto* m = static_cast<aMatrix*>(value);
        std::vector<Complex> found;
        for (int k = 0; k < m->rows * m->cols; ++k)
          found.emplace_back(m->re[k], m->im == nullptr ? 0.0 : m->im[k]);
        return fingerprint(*p, found);
      });
  c.lapack = by_lapack(p);
  c.eigen = by_eigen(p);
  return c;
}

bool add_kind(const char* name, Kind kind) {
  return add(std::string("eigenvals ") + name, [=](int n) { return contest(n, kind, false); }) &&
         add(std::string("eigenvecs ") + name, [=](int n) { return contest(n, kind, true); });
}

const bool added = add_kind("symmetric", Kind::symmetric) && add_kind("general", Kind::general) &&
                   add_kind("complex", Kind::complex);

}  // namespace
}  // namespace bench
