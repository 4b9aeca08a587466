// Linear systems and factorizations.
#include <cmath>
#include <complex>
#include <memory>
#include <numeric>

#include "bench/bench.hpp"
#include "bench/peers/eigen_peers.hpp"
#include "bench/peers/lapack.hpp"
#include "linsys/cholesky.hpp"
#include "linsys/inverse.hpp"
#include "linsys/linsys.hpp"
#include "linsys/lu/lubacksub.hpp"
#include "linsys/lu/ludecomp.hpp"
#include "linsys/qr.hpp"
#include "pack/exports.hpp"

namespace bench {
namespace {

using Complex = std::complex<double>;

std::size_t square(int n) {
  return static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}

lapack_complex_double* lapack_complex(double* z) {
  return reinterpret_cast<lapack_complex_double*>(z);
}

// A matrix and a right-hand side, real or complex.
struct System {
  System(int order, bool is_complex)
      : n(order),
        re(random_numbers(square(n), 1)),
        im(is_complex ? random_numbers(square(n), 2) : Numbers()),
        b_re(random_numbers(static_cast<std::size_t>(n), 3)),
        b_im(is_complex ? random_numbers(static_cast<std::size_t>(n), 4) : Numbers()) {}

  // The parts one behind the other, or side by side as LAPACK takes them; with the right-hand side
  // behind the matrix if asked for.
  Numbers apart(bool with_b = false) const {
    Numbers all = re;
    all.insert(all.end(), im.begin(), im.end());
    if (with_b) all.insert(all.end(), b_re.begin(), b_re.end());
    if (with_b) all.insert(all.end(), b_im.begin(), b_im.end());
    return all;
  }
  Numbers beside(bool with_b = false) const {
    if (im.empty()) return apart(with_b);
    Numbers all = interleaved(re, im);
    const Numbers b = interleaved(b_re, b_im);
    if (with_b) all.insert(all.end(), b.begin(), b.end());
    return all;
  }
  bool complex() const { return !im.empty(); }
  // How many numbers the matrix has.
  std::size_t size() const { return re.size() + im.size(); }

  int n;
  Numbers re, im, b_re, b_im;
};

// Records over the arrays that System::apart makes.
aMatrix matrix_in(const System& s, double* a) {
  return borrowed(s.n, s.n, a, s.complex() ? a + s.re.size() : nullptr);
}
aMatrix right_side_in(const System& s, double* a) {
  double* const b = a + s.size();
  return borrowed(s.n, 1, b, s.complex() ? b + s.n : nullptr);
}

std::vector<Anyval*> host_matrix(Host& host, const System& s) {
  return {host.matrix(s.n, s.n, s.re, s.im)};
}

// --- lu ---

// P^T L U x for an x of small integers; row i of the matrix has gone to row position[i].
Numbers factors_times(int n, const std::vector<Complex>& lu, const std::vector<int>& position) {
  std::vector<Complex> y(static_cast<std::size_t>(n));
  const auto at = [&](int i, int j) {
    return lu[static_cast<std::size_t>(j) * y.size() + static_cast<std::size_t>(i)];
  };
  for (int j = 0; j < n; ++j)
    for (int i = 0; i <= j; ++i) y[static_cast<std::size_t>(i)] += at(i, j) * double(j % 7 - 3);
  for (int j = n - 1; j >= 0; --j)
    for (int i = j + 1; i < n; ++i)
      y[static_cast<std::size_t>(i)] += at(i, j) * y[static_cast<std::size_t>(j)];
  Numbers result;
  for (const int p : position) {
    result.push_back(y[static_cast<std::size_t>(p)].real());
    result.push_back(y[static_cast<std::size_t>(p)].imag());
  }
  return result;
}

// Where the exchange of rows k and pivots[k] - origin, one after the other, brings each row.
template <class Pivot>
std::vector<int> positions(int n, const Pivot* pivots, int origin) {
  std::vector<int> order(static_cast<std::size_t>(n)), position(order);
  std::iota(order.begin(), order.end(), 0);
  for (int k = 0; k < n; ++k)
    std::swap(order[static_cast<std::size_t>(k)],
              order[static_cast<std::size_t>(static_cast<int>(pivots[k]) - origin)]);
  for (int k = 0; k < n; ++k)
    position[static_cast<std::size_t>(order[static_cast<std::size_t>(k)])] = k;
  return position;
}

std::vector<Complex> as_complex(const double* re, const double* im, std::size_t count) {
  std::vector<Complex> z;
  for (std::size_t k = 0; k < count; ++k) z.emplace_back(re[k], im == nullptr ? 0.0 : im[k]);
  return z;
}

std::vector<Complex> beside_as_complex(const System& s, const double* a) {
  if (!s.complex()) return as_complex(a, nullptr, s.re.size());
  const auto* const z = reinterpret_cast<const Complex*>(a);
  return {z, z + s.re.size()};
}

// P, L and U as one array of factors.
Numbers joined_factors_times(Host& host, Anyval* joined) {
  const auto parts = host.store().parts(joined);
  const int n = parts[0]->rows;
  std::vector<int> position(static_cast<std::size_t>(n));
  std::vector<Complex> lu = as_complex(parts[2]->re, parts[2]->im, square(n));
  const std::vector<Complex> l = as_complex(parts[1]->re, parts[1]->im, square(n));
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      const std::size_t k =
          static_cast<std::size_t>(j) * static_cast<std::size_t>(n) + static_cast<std::size_t>(i);
      if (i > j) lu[k] = l[k];
      if (parts[0]->re[k] == 1.0) position[static_cast<std::size_t>(j)] = i;
    }
  }
  return factors_times(n, lu, position);
}

