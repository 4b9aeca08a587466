// The readers of tables and of Matrix Market files on any text: a complaint that names the file and
// the line, or a matrix that is read again, bit for bit, from the text in which it is written down.
#include <sys/mman.h>
#include <unistd.h>

#include "fmt/format.h"
#include "host/worksheet/data/read_data.hpp"
#include "host/worksheet/engine/machine.hpp"
#include "tests/calls/outcome.hpp"
#include "tests/fuzz/targets.hpp"
#include "tests/support/allocation_faults.hpp"

namespace fuzz {

namespace {

using worksheet::DataError;
using worksheet::Machine;

// Larger arrays are refused as if memory were exhausted.
constexpr std::size_t kLargestFileBlock = 1 << 20;

// A file that exists in memory only.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("fuzz", 0)) {
    while (!content.empty()) {
      const ssize_t written = write(descriptor_, content.data(), content.size());
      if (written <= 0) return;
      content.remove_prefix(static_cast<std::size_t>(written));
    }
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return fmt::format("/proc/self/fd/{}", descriptor_); }

 private:
  int descriptor_;
};

// Matrices are read by machines; one without packs is enough.
struct Reading {
  Machine machine;
  aMatrix* matrix = nullptr;
  std::string error;

  explicit Reading(std::string_view content) {
    const MemoryFile file(content);
    const test::AllocationFaults faults(0, test::Failing::once, kLargestFileBlock);
    try {
      matrix = worksheet::read_data(machine, file.path());
    } catch (const DataError& failure) {
      error = failure.what();
      if (!error.starts_with(file.path())) error = "an error without the file's name: " + error;
    }
  }
};

std::string as_table(const aMatrix& m) {
  std::string text;
  for (int i = 0; i < m.rows; ++i)
    for (int j = 0; j < m.cols; ++j) {
      const int k = j * m.rows + i;
      text += fmt::format("{}", m.re[k]);
      if (m.im != nullptr) text += fmt::format("{:+}i", m.im[k]);
      text += j + 1 < m.cols ? ',' : '\n';
    }
  return text;
}

std::string as_matrix_market(const aMatrix& m) {
  std::string text =
      fmt::format("%%MatrixMarket matrix array complex general\n{} {}\n", m.rows, m.cols);
  for (int k = 0; k < m.rows * m.cols; ++k)
    text += fmt::format("{} {}\n", m.re[k], m.im == nullptr ? 0.0 : m.im[k]);
  return text;
}

std::string check(std::string_view content, std::string (*written)(const aMatrix&)) {
  const Reading first(content);
  const aMatrix* const m = first.matrix;
  if (m == nullptr) return first.error.starts_with("an error") ? first.error : "";
  if (m->rows < 1 || m->cols < 1 || m->re == nullptr ||
      m->byte_size != static_cast<std::uint64_t>(m->rows) * static_cast<unsigned>(m->cols) * 8)
    return "read a matrix that is none";
  // What is written has more bytes than what was read.
  if (m->byte_size > kLargestFileBlock / 64) return "";
  const std::string text = written(*m);
  const Reading second(text);
  if (second.matrix == nullptr) return "wrote what cannot be read: " + second.error + "\n" + text;
  const bool same =
      calls::bits_of(first.machine.store, m) == calls::bits_of(second.machine.store, second.matrix);
  return same ? "" : "read otherwise what it wrote:\n" + text;
}

}  // namespace

std::string check_table(Bytes input) {
  return check({reinterpret_cast<const char*>(input.data()), input.size()}, as_table);
}

std::string check_matrix_market(Bytes input) {
  return check({reinterpret_cast<const char*>(input.data()), input.size()}, as_matrix_market);
}

}  // namespace fuzz
