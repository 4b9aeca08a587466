// A call of a row or export on arguments of any kind and shape, in a host's floating-point
// environment of any kind, with each kernel set, and with an allocation that fails.
#include "pack/frame/fp_control.hpp"
#include "pack/numeric/kernel_sets.hpp"
#include "tests/fuzz/targets.hpp"
#include "tests/fuzz/values.hpp"
#include "tests/support/checked_call.hpp"

namespace fuzz {

namespace {

using matrix_pack::KernelSet;
using test::Call;
using test::TestHost;

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

}  // namespace

std::string check_handlers(Bytes input) {
  ByteReader in(input);
  TestHost host;
  host.scalar(0);  // The host takes memory for its records now, not during the call.
  Values values(host, in);
  const Choices choices = read_choices(in);
  const std::vector<calls::Function> functions = calls::functions(host.context());
  const Call call = read_call(choices.row, functions, values);
  test::CheckedCall checked(host, call);
  checked.host_control = choices.host_control;
  const auto run = [&](int failing_allocation = 0) {
    values.rewind();
    return checked.run(failing_allocation, choices.failing, kLargestBlock);
  };

  const KernelSet usual = matrix_pack::kernel_set();
  const auto first = run();
  if (choices.failing_allocation != 0) run(choices.failing_allocation);
  for (const KernelSet set : {KernelSet::baseline, KernelSet::v3}) {
    if (!matrix_pack::force_kernel_set(set)) continue;
    const auto again = run();
    checked.expect(again.bits == first.bits, "gave " + first.words + " but " + again.words +
                                                 " in kernel set " + kernel_set_name(set));
  }
  matrix_pack::force_kernel_set(usual);
  host.evaluator().unwind(0);
  host.evaluator().complaints.clear();
  return checked.complaint;
}

}  // namespace fuzz
