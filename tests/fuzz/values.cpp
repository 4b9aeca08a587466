#include "tests/fuzz/values.hpp"

#include <cstddef>

namespace fuzz {

namespace {

// Sizes above it are rare; the largest is beyond every block of the kernels.
constexpr int kUsualSize = 8;

int read_size(ByteReader& in) {
  const int choice = in.byte();
  if (choice < 8) return choice == 0 ? 3 : choice % 2;
  return choice < 224 ? 1 + choice % kUsualSize : kUsualSize + 2 * (choice - 223);
}

// Where the elements of a part array come from.
class Source {
 public:
  explicit Source(ByteReader& in) : in_(in), choice_(in.below(4)) {
    if (choice_ != 0) state_ = in.byte();
    if (choice_ == 3) constant_ = in.number();
  }

  double next() {
    switch (choice_) {
      case 0:
        return in_.number();
      case 1:
        return static_cast<double>(random() % 19) - 9;
      case 2:
        return static_cast<double>(random()) / 2147483648.0 - 1.0;
      default:
        return constant_;
    }
  }

 private:
  std::uint32_t random() {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>(state_ >> 32);
  }

  ByteReader& in_;
  int choice_;
  std::uint64_t state_ = 0;
  double constant_ = 0.0;
};

struct Part {
  int rows, cols;
  std::vector<double> elements;

  double& at(int i, int j) {
    return elements[static_cast<std::size_t>(j) * static_cast<std::size_t>(rows) +
                    static_cast<std::size_t>(i)];
  }
};

// Gives the part a structure that some function looks for. `sign` is -1 for the imaginary part of
// a Hermitian matrix.
void impose(int structure, int sign, Part& part) {
  const int n = part.rows;
  for (int j = 0; j < part.cols; ++j)
    for (int i = 0; i < n; ++i) {
      double& x = part.at(i, j);
      switch (structure) {
        case 1:  // Symmetric or Hermitian, with a heavy diagonal for 2.
        case 2:
          if (i > j && i < part.cols && j < n) x = sign * part.at(j, i);
          if (i == j) x = sign < 0 ? 0.0 : structure == 2 ? x + 20.0 * n : x;
          break;
        case 3:  // Upper triangular.
          if (i > j) x = 0.0;
          break;
        case 4:  // Tridiagonal.
          if (i > j + 1 || j > i + 1) x = 0.0;
          break;
        case 5:  // Of rank one.
          if (i > 0 && j > 0) x = part.at(i, 0) * part.at(0, j);
          break;
        case 6:  // Graded.
          x = x * (j % 2 == 0 ? 1e-3 * i : 1e3 * j);
          break;
        case 7:  // A companion of its first row.
          if (i > 0) x = i == j + 1 ? 1.0 : 0.0;
          break;
        default:
          break;
      }
    }
}

std::vector<double> read_part(ByteReader& in, int rows, int cols, int structure, int sign) {
  Part part{rows, cols, {}};
  Source source(in);
  part.elements.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols));
  for (double& x : part.elements) x = source.next();
  impose(structure, sign, part);
  // A few elements of their own.
  for (int k = in.below(4); k > 0 && rows > 0 && cols > 0; --k) {
    const int i = in.below(rows);
    part.at(i, in.below(cols)) = in.number();
  }
  return part.elements;
}

}  // namespace

Anyval* Values::any() {
  const int choice = in_.byte();
  Anyval* value;
  if (choice < 160)
    value = matrix();
  else if (choice < 224)
    value = scalar();
  else if (choice < 240 && !made_.empty())
    value = made_[static_cast<std::size_t>(choice) % made_.size()];
  else
    value = other_kind();
  made_.push_back(value);
  return value;
}

aComplex* Values::scalar() {
  const double re = in_.number();
  return host_.scalar(re, in_.one_in(4) ? in_.number() : 0.0);
}

Anyval* Values::other_kind() {
  static Anyval reference = {kReferenceKind};
  switch (in_.below(5)) {
    case 0:
      return host_.string("text");
    case 1:
      return function();
    case 2: {
      Anyval* other = function();
      if (other->kind == kFunctionKind) other->kind = kOtherFunctionKind;
      return other;
    }
    case 3:
      return mkError(host_.context(), "an error of the host's", in_.below(4));
    default:
      return &reference;
  }
}

// Answers with values made beforehand, one after another, and at last with an error: so it needs no
// memory, and a long matrix no time.
Anyval* Values::function() {
  constexpr int kMostCalls = 2000;
  if (depth_ > 1) return host_.string("deep");
  ++depth_;
  std::vector<Anyval*> answers(static_cast<std::size_t>(1 + in_.below(4)));
  for (Anyval*& answer : answers) answer = in_.one_in(8) ? any() : scalar();
  --depth_;
  Anyval* const last = mkError(host_.context(), "enough", 0);
  return host_.function([=, this](Anyval*, Anyval*) {
    return ++calls_ > kMostCalls ? last
                                 : answers[static_cast<std::size_t>(calls_) % answers.size()];
  });
}

aMatrix* Values::nested(int rows, int cols) {
  ++depth_;
  std::vector<Anyval*> elements(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols));
  for (Anyval*& element : elements) {
    element = in_.one_in(3) ? any() : scalar();
    if (element->kind == kReferenceKind) element = host_.string("lies above 4 GiB");
    if (element->kind == kMatrixKind) static_cast<aMatrix*>(element)->flags |= kIsNestedValue;
  }
  --depth_;
  return host_.nested(rows, cols, elements);
}

aMatrix* Values::matrix() {
  const int shape = in_.below(8);
  const int rows = shape == 7 ? 1 : read_size(in_);
  const int cols = shape < 4 ? rows : shape == 6 ? 1 : read_size(in_);
  const int parts = in_.byte();
  if (parts >= 248 && depth_ < 2 && rows <= kUsualSize && cols <= kUsualSize)
    return nested(rows, cols);
  if (parts >= 240) return host_.lean(rows, cols);
  const int structure = in_.below(12);
  const std::vector<double> re = read_part(in_, rows, cols, structure, 1);
  if (parts < 160) return host_.matrix(rows, cols, re);
  const std::vector<double> im = read_part(in_, rows, cols, structure, -1);
  std::vector<test::Complex> z;
  for (std::size_t k = 0; k < re.size(); ++k) z.emplace_back(re[k], im[k]);
  aMatrix* const complex = host_.complex_matrix(rows, cols, z);
  if (parts >= 232) {  // Purely imaginary.
    ::operator delete(complex->re);
    complex->re = nullptr;
  }
  return complex;
}

}  // namespace fuzz
