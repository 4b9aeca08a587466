// Lets libFuzzer drive the target FUZZ_TARGET.
#include <cstdlib>
#include <iostream>

#include "tests/fuzz/targets.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string complaint = fuzz::FUZZ_TARGET({data, size});
  if (complaint.empty()) return 0;
  std::cerr << "Complaint: " << complaint << std::endl;
  std::abort();
}
