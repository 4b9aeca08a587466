// A call of a row or export on arguments of any kind and shape, in a host's floating-point
// environment of any kind, with each kernel set, and with an allocation that fails.
#include <algorithm>
#include <bit>
#include <cstring>
#include <ctime>
#include <optional>

#include "pack/numeric/kernel_sets.hpp"
#include "tests/fuzz/targets.hpp"
#include "tests/fuzz/values.hpp"
#include "tests/support/call_corpus.hpp"
#include "tests/support/fp_environment.hpp"

namespace fuzz {

namespace {

using matrix_pack::KernelSet;
using test::Call;
using test::TestHost;

// Of processor time; sanitizers slow a call down.
#if defined(MATRIX_SANITIZED)
constexpr double kMostSeconds = 20.0;
#else
constexpr double kMostSeconds = 1.0;
#endif

// No result of these arguments is larger: what is, is refused as if memory were exhausted.
constexpr std::size_t kLargestBlock = 1 << 22;

struct Choices {
  int row;
  std::uint32_t host_control;  // For MXCSR.
  int failing_allocation;      // Counted from 1; 0: none.
  test::Failing failing;
};

Choices read_choices(ByteReader& in) {
  Choices choices = {};
  choices.row = in.byte();
  [[maybe_unused]] const int environment = in.byte();
#if MATRIX_HAS_MXCSR
  choices.host_control = matrix_pack::kAllMasked;
  if (environment >= 192) {  // Rounding, denormals as zeros, flags already raised.
    choices.host_control |= static_cast<std::uint32_t>(in.byte() & 0x3) << 13;
    choices.host_control |= static_cast<std::uint32_t>(environment & 0x3F);
    if (environment & 0x10) choices.host_control |= 0x8000;
  }
#endif
  const int failing = in.byte();
  if (failing >= 192) choices.failing_allocation = 1 + failing % 32;
  choices.failing = failing >= 224 ? test::Failing::from_then_on : test::Failing::once;
  return choices;
}

Call read_call(int choice, const std::vector<calls::Function>& functions, Values& values) {
  const calls::Function& function = functions[static_cast<std::size_t>(choice) % functions.size()];
  calls::Arguments a(function.argument_count);
  a[0] = values.of_kind(function.takes);
  for (std::size_t k = 1; k < a.size(); ++k) {
    // The host passes numbers for the worksheet variables.
    const bool variable = k + 1 == a.size() && function.reads_variable;
    a[k] = variable ? values.scalar() : values.any();
  }
  return {function.name, &function, a};
}

double thread_seconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

struct Outcome {
  Anyval* value;
  bool short_of_memory;
};

// The rules that a single call can break.
class Checks {
 public:
  Checks(TestHost& host, const Call& call, const Choices& choices)
      : host_(host), call_(call), choices_(choices) {
    for (Anyval* a : call.arguments) before_.push_back(calls::bits_of(host.store(), a));
  }

  // Runs the call; the first thing that went wrong, in words, stays in `complaint`.
  Outcome run(int failing_allocation) {
    Outcome outcome;
    const double start = thread_seconds();
    const auto usual = test::fp_environment();
    set_control(choices_.host_control);
    const auto environment = test::fp_environment();
    {
      test::AllocationFaults faults(failing_allocation, choices_.failing, kLargestBlock);
      outcome.value = call_.run();
      outcome.short_of_memory = faults.happened();
    }
    expect(test::fp_environment() == environment, "changed the floating-point environment");
    set_control(usual.front());
    const double seconds = thread_seconds() - start;
    expect(seconds < kMostSeconds, "took " + std::to_string(seconds) + " seconds");
    expect(host_.evaluator().depth() == 0, "left the evaluator bracket open");
    for (const std::string& said : host_.evaluator().complaints) expect(false, said);
    for (std::size_t k = 0; k < before_.size(); ++k)
      expect(calls::bits_of(host_.store(), call_.arguments[k]) == before_[k],
             "changed argument " + std::to_string(k + 1));
    check_result(outcome);
    return outcome;
  }

  void expect(bool fulfilled, const std::string& otherwise) {
    if (!fulfilled && complaint.empty()) complaint = call_.name + " " + otherwise;
  }

  std::string complaint;

 private:
  static void set_control([[maybe_unused]] std::uint32_t control) {
#if MATRIX_HAS_MXCSR
    _mm_setcsr(control);
#endif
  }

  bool is_argument(const Anyval* value) const {
    return std::find(call_.arguments.begin(), call_.arguments.end(), value) !=
           call_.arguments.end();
  }

  bool has_matrix_without(double* aMatrix::*part) const {
    return std::any_of(call_.arguments.begin(), call_.arguments.end(), [&](const Anyval* a) {
      return a->kind == kMatrixKind && static_cast<const aMatrix*>(a)->*part == nullptr;
    });
  }

