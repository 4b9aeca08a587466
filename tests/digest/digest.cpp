// Prints a digest of everything that the pack computes on a fixed corpus: one line for each row of
// the table and each other export, with the number of calls and a hash over all bits of all
// outcomes. Two builds of the pack give the same answers if they print the same digest.
//
//   digest                 with the kernel set that the pack chooses
//   digest --set NAME      with this one: baseline, v3 or v4
//   digest --all-sets      with every one that processor and build have; fails if they differ
//   digest --calls NAME    each call of one function: its hash, its outcome, its arguments
//
// Lines that start with # are about the run and may differ. A call that ends with an arithmetic
// fault counts as just that in the hash. Which of its faults is the first one, and so the word of
// the message, depends on what the processor does at once; the words are hashed apart, in lines of
// their own that start with "fault-words", and agree among builds of one way of finding faults.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "host/efiutils/fault_translation.hpp"
#include "pack/frame/fault_mode.hpp"
#include "pack/frame/fp_control.hpp"
#include "pack/numeric/kernel_sets.hpp"
#include "tests/calls/calls.hpp"
#include "tests/calls/outcome.hpp"

namespace {

using namespace calls;
using matrix_pack::KernelSet;

constexpr KernelSet kSets[] = {KernelSet::baseline, KernelSet::v3, KernelSet::v4};

std::string hex(const Hash& hash) {
  char text[17];
  std::snprintf(text, sizeof text, "%016" PRIx64, hash.value);
  return text;
}

// The line of one function, or two if some call ended with an arithmetic fault.
std::vector<std::string> digest_of(const Function& function, Values& values,
                                   const std::vector<Sample>& samples, Hash& total,
                                   bool show_calls) {
  efi::Store& store = values.host.store;
  const std::size_t kept = store.size();
  Hash results, words;
  int calls = 0, faults = 0;
  const Visit add = [&](const std::string& what, const Arguments& arguments) {
    const Anyval* const value = function.call(arguments);
    Hash outcome;
    const char* const word = function.is_guarded ? fault_word(value) : nullptr;
    if (word != nullptr) {
      ++faults;
      outcome.text("arithmetic fault");
      words.text(word);
    } else {
      add_value(outcome, store, value, moves_elements(function.name));
    }
    ++calls;
    results.word(outcome.value);
    if (!show_calls) return;
    const std::string text = describe(value);
    std::printf("%s  %s: %s\n", hex(outcome).c_str(), what.c_str(),
                text.substr(0, text.find('\n')).c_str());
  };
  for_odd_calls(function, values, add);
  store.collect({}, kept);
  for (const Sample& sample : samples) {
    for_calls_with(function, values, sample, add);
    store.collect({}, kept);
  }
  total.word(results.value);
  std::vector<std::string> lines = {function.name + " " + std::to_string(calls) + " calls, " +
                                    std::to_string(faults) + " faults " + hex(results)};
  if (faults > 0) lines.push_back("fault-words " + function.name + " " + hex(words));
  return lines;
}

// The digest with the kernel set in use; with `only`, each call of that one function instead.
std::vector<std::string> digest_lines(const std::string& only) {
  Host host;
  Values values(host);
  const std::vector<Sample> samples = make_samples(host.store);
  Hash total;
  std::vector<std::string> lines;
  for (const Function& function : functions(&host.context)) {
    if (!only.empty() && function.name != only) continue;
    for (std::string& line : digest_of(function, values, samples, total, !only.empty()))
      lines.push_back(std::move(line));
  }
  lines.push_back("total " + hex(total));
  return lines;
}

void print_run() {
  const char* const faults = matrix_pack::faults_trap() ? "trap" : "read from the status flags";
  std::printf("# kernel set %s, %zu-bit, faults %s\n", kernel_set_name(matrix_pack::kernel_set()),
              8 * sizeof(void*), faults);
}

int compare_sets() {
  std::vector<std::string> first;
  int differences = 0;
  for (const KernelSet set : kSets) {
    if (!matrix_pack::force_kernel_set(set)) continue;
    print_run();
    const std::vector<std::string> lines = digest_lines("");
    if (first.empty()) {
      first = lines;
      for (const std::string& line : lines) std::puts(line.c_str());
    }
    for (std::size_t k = 0; k < lines.size(); ++k) {
      if (k < first.size() && lines[k] == first[k]) continue;
      std::printf("DIFFERS %s\n", lines[k].c_str());
      ++differences;
    }
  }
  return differences == 0 ? 0 : 1;
}

bool force_named_set(const char* name) {
  for (const KernelSet set : kSets)
    if (std::strcmp(name, kernel_set_name(set)) == 0) return matrix_pack::force_kernel_set(set);
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  efi::install_fault_translation();
  std::string only;
  for (int k = 1; k < argc; ++k) {
    const std::string option = argv[k];
    if (option == "--all-sets") return compare_sets();
    const bool has_value = k + 1 < argc;
    if (option == "--calls" && has_value) {
      only = argv[++k];
    } else if (option == "--set" && has_value && force_named_set(argv[k + 1])) {
      ++k;
    } else {
      std::fprintf(stderr, "digest: not understood or not available here: %s\n", option.c_str());
      return 2;
    }
  }
  print_run();
  for (const std::string& line : digest_lines(only)) std::puts(line.c_str());
  return 0;
}
