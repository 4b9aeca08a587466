// Norms, condition numbers and the Hermitian eigenvalues under the complex 2-norm.
#include <algorithm>
#include <memory>

#include "bench/bench.hpp"
#include "bench/peers/eigen_peers.hpp"
#include "bench/peers/lapack.hpp"
#include "eigen/hermitian/eigenvalues.hpp"
#include "norms/norm_cores.hpp"
#include "norms/norms.hpp"

namespace bench {
namespace {

using Handler = Anyval* (*)(EfiCallContext*, Anyval*);
using EigenNorm = double (*)(int n, const double* a);

lapack_complex_double* lapack_complex(double* z) {
  return reinterpret_cast<lapack_complex_double*>(z);
}

// An n x n matrix, its parts one behind the other or side by side, and room for LAPACK.
struct Problem {
  Problem(int order, bool with_imaginary)
      : n(order),
        complex(with_imaginary),
        count(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)),
        re(random_numbers(count, 9)),
        im(complex ? random_numbers(count, 10) : Numbers()),
        apart(re),
        beside(complex ? interleaved(re, im) : re),
        s(static_cast<std::size_t>(n)),
        work(400 * s.size()),
        reals(40 * s.size()),
        integers(8 * s.size()) {
    apart.insert(apart.end(), im.begin(), im.end());
  }

  int work_size() const { return static_cast<int>(work.size()) / 2; }
  aMatrix in(double* a) const { return borrowed(n, n, a, complex ? a + count : nullptr); }

