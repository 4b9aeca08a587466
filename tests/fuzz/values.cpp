#include "tests/fuzz/values.hpp"

namespace fuzz {

namespace {

using namespace arguments;

// Sizes above it are rare; the largest is beyond every block of the kernels.
constexpr int kUsualSize = 8;

int read_size(ByteReader& in) {
  const int choice = in.byte();
  if (choice < 8) return choice == 0 ? 3 : choice % 2;
  return choice < 224 ? 1 + choice % kUsualSize : kUsualSize + 2 * (choice - 223);
}

Form read_form(ByteReader& in) {
  const int choice = in.byte();
  if (choice >= 248) return Form::nested;
  if (choice >= 240) return Form::lean;
  return choice < 160 ? Form::real : choice < 232 ? Form::complex : Form::imaginary;
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

Anyval* Values::of_kind(std::int32_t kind) {
  return kind == kMatrixKind ? matrix() : kind == kScalarKind ? scalar() : any();
}

Anyval* Values::scalar() {
  const double re = in_.number();
  return host_.scalar(re, in_.one_in(4) ? in_.number() : 0.0);
}

Anyval* Values::other_kind() {
  const auto form = static_cast<Form>(static_cast<int>(Form::string) + in_.below(6));
  if (form == Form::function) return function();
  if (form != Form::other_function) return make(host_.store(), {form});
  Anyval* const other = function();
  if (other->kind == kFunctionKind) other->kind = kOtherFunctionKind;
  return other;
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
  return host_.function([=, this](double, double) {
    return ++calls_ > kMostCalls ? last
                                 : answers[static_cast<std::size_t>(calls_) % answers.size()];
  });
}

Anyval* Values::nested(int rows, int cols) {
  ++depth_;
  std::vector<Anyval*> elements(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols));
  for (Anyval*& element : elements) {
    element = in_.one_in(3) ? any() : scalar();
    if (element == ORIGIN_sUnIdent) element = host_.string("lies above 4 GiB");
    if (element->kind == kMatrixKind) static_cast<aMatrix*>(element)->flags |= kIsNestedValue;
  }
  --depth_;
  return host_.nested(rows, cols, elements);
}

// Its numbers are read one by one, or come from a source; a few elements are read in any case.
Anyval* Values::matrix() {
  const int shape = in_.below(8);
  const int rows = shape == 7 ? 1 : read_size(in_);
  const int cols = shape < 4 ? rows : shape == 6 ? 1 : read_size(in_);
  Form form = read_form(in_);
  if (form == Form::nested) {
    if (depth_ < 2 && rows <= kUsualSize && cols <= kUsualSize) return nested(rows, cols);
    form = Form::lean;
  }
  if (form == Form::lean) return host_.lean(rows, cols);
  const int structure = in_.below(2 * kStructures);  // In half of all cases, none.
  const Fill fill = {static_cast<Source>(in_.below(kSources)),
                     static_cast<Structure>(structure < kStructures ? structure : 0)};
  const std::function<double()> read = [&] { return in_.number(); };
  const bool given = in_.below(4) == 0;
  auto* const made = static_cast<aMatrix*>(
      make(host_.store(), array(form, rows, cols, fill, in_.byte()), given ? &read : nullptr));
  for (double* part : {made->re, made->im})
    for (int k = in_.below(4); k > 0 && part != nullptr && rows * cols > 0; --k) {
      const int row = in_.below(rows);
      part[in_.below(cols) * rows + row] = in_.number();
    }
  return made;
}

}  // namespace fuzz
