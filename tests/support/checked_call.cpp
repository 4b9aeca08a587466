#include "tests/support/checked_call.hpp"

#include <bit>
#include <ctime>
#include <set>

#include "tests/support/fp_environment.hpp"

namespace test {

namespace {

// Of processor time; sanitizers slow a call down.
#if defined(MATRIX_SANITIZED)
constexpr double kMostSeconds = 20.0;
#else
constexpr double kMostSeconds = 1.0;
#endif

double thread_seconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void set_control([[maybe_unused]] std::uint32_t control) {
#if MATRIX_HAS_MXCSR
  if (control != 0) _mm_setcsr(control);
#endif
}

// The last is what a function of the worksheet's says, which `matrix` passes on.
bool speaks_of_memory(const Anyval* value) {
  static const std::set<std::string> kWords = {
      "out of memory", "Unknown error", "Null matrix or vector pointer.", "memory exhausted"};
  return value == nullptr || value == sError_OutOfMemory ||
         (value->kind == kErrorKind &&
          kWords.contains(static_cast<const aError*>(value)->message->text));
}

}  // namespace

CheckedCall::CheckedCall(TestHost& host, const Call& call)
    : host_(host), call_(call), mark_(host.live_values()) {
  for (const Anyval* a : call.arguments) {
    before_.push_back(calls::bits_of(host.store(), a));
    with_nested_ = with_nested_ ||
                   (a->kind == kMatrixKind && static_cast<const aMatrix*>(a)->flags & kHoldsNested);
  }
}

CheckedCall::Outcome CheckedCall::run(int nth, Failing failing, std::size_t largest) {
  const double start = thread_seconds();
  const auto usual = fp_environment();
  set_control(host_control);
  const auto environment = fp_environment();
  const Anyval* value;
  bool short_of_memory;
  long left = -live_blocks();
  {
    AllocationFaults faults(nth, failing, largest);
    value = call_.run();
    short_of_memory = faults.happened();
  }
  left += live_blocks();
  expect(fp_environment() == environment, "changed the floating-point environment");
  set_control(usual.front());
  const double seconds = thread_seconds() - start;
  expect(seconds < kMostSeconds, "took " + std::to_string(seconds) + " seconds");
  expect(host_.evaluator().depth() == 0, "left the evaluator bracket open");
  for (const std::string& said : host_.evaluator().complaints) expect(false, said);
  for (std::size_t k = 0; k < before_.size(); ++k)
    expect(calls::bits_of(host_.store(), call_.arguments[k]) == before_[k],
           "changed argument " + std::to_string(k + 1));
  check_value(value, short_of_memory);
  // Where two NaNs meet, the result is one of them, and which one is the compiler's choice: a
  // function that computes with nested elements hands on some of them, not everywhere the same.
  // Which one of several faults is the first is the processor's.
  const bool fault = call_.function->is_guarded && calls::fault_word(value) != nullptr;
  const Outcome outcome = {fault ? 0 : calls::bits_of(host_.store(), value, !with_nested_),
                           describe(value), short_of_memory, speaks_of_memory(value)};
  left -= live_blocks();
  host_.store().collect(call_.arguments, mark_);
  left += live_blocks();
  expect(left == 0, "left " + std::to_string(left) + " blocks behind");
  return outcome;
}

bool CheckedCall::is_argument(const Anyval* value) const {
  return std::ranges::find(call_.arguments, value) != call_.arguments.end();
}

bool CheckedCall::has_matrix_without_reals() const {
  return std::ranges::any_of(call_.arguments, [](const Anyval* a) {
    return a->kind == kMatrixKind && static_cast<const aMatrix*>(a)->re == nullptr;
  });
}

// `reverse` has nothing to return where there are no elements to move, an export that no call is
// made of, and submatrix without memory for its record.
bool CheckedCall::may_be_nothing(bool short_of_memory) const {
  const calls::Function& function = *call_.function;
  return function.takes != calls::kAnyKind || (function.name == "submatrix" && short_of_memory) ||
         (function.name == "reverse" && has_matrix_without_reals());
}

void CheckedCall::check_value(const Anyval* value, bool short_of_memory) {
  if (value == nullptr) return expect(may_be_nothing(short_of_memory), "returned null");
  // An identity matrix that outgrows the sizes is refused without asking for memory.
  if (value == sError_OutOfMemory)
    return expect(short_of_memory || call_.function->name.starts_with("identity"),
                  "was out of memory for no reason");
  if (is_argument(value)) return;
  expect(host_.store().owns(value), "returned a value of no store");
  if (value->kind == kErrorKind)
    check_error(*static_cast<const aError*>(value), short_of_memory);
  else if (value->kind == kMatrixKind)
    check_matrix(*static_cast<const aMatrix*>(value));
  else
    expect(value->kind == kScalarKind, "returned kind " + std::to_string(value->kind));
}

void CheckedCall::check_error(const aError& error, bool short_of_memory) {
  const std::string text = error.message->text;
  expect(!text.empty(), "gave an empty message");
  expect(error.arg >= 0 && error.arg <= static_cast<int>(call_.arguments.size()),
         "blamed argument " + std::to_string(error.arg));
  expect(error.mark >= 0 && error.mark <= 2, "gave mark " + std::to_string(error.mark));
  expect(error.value == nullptr || is_argument(error.value), "carries a value of its own");
  expect(short_of_memory || text != "out of memory", "said out of memory for no reason");
  // Some cores say this of a matrix without a real array.
  expect(short_of_memory || text != "Unknown error" || has_matrix_without_reals(),
         "said Unknown error");
  // The words for faults that no build of ours raises.
  expect(text.find("EXCEPTION") == std::string::npos, "said " + text);
}

void CheckedCall::check_matrix(const aMatrix& m) {
  expect(m.rows >= 0 && m.cols >= 0, "returned a negative size");
  expect(m.leading_dimension == m.rows, "returned a leading dimension that is not the rows");
  expect(m.byte_size == static_cast<std::uint64_t>(m.rows) * static_cast<unsigned>(m.cols) * 8,
         "returned a wrong byte size");
  for (const double* part : {m.re, m.im})
    for (std::size_t k = 0; part != nullptr && k < m.byte_size / 8; ++k) {
      expect(!efi::is_nested_element(part[k]) || host_.store().owns(efi::nested_value(part[k])),
             "returned a nested element that is no value");
      expect(std::bit_cast<std::uint64_t>(part[k]) != efi::kUnwrittenBits,
             "returned an element that it has not written");
    }
}

}  // namespace test