Contest lu_contest(int n, bool is_complex) {
  const auto s = std::make_shared<System>(n, is_complex);
  const auto pivots = std::make_shared<Numbers>(static_cast<std::size_t>(n));
  const auto exchanged = std::make_shared<std::vector<int>>(static_cast<std::size_t>(n));
  const auto position = std::make_shared<std::vector<int>>(static_cast<std::size_t>(n));
  Contest c;
  c.tolerance = 1e-9;
  c.core = in_place(
      s->apart(),
      [=](double* a) {
        aMatrix m = matrix_in(*s, a);
        double sign;
        (is_complex ? matrix_pack::cludecomp : matrix_pack::ludecomp)(&m, pivots->data(), &sign,
                                                                      false);
      },
      [=](const double* a) {
        return factors_times(n,
                             as_complex(a, is_complex ? a + s->re.size() : nullptr, s->re.size()),
                             positions(n, pivots->data(), is_complex ? 1 : 0));
      });
  c.handler = handler_call(
      [=](Host& host) { return host_matrix(host, *s); },
      [](EfiCallContext* context, const auto& v) { return matrix_pack::lu(context, v[0]); },
      joined_factors_times);
  c.lapack = in_place(
      s->beside(),
      [=](double* a) {
        if (is_complex)
          lapack().zgetrf_work(LAPACK_COL_MAJOR, n, n, lapack_complex(a), n, exchanged->data());
        else
          lapack().dgetrf_work(LAPACK_COL_MAJOR, n, n, a, n, exchanged->data());
      },
      [=](const double* a) {
        return factors_times(n, beside_as_complex(*s, a), positions(n, exchanged->data(), 1));
      });
  c.eigen = in_place(
      s->beside(),
      [=](double* a) { (is_complex ? eigen::complex_lu : eigen::lu)(n, a, position->data()); },
      [=](const double* a) { return factors_times(n, beside_as_complex(*s, a), *position); });
  return c;
}

// --- inv ---

Contest inv_contest(int n, bool is_complex) {
  const auto s = std::make_shared<System>(n, is_complex);
  const auto work = std::make_shared<Numbers>(static_cast<std::size_t>(128 * n));
  const auto exchanged = std::make_shared<std::vector<int>>(static_cast<std::size_t>(n));
  const auto beside = [=](const double* a) {
    return is_complex ? separated(a, s->re.size()) : Numbers(a, a + s->size());
  };
  const auto value = [](Host&, Anyval* inverse) {
    return parts_of(static_cast<aMatrix*>(inverse));
  };
  const auto arguments = [=](Host& host) { return host_matrix(host, *s); };
  Contest c;
  c.tolerance = 1e-7;
  c.core = handler_call(
      arguments,
      [=](EfiCallContext* context, const auto& v) -> Anyval* {
        aMatrix* inverse = nullptr;
        (is_complex ? matrix_pack::cinv_core : matrix_pack::inv_core)(
            context, static_cast<aMatrix*>(v[0]), &inverse, true);
        return inverse;
      },
      value);
  c.handler = handler_call(
      arguments, [](EfiCallContext* context, const auto& v) { return ::inv(context, v[0]); },
      value);
  c.lapack = in_place(
      s->beside(),
      [=](double* a) {
        const int size = static_cast<int>(work->size());
        if (is_complex) {
          lapack().zgetrf_work(LAPACK_COL_MAJOR, n, n, lapack_complex(a), n, exchanged->data());
          lapack().zgetri_work(LAPACK_COL_MAJOR, n, lapack_complex(a), n, exchanged->data(),
                               lapack_complex(work->data()), size / 2);
        } else {
          lapack().dgetrf_work(LAPACK_COL_MAJOR, n, n, a, n, exchanged->data());
          lapack().dgetri_work(LAPACK_COL_MAJOR, n, a, n, exchanged->data(), work->data(), size);
        }
      },
      beside);
  c.eigen = in_place(
      s->beside(), [=](double* a) { (is_complex ? eigen::complex_invert : eigen::invert)(n, a); },
      beside);
  return c;
}