  int n;
  bool complex;
  std::size_t count;
  Numbers re, im, apart, beside, s, work, reals;
  std::vector<int> integers;
};

using Shared = std::shared_ptr<Problem>;

// A computation of one number from the arrays in `input`, which it may overwrite.
Contender number_from(const Numbers& input, std::function<double(double*)> compute) {
  const auto found = std::make_shared<double>();
  return in_place(
      input, [=](double* a) { *found = compute(a); },
      [=](const double*) { return Numbers{*found}; });
}

Contender handler_number(const Shared& p, Handler handler) {
  return handler_call(
      [=](Host& host) { return std::vector<Anyval*>{host.matrix(p->n, p->n, p->re, p->im)}; },
      [=](EfiCallContext* context, const auto& v) { return handler(context, v[0]); },
      [](Host&, Anyval* value) { return Numbers{static_cast<aComplex*>(value)->re}; });
}

double lapack_norm(Problem& p, char which, double* a) {
  return p.complex
             ? lapack().zlange_work(LAPACK_COL_MAJOR, which, p.n, p.n, lapack_complex(a), p.n,
                                    p.reals.data())
             : lapack().dlange_work(LAPACK_COL_MAJOR, which, p.n, p.n, a, p.n, p.reals.data());
}

// --- norm1, normi, norme ---

Contest norm_contest(int n, bool complex, char which, matrix_pack::NormCore core, Handler handler,
                     EigenNorm eigen_norm) {
  const auto p = std::make_shared<Problem>(n, complex);
  Contest c;
  c.tolerance = 1e-12;
  c.core = number_from(p->apart, [=](double* a) {
    const aMatrix m = p->in(a);
    double norm = 0;
    core(&m, &norm);
    return norm;
  });
  c.handler = handler_number(p, handler);
  c.lapack = number_from(p->beside, [=](double* a) { return lapack_norm(*p, which, a); });
  c.eigen = number_from(p->beside, [=](double* a) { return eigen_norm(n, a); });
  return c;
}

// --- norm2, cond2 ---

// The singular values, the largest first.
const Numbers& lapack_values(Problem& p, double* a) {
  if (p.complex)
    lapack().zgesdd_work(LAPACK_COL_MAJOR, 'N', p.n, p.n, lapack_complex(a), p.n, p.s.data(),
                         nullptr, p.n, nullptr, p.n, lapack_complex(p.work.data()), p.work_size(),
                         p.reals.data(), p.integers.data());
  else
    lapack().dgesdd_work(LAPACK_COL_MAJOR, 'N', p.n, p.n, a, p.n, p.s.data(), nullptr, p.n, nullptr,
                         p.n, p.work.data(), p.work_size(), p.integers.data());
  return p.s;
}

const Numbers& eigen_values(Problem& p, double* a) {
  if (p.complex)
    eigen::complex_singular_values(p.n, a, p.s.data());
  else
    eigen::svd(p.n, p.n, a, p.s.data(), nullptr, nullptr);
  return p.s;
}

Contest norm2_contest(int n, bool complex) {
  const auto p = std::make_shared<Problem>(n, complex);
  Contest c;
  c.tolerance = 1e-12;
  c.core = number_from(p->apart, [=](double* a) {
    aMatrix m = p->in(a);
    double norm = 0;
    complex ? matrix_pack::norm2_complex(&m, &norm) : matrix_pack::norm2_real(&m, &norm);
    return norm;
  });
  c.handler = handler_number(p, matrix_pack::norm2);
  c.lapack = number_from(p->beside, [=](double* a) { return lapack_values(*p, a).front(); });
  c.eigen = number_from(p->beside, [=](double* a) { return eigen_values(*p, a).front(); });
  return c;
}

Contest cond2_contest(int n) {
  const auto p = std::make_shared<Problem>(n, false);
  const auto ratio = [](const Numbers& s) { return s.front() / s.back(); };
  Contest c;
  c.tolerance = 1e-7;
  c.handler = handler_number(p, matrix_pack::cond2);
  c.lapack = number_from(p->beside, [=](double* a) { return ratio(lapack_values(*p, a)); });
  c.eigen = number_from(p->beside, [=](double* a) { return ratio(eigen_values(*p, a)); });
  return c;
}

// --- cond1 ---

Contest cond1_contest(int n, bool complex) {
  const auto p = std::make_shared<Problem>(n, complex);
  Contest c;
  c.tolerance = 1e-7;
  c.handler = handler_number(p, matrix_pack::cond1);
  c.lapack = number_from(p->beside, [=](double* a) {
    const double norm = lapack_norm(*p, '1', a);
    int* const pivots = p->integers.data();
    if (complex) {
      lapack().zgetrf_work(LAPACK_COL_MAJOR, n, n, lapack_complex(a), n, pivots);
      lapack().zgetri_work(LAPACK_COL_MAJOR, n, lapack_complex(a), n, pivots,
                           lapack_complex(p->work.data()), p->work_size());
    } else {
      lapack().dgetrf_work(LAPACK_COL_MAJOR, n, n, a, n, pivots);
      lapack().dgetri_work(LAPACK_COL_MAJOR, n, a, n, pivots, p->work.data(), p->work_size());
    }
    return norm * lapack_norm(*p, '1', a);
  });
  c.eigen = number_from(p->beside, [=](double* a) {
    const auto norm1 = complex ? eigen::complex_norm1 : eigen::norm1;
    const double norm = norm1(n, a);
    (complex ? eigen::complex_invert : eigen::invert)(n, a);
    return norm * norm1(n, a);
  });
  return c;
}

// --- hermitian_eigenvalues ---

Contest hermitian_contest(int n) {
  const auto p = std::make_shared<Problem>(n, true);
  const auto order = static_cast<std::size_t>(n);
  for (std::size_t k = 0; k < order; ++k) p->im[k * order + k] = 0;
  p->apart = p->re;
  p->apart.insert(p->apart.end(), p->im.begin(), p->im.end());
  p->beside = interleaved(p->re, p->im);
  const auto from = [=](const Numbers& input, std::function<void(double*, double*)> compute) {
    const auto d = std::make_shared<Numbers>(order);
    return in_place(
        input, [=](double* a) { compute(a, d->data()); }, [=](const double*) { return *d; });
  };
  Contest c;
  c.tolerance = 1e-12;
  c.core = from(p->apart, [=](double* a, double* d) {
    aMatrix m = p->in(a);
    matrix_pack::hermitian_eigenvalues(&m, d);
  });
  c.lapack = from(p->beside, [=](double* a, double* d) {
    lapack().zheev_work(LAPACK_COL_MAJOR, 'N', 'L', n, lapack_complex(a), n, d,
                        lapack_complex(p->work.data()), p->work_size(), p->reals.data());
  });
  c.eigen = from(p->beside, [=](double* a, double* d) { eigen::hermitian_eigenvalues(n, a, d); });
  return c;
}

using namespace matrix_pack;

bool add_norm(const char* name, char which, NormCore real, NormCore complex, Handler handler,
              EigenNorm eigen_real, EigenNorm eigen_complex) {
  return add(name,
             [=](int n) { return norm_contest(n, false, which, real, handler, eigen_real); }) &&
         add(std::string(name) + " complex",
             [=](int n) { return norm_contest(n, true, which, complex, handler, eigen_complex); });
}

const bool added =
    add_norm("norm1", '1', norm1_real, norm1_complex, norm1, eigen::norm1, eigen::complex_norm1) &&
    add_norm("normi", 'I', normi_real, normi_complex, normi, eigen::normi, eigen::complex_normi) &&
    add_norm("norme", 'F', norme_real, norme_complex, norme, eigen::norme, eigen::complex_norme) &&
    add("norm2", [](int n) { return norm2_contest(n, false); }) &&
    add("norm2 complex", [](int n) { return norm2_contest(n, true); }) &&
    add("cond1", [](int n) { return cond1_contest(n, false); }) &&
    add("cond1 complex", [](int n) { return cond1_contest(n, true); }) &&
    add("cond2", cond2_contest) && add("hermitian values", hermitian_contest);

}  // namespace
}  // namespace bench
