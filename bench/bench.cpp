#include "bench/bench.hpp"

#include <cstring>
#include <memory>

namespace bench {

namespace {

double* new_part(const Numbers& numbers) {
  const std::size_t bytes = numbers.size() * sizeof(double);
  auto* const part = static_cast<double*>(::operator new(bytes));
  std::memcpy(part, numbers.data(), bytes);
  return part;
}

}  // namespace

aMatrix* Host::matrix(int rows, int cols, const Numbers& re, const Numbers& im) {
  return aMatrix::mk(&store_, rows, cols, new_part(re), im.empty() ? nullptr : new_part(im),
                     static_cast<unsigned>(re.size() * sizeof(double)));
}

Contender handler_call(std::function<std::vector<Anyval*>(Host&)> arguments,
                       std::function<Anyval*(EfiCallContext*, const std::vector<Anyval*>&)> call,
                       std::function<Numbers(Host&, Anyval*)> numbers) {
  struct State {
    Host host;
    std::vector<Anyval*> arguments;
    Anyval* first = nullptr;
  };
  const auto state = std::make_shared<State>();
  state->arguments = arguments(state->host);
  state->host.set_mark();
  Contender contender;
  contender.prepare = [=](int) { state->host.reclaim(); };
  contender.run = [=](int i) {
    Anyval* const value = call(state->host.context(), state->arguments);
    if (i == 0) state->first = value;
  };
  contender.result = [=] {
    return state->first->kind == kErrorKind ? Numbers() : numbers(state->host, state->first);
  };
  return contender;
}

Contender in_place(Numbers input, std::function<void(double*)> compute,
                   std::function<Numbers(const double*)> numbers) {
  struct State {
    Numbers input;
    std::vector<Numbers> copies;
  };
  const auto state = std::make_shared<State>(State{std::move(input), {}});
  Contender contender;
  contender.prepare = [=](int count) {
    state->copies.resize(static_cast<std::size_t>(count));
    for (Numbers& copy : state->copies) copy = state->input;
  };
  contender.run = [=](int i) { compute(state->copies[static_cast<std::size_t>(i)].data()); };
  contender.result = [=] { return numbers(state->copies[0].data()); };
  return contender;
}

Numbers parts_of(const aMatrix* m) {
  const std::size_t count = static_cast<std::size_t>(m->rows) * static_cast<std::size_t>(m->cols);
  Numbers numbers;
  for (const double* part : {m->re, m->im})
    if (part != nullptr) numbers.insert(numbers.end(), part, part + count);
  return numbers;
}

aMatrix borrowed(int rows, int cols, double* re, double* im) {
  aMatrix m{};
  m.kind = kMatrixKind;
  m.leading_dimension = rows;
  m.byte_size = static_cast<std::uint32_t>(rows) * static_cast<std::uint32_t>(cols) * 8u;
  m.rows = rows;
  m.cols = cols;
  m.re = re;
  m.im = im;
  return m;
}

Numbers random_numbers(std::size_t count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Numbers numbers(count);
  for (double& x : numbers) x = normal(engine);
  return numbers;
}

Numbers interleaved(const Numbers& re, const Numbers& im) {
  Numbers z;
  for (std::size_t k = 0; k < re.size(); ++k) {
    z.push_back(re[k]);
    z.push_back(im[k]);
  }
  return z;
}

Numbers separated(const double* z, std::size_t count) {
  Numbers numbers(2 * count);
  for (std::size_t k = 0; k < count; ++k) {
    numbers[k] = z[2 * k];
    numbers[count + k] = z[2 * k + 1];
  }
  return numbers;
}

Numbers times(int m, int n, const double* a, const Numbers& x) {
  Numbers y(static_cast<std::size_t>(m));
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i)
      y[static_cast<std::size_t>(i)] +=
          a[static_cast<std::ptrdiff_t>(j) * m + i] * x[static_cast<std::size_t>(j)];
  return y;
}

}  // namespace bench