// --- lsolve ---

Contest lsolve_contest(int n, bool is_complex) {
  const auto s = std::make_shared<System>(n, is_complex);
  const auto pivots = std::make_shared<Numbers>(static_cast<std::size_t>(n));
  const auto exchanged = std::make_shared<std::vector<int>>(static_cast<std::size_t>(n));
  const auto count = static_cast<std::size_t>(n);
  const auto beside = [=](const double* a) {
    const double* const x = a + s->size();
    return is_complex ? separated(x, count) : Numbers(x, x + n);
  };
  Contest c;
  c.tolerance = 1e-7;
  c.core = in_place(
      s->apart(true),
      [=](double* a) {
        aMatrix m = matrix_in(*s, a);
        aMatrix b = right_side_in(*s, a);
        double sign;
        if (is_complex) {
          matrix_pack::cludecomp(&m, pivots->data(), &sign, false);
          matrix_pack::clubacksub(&m, pivots->data(), &b);
        } else {
          matrix_pack::ludecomp(&m, pivots->data(), &sign, false);
          matrix_pack::lubacksub(&m, pivots->data(), &b);
        }
      },
      [=](const double* a) {
        return Numbers(a + s->size(), a + s->size() + (is_complex ? 2 * n : n));
      });
  c.handler = handler_call(
      [=](Host& host) {
        std::vector<Anyval*> v = host_matrix(host, *s);
        v.push_back(host.matrix(n, 1, s->b_re, s->b_im));
        return v;
      },
      [](EfiCallContext* context, const auto& v) {
        return matrix_pack::lsolve(context, v[0], v[1]);
      },
      [](Host&, Anyval* x) { return parts_of(static_cast<aMatrix*>(x)); });
  c.lapack = in_place(
      s->beside(true),
      [=](double* a) {
        double* const b = a + s->size();
        if (is_complex)
          lapack().zgesv_work(LAPACK_COL_MAJOR, n, 1, lapack_complex(a), n, exchanged->data(),
                              lapack_complex(b), n);
        else
          lapack().dgesv_work(LAPACK_COL_MAJOR, n, 1, a, n, exchanged->data(), b, n);
      },
      beside);
  c.eigen = in_place(
      s->beside(true),
      [=](double* a) { (is_complex ? eigen::complex_solve : eigen::solve)(n, a, a + s->size()); },
      beside);
  return c;
}

// --- cholesky ---

Numbers lower_triangle(int n, const double* a) {
  Numbers l;
  for (int j = 0; j < n; ++j, a += n) l.insert(l.end(), a + j, a + n);
  return l;
}

Contest cholesky_contest(int n) {
  Numbers a = random_numbers(square(n), 5);
  const auto order = static_cast<std::size_t>(n);
  for (std::size_t j = 0; j < order; ++j) {
    for (std::size_t i = 0; i < j; ++i) a[j * order + i] = a[i * order + j];
    a[j * order + j] = 3 * std::sqrt(n) + 3;
  }
  const auto triangle = [=](const double* l) { return lower_triangle(n, l); };
  Contest c;
  c.tolerance = 1e-12;
  c.core = in_place(
      a,
      [=](double* x) {
        aMatrix m = borrowed(n, n, x);
        matrix_pack::cholesky_core(&m);
      },
      triangle);
  c.handler = handler_call(
      [=](Host& host) { return std::vector<Anyval*>{host.matrix(n, n, a)}; },
      [](EfiCallContext* context, const auto& v) { return matrix_pack::cholesky(context, v[0]); },
      [=](Host&, Anyval* l) { return lower_triangle(n, static_cast<aMatrix*>(l)->re); });
  c.lapack = in_place(
      a, [=](double* x) { lapack().dpotrf_work(LAPACK_COL_MAJOR, 'L', n, x, n); }, triangle);
  c.eigen = in_place(
      a, [=](double* x) { eigen::cholesky(n, x); }, triangle);
  return c;
}

