// The singular value decomposition and what rests on it.
#include <cblas.h>

#include <memory>

#include "bench/bench.hpp"
#include "bench/peers/eigen_peers.hpp"
#include "bench/peers/lapack.hpp"
#include "linsys/linsys.hpp"
#include "pack/elements.hpp"
#include "svd/svd.hpp"
#include "svd/svd_core.hpp"
#include "svd/svds_core.hpp"

namespace bench {
namespace {

std::size_t product(int m, int n) {
  return static_cast<std::size_t>(m) * static_cast<std::size_t>(n);
}

// An m x n matrix, and arrays for its factors and for LAPACK's work.
struct Problem {
  Problem(int rows, int cols)
      : m(rows),
        n(cols),
        a(random_numbers(product(m, n), 8)),
        s(product(n, 1)),
        u(product(m, n)),
        v(product(n, n)),
        work(5 * product(n, n) + 200 * product(m, 1)),
        integers(8 * product(n, 1)) {}

  int work_size() const { return static_cast<int>(work.size()); }
  std::vector<Anyval*> in(Host& host) const { return {host.matrix(m, n, a)}; }

  int m;
  int n;
  Numbers a, s, u, v, work;
  std::vector<int> integers;
};

using Shared = std::shared_ptr<Problem>;

// A computation that leaves the singular values in p->s.
Contender values_by(const Shared& p, std::function<void(Problem& p, double* a)> compute) {
  return in_place(
      p->a, [=](double* a) { compute(*p, a); }, [=](const double*) { return p->s; });
}

// --- svds ---

Contest svds_contest(int m, int n) {
  const auto p = std::make_shared<Problem>(m, n);
  Contest c;
  c.tolerance = 1e-12;
  c.core = in_place(
      p->a,
      [=](double* a) {
        aMatrix matrix = borrowed(m, n, a);
        matrix_pack::svds_core(&matrix);
      },
      [=](const double* a) {
        Numbers diagonal;
        for (int i = 0; i < n; ++i) diagonal.push_back(a[matrix_pack::element_index(m, i, i)]);
        return diagonal;
      });
  c.handler = handler_call(
      [=](Host& host) { return p->in(host); },
      [](EfiCallContext* context, const auto& v) { return matrix_pack::svds(context, v[0]); },
      [](Host&, Anyval* s) { return parts_of(static_cast<aMatrix*>(s)); });
  c.lapack = values_by(p, [](Problem& q, double* a) {
    lapack().dgesdd_work(LAPACK_COL_MAJOR, 'N', q.m, q.n, a, q.m, q.s.data(), nullptr, q.m, nullptr,
                         q.n, q.work.data(), q.work_size(), q.integers.data());
  });
  c.eigen = values_by(std::make_shared<Problem>(m, n), [](Problem& q, double* a) {
    eigen::svd(q.m, q.n, a, q.s.data(), nullptr, nullptr);
  });
  return c;
}

// --- svd ---

// The diagonal of U^T A V.
Numbers rebuilt_values(const Problem& p, const double* u, const double* v) {
  Numbers values;
  for (int k = 0; k < p.n; ++k) {
    const double* const column = v + product(p.n, k);
    const Numbers av = times(p.m, p.n, p.a.data(), Numbers(column, column + p.n));
    values.push_back(cblas_ddot(p.m, u + product(p.m, k), 1, av.data(), 1));
  }
  return values;
}

Numbers transposed(int n, const Numbers& a) {
  Numbers t;
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) t.push_back(a[product(n, i) + static_cast<std::size_t>(j)]);
  return t;
}

// The decomposition by LAPACK: V^T goes to p.v.
void divide_and_conquer(Problem& p, double* a) {
  lapack().dgesdd_work(LAPACK_COL_MAJOR, 'S', p.m, p.n, a, p.m, p.s.data(), p.u.data(), p.m,
                       p.v.data(), p.n, p.work.data(), p.work_size(), p.integers.data());
}
void qr_iteration(Problem& p, double* a) {
  lapack().dgesvd_work(LAPACK_COL_MAJOR, 'S', 'S', p.m, p.n, a, p.m, p.s.data(), p.u.data(), p.m,
                       p.v.data(), p.n, p.work.data(), p.work_size());
}

Contest svd_contest(int m, int n, void (*lapack)(Problem&, double*)) {
  const auto p = std::make_shared<Problem>(m, n);
  const auto for_lapack = std::make_shared<Problem>(m, n);
  const auto for_eigen = std::make_shared<Problem>(m, n);
  Contest c;
  c.tolerance = 1e-12;
  c.core = in_place(
      p->a,
      [=](double* a) {
        aMatrix u = borrowed(m, n, a);
        aMatrix v = borrowed(n, n, p->v.data());
        aMatrix s = borrowed(n, 1, p->s.data());
        matrix_pack::svd_core(&u, &v, &s);
      },
      [=](const double* u) { return rebuilt_values(*p, u, p->v.data()); });
  c.handler = handler_call(
      [=](Host& host) { return p->in(host); },
      [](EfiCallContext* context, const auto& v) { return matrix_pack::svd(context, v[0]); },
      [=](Host& host, Anyval* joined) {
        const auto parts = host.store().parts(joined);
        return rebuilt_values(*p, parts[0]->re, parts[1]->re);
      });
  c.lapack = in_place(
      p->a, [=](double* a) { lapack(*for_lapack, a); },
      [=](const double*) {
        return rebuilt_values(*p, for_lapack->u.data(), transposed(n, for_lapack->v).data());
      });
  c.eigen = in_place(
      p->a,
      [=](double* a) {
        eigen::svd(m, n, a, for_eigen->s.data(), for_eigen->u.data(), for_eigen->v.data());
      },
      [=](const double*) { return rebuilt_values(*p, for_eigen->u.data(), for_eigen->v.data()); });
  return c;
}

// --- geninv ---

Contest geninv_contest(int n) {
  const auto p = std::make_shared<Problem>(n, n);
  Contest c;
  c.tolerance = 1e-7;
  c.handler = handler_call(
      [=](Host& host) {
        return std::vector<Anyval*>{host.matrix(n, n, p->a), host.store().new_scalar(0.0, 0.0)};
      },
      [](EfiCallContext* context, const auto& v) {
        return matrix_pack::geninv(context, v[0], v[1]);
      },
      [](Host&, Anyval* x) { return parts_of(static_cast<aMatrix*>(x)); });
  c.lapack = in_place(
      p->a,
      [=](double* a) {
        divide_and_conquer(*p, a);
        for (int k = 0; k < n; ++k)
          lapack().dscal(n, 1 / p->s[product(k, 1)], p->u.data() + product(n, k), 1);
        lapack().dgemm(CblasColMajor, CblasTrans, CblasTrans, n, n, n, 1, p->v.data(), n,
                       p->u.data(), n, 0, a, n);
      },
      [=](const double* a) { return Numbers(a, a + product(n, n)); });
  return c;
}

const bool added =
    add("svds", [](int n) { return svds_contest(n, n); }) &&
    add("svds 4n x n", [](int n) { return svds_contest(4 * n, n); }) &&
    add("svd", [](int n) { return svd_contest(n, n, divide_and_conquer); }) &&
    add("svd 4n x n", [](int n) { return svd_contest(4 * n, n, divide_and_conquer); }) &&
    add("svd by dgesvd", [](int n) { return svd_contest(n, n, qr_iteration); }) &&
    add("geninv", geninv_contest);

}  // namespace
}  // namespace bench
