#include "tests/digest/corpus.hpp"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace digest {

namespace {

using Elements = std::vector<double>;

double power_of_two(int exponent) {
  return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// SplitMix64 (Steele, Lea, Flood 2014): integers only.
struct Random {
  std::uint64_t state;

  std::uint64_t next() {
    std::uint64_t z = state += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  // In [-1, 1), with 53 bits.
  double unit() {
    const auto k = static_cast<std::int64_t>(next() >> 10) - (std::int64_t{1} << 53);
    return static_cast<double>(k) * power_of_two(-53);
  }
  // In [-most, most].
  int small(int most) { return static_cast<int>(next() % (2u * unsigned(most) + 1u)) - most; }
};

// A matrix in the making; parts are column-major, and empty when absent.
struct Draft {
  Draft(int m, int n, std::uint64_t seed) : rows(m), cols(n), random{seed} {}

  std::size_t at(int i, int j) const {
    return static_cast<std::size_t>(j) * std::size_t(rows) + std::size_t(i);
  }
  std::size_t size() const { return std::size_t(rows) * std::size_t(cols); }

  // fill(part, f): part(i, j) = f(i, j), by columns.
  template <class F>
  void fill(Elements& part, F f) {
    part.resize(size());
    for (int j = 0; j < cols; ++j)
      for (int i = 0; i < rows; ++i) part[at(i, j)] = f(i, j);
  }
  void fill_units(Elements& part) {
    fill(part, [&](int, int) { return random.unit(); });
  }
  void fill_integers(Elements& part, int most) {
    fill(part, [&](int, int) { return double(random.small(most)); });
  }
  // The lower triangle becomes the mirror image of the upper one, times `sign`.
  void mirror(Elements& part, double sign) {
    for (int j = 0; j < cols; ++j) {
      if (sign < 0 && j < rows) part[at(j, j)] = 0.0;
      for (int i = 0; i < j && j < rows && i < rows; ++i) part[at(j, i)] = sign * part[at(i, j)];
    }
  }
  void scale(double factor) {
    for (Elements* part : {&re, &im})
      for (double& x : *part) x *= factor;
  }
  // re (and im) become the product with a matrix of small integers of `rank` rows: all sums are
  // exact. With `own` that matrix is the conjugate transpose of this one, as far as
  // it goes.
  void make_product(int rank, bool own);

  int rows, cols;
  Random random;
  Elements re, im;
};

void Draft::make_product(int rank, bool own) {
  Draft left(rows, rank, random.next());
  left.fill_integers(left.re, 3);
  left.fill_integers(left.im, im.empty() ? 0 : 3);
  Draft right(rank, cols, random.next());
  right.fill(right.re, [&](int i, int j) {
    return own && j < rows ? left.re[left.at(j, i)] : right.random.small(3);
  });
  right.fill(right.im, [&](int i, int j) {
    return own && j < rows ? -left.im[left.at(j, i)]
                           : double(right.random.small(im.empty() ? 0 : 3));
  });
  const auto entry = [&](const Elements& a, const Elements& b, const Elements& c, const Elements& d,
                         double sign, int i, int j) {
    double sum = 0.0;
    for (int k = 0; k < rank; ++k) {
      sum += a[left.at(i, k)] * b[right.at(k, j)];
      sum += sign * (c[left.at(i, k)] * d[right.at(k, j)]);
    }
    return sum;
  };
  fill(re, [&](int i, int j) { return entry(left.re, right.re, left.im, right.im, -1.0, i, j); });
  if (im.empty()) return;
  fill(im, [&](int i, int j) { return entry(left.re, right.im, left.im, right.re, 1.0, i, j); });
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Kind {
  const char* name;
  void (*make)(Draft& a);
  bool square;  // Only made square.
  bool large;   // Also made with 64 and 100 rows.
};

const Kind kKinds[] = {
    {"real", [](Draft& a) { a.fill_units(a.re); }, false, true},
    {"complex", [](Draft& a) { a.fill_units(a.re), a.fill_units(a.im); }, false, true},
    {"integer", [](Draft& a) { a.fill_integers(a.re, 4); }, false, false},
    {"imaginary", [](Draft& a) { a.fill_units(a.im); }, false, false},
    {"lean", [](Draft&) {}, false, false},
    {"zero_imag", [](Draft& a) { a.fill_units(a.re), a.fill(a.im, [](int, int) { return 0.0; }); },
     false, false},
    {"negative_zero", [](Draft& a) { a.fill(a.re, [](int, int) { return -0.0; }); }, false, false},
    {"deficient", [](Draft& a) { a.make_product((std::min(a.rows, a.cols) + 1) / 2, false); },
     false, false},
    {"complex_deficient",
     [](Draft& a) { a.im.resize(1), a.make_product((std::min(a.rows, a.cols) + 1) / 2, false); },
     false, false},
    {"graded",
     [](Draft& a) {
       a.fill(a.re, [&](int i, int j) { return a.random.unit() * power_of_two(-(i + j)); });
     },
     false, true},
    {"steep",
     [](Draft& a) {
       a.fill(a.re, [&](int i, int j) {
         return a.random.unit() * power_of_two(200 - 7 * (i + j) % 400);
       });
     },
     false, false},
    {"huge", [](Draft& a) { a.fill_units(a.re), a.scale(power_of_two(1022)); }, false, false},
    {"complex_huge",
     [](Draft& a) { a.fill_units(a.re), a.fill_units(a.im), a.scale(power_of_two(700)); }, false,
     false},
    {"tiny", [](Draft& a) { a.fill_units(a.re), a.scale(power_of_two(-1000)); }, false, false},
    {"denormal",
     [](Draft& a) { a.fill_units(a.re), a.scale(power_of_two(-1000)), a.scale(power_of_two(-60)); },
     false, false},
    {"with_nan", [](Draft& a) { a.fill_units(a.re), a.re[a.size() / 2] = kNan; }, false, false},
    {"with_infinity", [](Draft& a) { a.fill_units(a.re), a.re[a.size() / 3] = kInfinity; }, false,
     false},
    {"complex_infinity",
     [](Draft& a) { a.fill_units(a.re), a.fill_units(a.im), a.im[a.size() / 3] = -kInfinity; },
     false, false},
    {"zero_column",
     [](Draft& a) {
       a.fill(a.re, [&](int, int j) { return j == a.cols / 2 ? 0.0 : a.random.unit(); });
     },
     false, false},
    {"symmetric", [](Draft& a) { a.fill_units(a.re), a.mirror(a.re, 1); }, true, true},
    {"skew", [](Draft& a) { a.fill_units(a.re), a.mirror(a.re, -1); }, true, false},
    {"hermitian",
     [](Draft& a) {
       a.fill_units(a.re), a.mirror(a.re, 1), a.fill_units(a.im), a.mirror(a.im, -1);
     },
     true, true},
    {"definite", [](Draft& a) { a.make_product(a.rows, true); }, true, true},
    {"hermitian_definite", [](Draft& a) { a.im.resize(1), a.make_product(a.rows, true); }, true,
     false},
    {"triangular",
     [](Draft& a) {
       a.fill(a.re, [&](int i, int j) { return i > j ? 0.0 : i == j ? i + 1.0 : a.random.unit(); });
     },
     true, false},
    // One eigenvalue with a single eigenvector for every four rows.
    {"jordan",
     [](Draft& a) {
       a.fill(a.re, [](int i, int j) { return i == j ? 1.0 + i / 4 : j == i + 1 ? 1.0 : 0.0; });
     },
     true, true},
    {"complex_jordan",
     [](Draft& a) {
       a.fill(a.re, [](int i, int j) { return j == i + 1 ? 1.0 : 0.0; });
       a.fill(a.im, [](int i, int j) { return i == j ? 2.0 : 0.0; });
     },
     true, false},
    // Nilpotent but for one tiny entry: eigenvalues on a circle.
    {"cyclic",
     [](Draft& a) {
       a.fill(a.re, [&](int i, int j) {
         return j == i + 1 ? 1.0 : i == a.rows - 1 && j == 0 ? power_of_two(-30) : 0.0;
       });
     },
     true, false},
    // All eigenvalues but one are 1.
    {"clustered", [](Draft& a) { a.fill(a.re, [](int i, int j) { return (i == j ? 2.0 : 1.0); }); },
     true, false},
    {"permutation",
     [](Draft& a) {
       a.fill(a.re, [&](int i, int j) { return (3 * i + 1) % a.rows == j ? 1.0 : 0.0; });
     },
     true, false},
};

const int kSizes[] = {1, 2, 3, 5, 8, 9, 17, 33};
const int kLargeSizes[] = {64, 100};
const struct {
  int rows, cols;
} kRectangles[] = {{5, 1}, {1, 5}, {3, 2}, {2, 3}, {9, 5}, {8, 17}, {33, 17}, {100, 9}};

aMatrix* make(Host& host, const Kind& kind, int rows, int cols) {
  std::uint64_t seed = 0;
  for (const char* c = kind.name; *c != '\0'; ++c)
    seed = seed * 31 + static_cast<unsigned char>(*c);
  Draft a(rows, cols, (seed << 16) + static_cast<std::uint64_t>(rows * 256 + cols));
  kind.make(a);
  return host.matrix(rows, cols, a.re.empty() ? nullptr : &a.re, a.im.empty() ? nullptr : &a.im);
}

}  // namespace

Host::Host() : context{&store, &evaluator} {
  evaluator.apply_function = [this](Anyval* function, const sCons* arguments) {
    const auto number = [](const sCons* cell) {
      return static_cast<const aComplex*>(cell->car)->re;
    };
    const auto body = reinterpret_cast<Body>(static_cast<efi::aFunction*>(function)->body);
    return body(*this, number(arguments), number(arguments->cdr));
  };
}

aMatrix* Host::matrix(int rows, int cols, const std::vector<double>* re,
                      const std::vector<double>* im) {
  const auto copy = [](const std::vector<double>* part) -> double* {
    if (part == nullptr) return nullptr;
    auto* const array = static_cast<double*>(::operator new(part->size() * sizeof(double)));
    if (!part->empty()) std::memcpy(array, part->data(), part->size() * sizeof(double));
    return array;
  };
  return aMatrix::mk(&store, rows, cols, copy(re), copy(im),
                     static_cast<unsigned>(rows * cols) * 8u);
}

aMatrix* make_matrix(Host& host, const std::string& name, int rows, int cols) {
  for (const Kind& kind : kKinds)
    if (name == kind.name) return make(host, kind, rows, cols);
  return nullptr;
}

std::vector<Sample> make_samples(Host& host) {
  std::vector<Sample> samples;
  const auto add = [&](const Kind& kind, int rows, int cols) {
    const std::string size = std::to_string(rows) + "x" + std::to_string(cols);
    samples.push_back({std::string(kind.name) + " " + size, make(host, kind, rows, cols)});
  };
  for (const Kind& kind : kKinds) {
    for (const int n : kSizes) add(kind, n, n);
    if (kind.large)
      for (const int n : kLargeSizes) add(kind, n, n);
    if (!kind.square)
      for (const auto& [rows, cols] : kRectangles) add(kind, rows, cols);
  }
  return samples;
}

}  // namespace digest
