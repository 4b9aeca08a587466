// A call under the rules that every call keeps, whatever its arguments: it ends soon with a
// well-formed value, and leaves arguments, evaluator bracket, floating-point environment and memory
// as they were.
#pragma once

#include "tests/support/call_corpus.hpp"

namespace test {

class CheckedCall {
 public:
  CheckedCall(TestHost& host, const Call& call);

  struct Outcome {
    std::uint64_t bits;    // The hash of the value,
    std::string words;     // and it in words.
    bool short_of_memory;  // Whether an allocation failed.
    bool says_so;          // Whether that is what it says.
  };
  // Runs the call, with the faults of AllocationFaults; values that it made are gone afterwards.
  Outcome run(int nth = 0, Failing failing = Failing::once, std::size_t largest = SIZE_MAX);

  void expect(bool fulfilled, const std::string& otherwise) {
    if (!fulfilled && complaint.empty()) complaint = call_.name + " " + otherwise;
  }

  std::string complaint;           // The first thing that went wrong, in words.
  std::uint32_t host_control = 0;  // MXCSR during the call; 0: the usual one.

 private:
  bool is_argument(const Anyval* value) const;
  bool has_matrix_without_reals() const;
  bool may_be_nothing(bool short_of_memory) const;
  void check_value(const Anyval* value, bool short_of_memory);
  void check_error(const aError& error, bool short_of_memory);
  void check_matrix(const aMatrix& m);

  TestHost& host_;
  const Call& call_;
  const std::size_t mark_;
  bool with_nested_ = false;
  std::vector<std::uint64_t> before_;
};

}  // namespace test
