#include "host/text/nearest.hpp"

#include <algorithm>
#include <array>

#include "fmt/format.h"
#include "host/text/text.hpp"

namespace worksheet {

namespace {

constexpr std::size_t kLongest = 40;
constexpr std::size_t kMostSuggestions = 3;

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t mistakes_in(std::size_t length) {
  return length < 3 ? 0 : length < 6 ? 1 : 2;
}

}  // namespace

std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t most) {
  const std::size_t m = a.size(), n = b.size();
  if (m > kLongest || n > kLongest || std::max(m, n) - std::min(m, n) >= most) return most;
  // Row i of the table: from the first i characters of a to the first j of b.
  std::array<std::array<std::size_t, kLongest + 1>, 3> table;
  for (std::size_t i = 0; i <= m; ++i) {
    auto& row = table[i % 3];
    row[0] = i;
    for (std::size_t j = 1; j <= n; ++j) {
      if (i == 0) {
        row[j] = j;
        continue;
      }
      const auto& above = table[(i - 1) % 3];
      const bool same = lower(a[i - 1]) == lower(b[j - 1]);
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same ? 0 : 1)});
      const bool exchanged = i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                             lower(a[i - 2]) == lower(b[j - 1]);
      if (exchanged) row[j] = std::min(row[j], table[(i - 2) % 3][j - 2] + 1);
    }
  }
  return std::min(table[m % 3][n], most);
}

std::vector<std::string> nearest(std::string_view name,
                                 const std::vector<std::string>& candidates) {
  std::size_t least = mistakes_in(name.size()) + 1;
  std::vector<std::string> found;
  for (const std::string& candidate : candidates) {
    const std::size_t distance = edit_distance(name, candidate, least + 1);
    if (distance > least || (distance == least && found.empty()) || candidate == name) continue;
    if (distance < least) found.clear();
    least = distance;
    found.push_back(candidate);
  }
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

std::string suggestion(const std::vector<std::string>& names) {
  if (names.empty() || names.size() > kMostSuggestions) return {};
  return fmt::format("; did you mean {}?", joined(names, " or "));
}

}  // namespace worksheet
