#include "tests/fuzz/drive.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <random>
#include <string_view>

#include "host/efiutils/system/files.hpp"
#include "tests/support/platform.hpp"
#include "tests/support/sanitized.hpp"

namespace fuzz {

namespace {

std::vector<Input> shipped(const std::string& name) {
  return read_corpus(MATRIX_SOURCE_DIR "/tests/fuzz/corpus/" + name + ".txt");
}

// What a crash says: the input that it came from.
std::string at_work;

void report_crash(int signal) {
  constexpr int kStandardError = 2;
  for (const std::string_view words : {"\nThis input crashes:\n", at_work.c_str(), "\n"})
    efi::write_all(kStandardError, words);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

bool well(Target target, Bytes input) {
  at_work = escaped(input);
  const std::string complaint = target(input);
  EXPECT_EQ(complaint, "") << "for the input\n" << at_work;
  return complaint.empty();
}

// A few bytes changed, put in, taken out or taken from another input.
Input changed(const std::vector<Input>& corpus, std::mt19937_64& random) {
  const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  Input input = corpus.empty() ? Input{} : corpus[below(corpus.size())];
  for (std::size_t k = 1 + below(6); k > 0; --k) {
    const std::size_t at = below(input.size() + 1);
    const auto place = input.begin() + static_cast<std::ptrdiff_t>(at);
    const auto byte = static_cast<std::uint8_t>(random());
    const std::size_t how = below(8);
    if (how < 4 && at < input.size()) {
      input[at] = byte;
    } else if (how == 4 && at < input.size()) {
      input.erase(place);
    } else if (how == 5 && !corpus.empty()) {
      const Input& other = corpus[below(corpus.size())];
      input.resize(at);
      input.insert(input.end(), other.begin() + static_cast<std::ptrdiff_t>(below(other.size())),
                   other.end());
    } else {
      input.insert(place, byte);
    }
  }
  return input;
}

double environment_number(const char* name, double otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::atof(text);
}

}  // namespace

void replay(const std::string& name, Target target) {
  for (const int signal : test::crash_signals()) std::signal(signal, report_crash);
  const std::vector<Input> corpus = shipped(name);
  ASSERT_FALSE(corpus.empty());
  for (const Input& input : corpus) well(target, input);
}

void try_random_inputs(const std::string& name, Target target, int count,
                       const std::vector<Input>& more) {
  for (const int signal : test::crash_signals()) std::signal(signal, report_crash);
  std::vector<Input> corpus = shipped(name);
  corpus.insert(corpus.end(), more.begin(), more.end());
  count = static_cast<int>(environment_number("MATRIX_FUZZ_INPUTS", test::trials(count)));
  const double seconds = environment_number("MATRIX_FUZZ_SECONDS", 0);
  const auto seed = static_cast<std::uint64_t>(environment_number("MATRIX_FUZZ_SEED", 1));
  std::mt19937_64 random(seed);
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  int tried = 0;
  while (seconds > 0 ? std::chrono::steady_clock::now() < end : tried < count) {
    ++tried;
    if (!well(target, changed(corpus, random))) break;
  }
  ::testing::Test::RecordProperty("inputs", tried);
}

}  // namespace fuzz