  // An identity matrix that outgrows the sizes is refused without asking for memory.
  bool is_identity_beyond_sizes() const {
    constexpr double kLargest = 23170;  // Its elements take nearly 2^32 bytes.
    if (call_.name != "identity" && call_.name != "identity scalar") return false;
    const Anyval* const n = call_.arguments[0];
    return n->kind == kScalarKind && static_cast<const aComplex*>(n)->re > kLargest;
  }

  void check_result(const Outcome& outcome) {
    const Anyval* const value = outcome.value;
    if (value == nullptr) {
      // `reverse` has nothing to return where there are no elements to move, an export that no
      // call is made of.
      const bool nothing = (call_.name == "reverse" && has_matrix_without(&aMatrix::re)) ||
                           call_.function->takes == kMatrixKind;
      const bool no_record = call_.name == "submatrix" && outcome.short_of_memory;
      expect(nothing || no_record, "returned null");
      return;
    }
    if (value == sError_OutOfMemory) {
      expect(outcome.short_of_memory || is_identity_beyond_sizes(),
             "was out of memory for no reason");
      return;
    }
    expect(host_.store().owns(value) || is_argument(value), "returned a value of no store");
    if (value->kind == kErrorKind)
      check_error(*static_cast<const aError*>(value), outcome.short_of_memory);
    else if (value->kind == kMatrixKind)
      check_matrix(*static_cast<const aMatrix*>(value));
    else
      expect(value->kind == kScalarKind, "returned kind " + std::to_string(value->kind));
  }

  void check_error(const aError& error, bool short_of_memory) {
    const auto arguments = static_cast<int>(call_.arguments.size());
    const std::string text = error.message->text;
    expect(!text.empty(), "gave an empty message");
    expect(error.arg >= 0 && error.arg <= arguments,
           "blamed argument " + std::to_string(error.arg));
    expect(error.mark >= 0 && error.mark <= 2, "gave mark " + std::to_string(error.mark));
    expect(error.value == nullptr || is_argument(error.value), "carries a value of its own");
    expect(short_of_memory || text != "out of memory", "said out of memory for no reason");
    // Some cores say this of a matrix without a real array.
    expect(short_of_memory || text != "Unknown error" || has_matrix_without(&aMatrix::re),
           "said Unknown error");
    // The words for faults that no build of ours raises.
    expect(text.find("EXCEPTION") == std::string::npos, "said " + text);
  }

  void check_matrix(const aMatrix& m) {
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

  TestHost& host_;
  const Call& call_;
  const Choices& choices_;
  std::vector<std::uint64_t> before_;
};

bool holds_nested(const Anyval* value) {
  return value->kind == kMatrixKind && static_cast<const aMatrix*>(value)->flags & kHoldsNested;
}

}  // namespace

std::string check_handlers(Bytes input) {
  ByteReader in(input);
  TestHost host;
  host.scalar(0);  // The host takes memory for its records now, not during the call.
  Values values(host, in);
  const Choices choices = read_choices(in);
  const std::vector<calls::Function> functions = calls::functions(host.context());
  const Call call = read_call(choices.row, functions, values);
  Checks checks(host, call, choices);

  const bool with_nested = std::any_of(call.arguments.begin(), call.arguments.end(), holds_nested);
  const std::size_t mark = host.live_values();
  const auto run = [&](KernelSet set, int failing_allocation) -> std::optional<std::uint64_t> {
    if (!matrix_pack::force_kernel_set(set)) return std::nullopt;
    values.rewind();
    const long blocks = test::live_blocks();
    const Outcome outcome = checks.run(failing_allocation);
    // Where two NaNs meet, the result is one of them, and which one is the compiler's choice: a
    // function that computes with nested elements hands on some of them, not everywhere the same.
    const std::uint64_t bits = calls::bits_of(host.store(), outcome.value, !with_nested);
    host.store().collect(call.arguments, mark);
    const long left = test::live_blocks() - blocks;
    checks.expect(left == 0, "left " + std::to_string(left) + " blocks behind");
    return bits;
  };

  const auto described = [&](KernelSet set) {
    matrix_pack::force_kernel_set(set);
    values.rewind();
    return test::describe(call.run()) + " in kernel set " + matrix_pack::kernel_set_name(set);
  };

  const KernelSet usual = matrix_pack::kernel_set();
  const auto first = run(usual, 0);
  if (choices.failing_allocation != 0) run(usual, choices.failing_allocation);
  for (const KernelSet set : {KernelSet::baseline, KernelSet::v3}) {
    const auto again = run(set, 0);
    if (again && again != first)
      checks.expect(false, "gave " + described(usual) + " but " + described(set));
  }
  matrix_pack::force_kernel_set(usual);
  host.evaluator().unwind(0);
  host.evaluator().complaints.clear();
  return checks.complaint;
}

}  // namespace fuzz