// --- qr ---

// |R| and Q R x for an x of ones: whatever the signs of R's rows.
Numbers qr_numbers(int n, const double* q, const double* r) {
  Numbers upper(square(n)), magnitudes;
  for (std::size_t j = 0, order = static_cast<std::size_t>(n); j < order; ++j)
    for (std::size_t i = 0; i <= j; ++i) {
      upper[j * order + i] = r[j * order + i];
      magnitudes.push_back(std::fabs(r[j * order + i]));
    }
  const Numbers ones(static_cast<std::size_t>(n), 1.0);
  const Numbers product = times(n, n, q, times(n, n, upper.data(), ones));
  magnitudes.insert(magnitudes.end(), product.begin(), product.end());
  return magnitudes;
}

Contest qr_contest(int n) {
  const Numbers a = random_numbers(square(n), 6);
  const auto q = std::make_shared<Numbers>(square(n));
  const auto tau = std::make_shared<Numbers>(static_cast<std::size_t>(n));
  const auto work = std::make_shared<Numbers>(static_cast<std::size_t>(128 * n));
  const auto parts = std::make_shared<std::pair<aMatrix*, aMatrix*>>();
  const auto arguments = [=](Host& host) { return std::vector<Anyval*>{host.matrix(n, n, a)}; };
  Contest c;
  c.tolerance = 1e-10;
  c.core = handler_call(
      arguments,
      [=](EfiCallContext* context, const auto& v) -> Anyval* {
        matrix_pack::qr_core(context, static_cast<aMatrix*>(v[0]), &parts->first, &parts->second);
        return parts->first;
      },
      [=](Host&, Anyval*) { return qr_numbers(n, parts->first->re, parts->second->re); });
  c.handler = handler_call(
      arguments,
      [](EfiCallContext* context, const auto& v) { return matrix_pack::qr(context, v[0]); },
      [=](Host& host, Anyval* joined) {
        const auto qr = host.store().parts(joined);
        return qr_numbers(n, qr[0]->re, qr[1]->re);
      });
  c.lapack = in_place(
      a,
      [=](double* x) {
        const int size = static_cast<int>(work->size());
        lapack().dgeqrf_work(LAPACK_COL_MAJOR, n, n, x, n, tau->data(), work->data(), size);
        *q = Numbers(x, x + square(n));
        lapack().dorgqr_work(LAPACK_COL_MAJOR, n, n, n, q->data(), n, tau->data(), work->data(),
                             size);
      },
      [=](const double* x) { return qr_numbers(n, q->data(), x); });
  c.eigen = in_place(
      a, [=](double* x) { eigen::qr(n, n, x, q->data()); },
      [=](const double* x) { return qr_numbers(n, q->data(), x); });
  return c;
}

// --- rref: no peer has it ---

Contest rref_contest(int n) {
  Contest c;
  c.tolerance = 0;
  c.handler = handler_call(
      [=](Host& host) {
        return std::vector<Anyval*>{host.matrix(n, n, random_numbers(square(n), 7))};
      },
      [](EfiCallContext* context, const auto& v) { return matrix_pack::rref(context, v[0]); },
      [](Host&, Anyval* r) { return parts_of(static_cast<aMatrix*>(r)); });
  return c;
}

const bool added = add("lu", [](int n) { return lu_contest(n, false); }) &&
                   add("lu complex", [](int n) { return lu_contest(n, true); }) &&
                   add("inv", [](int n) { return inv_contest(n, false); }) &&
                   add("inv complex", [](int n) { return inv_contest(n, true); }) &&
                   add("lsolve", [](int n) { return lsolve_contest(n, false); }) &&
                   add("lsolve complex", [](int n) { return lsolve_contest(n, true); }) &&
                   add("cholesky", cholesky_contest) && add("qr", qr_contest) &&
                   add("rref", rref_contest);

}  // namespace
}  // namespace bench
