// What the extension and its worker say to each other, over two pipes of one machine.
//
// A message is two words of 32 bits, the bytes of its text and the count of its numbers, then the
// text, then the numbers as doubles, all in the machine's order of bytes. The text is JSON, UTF-8.
//
// The worker begins. For each pack it says what it is about to load, so that a pack that ends the
// worker can be told by its path, and what came of it; then that it is ready:
//
//   {"loading": "/usr/lib/libmatrix.so.0"}
//   {"pack": PATH, "functions": [{"name": "eigenvals", "arguments": 1, "context": ["TOL"],
//                                 "heading": "eigenvals(M)", "summary": "The eigenvalues..."}]}
//     or {"failed": PATH, "reason": "..."}
//   {"ready": true}
//
// From then on each request gets one answer. The numbers of a message are the elements of its
// matrices, each by columns: all real parts, then the imaginary ones if it is complex. "part" picks
// a part of a joined result; 0 is the whole.
//
//   {"pack": PATH, "function": "lu", "arguments": [{"rows": 2, "cols": 2, "complex": false}],
//    "context": {"ORIGIN": 1, "TOL": 1e-9}, "part": 2}
//   {"rows": 2, "cols": 2, "complex": false}, {"text": "..."}
//     or {"error": "must be square", "argument": 1}; 0 is the call as a whole
//
// The end of its input ends the worker; so does a message that breaks these rules.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace calc {

// The largest message: 16 MiB of text, 128 MiB of numbers.
inline constexpr std::uint32_t kMostTextBytes = 16u << 20;
inline constexpr std::uint32_t kMostNumbers = 16u << 20;

struct Message {
  std::string text;
  std::vector<double> numbers;
};

// A message without numbers. Text that is not UTF-8, as packs may have it, is mended.
Message message_of(const nlohmann::json& text);

// Nothing at the end of the input, and where a message is too large or cut off.
std::optional<Message> read_message(int descriptor);
// False when nobody reads any more.
bool write_message(int descriptor, const Message& message);

}  // namespace calc
