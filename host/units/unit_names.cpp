#include "host/units/unit_names.hpp"

#include <algorithm>
#include <cctype>
#include <optional>
#include <set>
#include <unordered_map>

#include "host/text/nearest.hpp"
#include "host/text/text.hpp"
#include "host/units/unit_database.hpp"

namespace worksheet {

namespace {

// Names that mean different things to different people, or no unit at all.
constexpr const char* kRefused[][2] = {
    {"kt", "kt may be a knot or 1000 t; write kn or kilotonne"},
    {"ton", "ton has several meanings; write t, short_ton or long_ton"},
    {"cwt", "cwt has two meanings; write short_hundredweight or long_hundredweight"},
    {"tonf", "tonf has several meanings; write tf or short_ton_force"},
    {"pt", "pt may be a pint or a point; write pint or point"},
    {"ppt", "ppt may be 1e-3 or 1e-12; write the number"},
    {"sqft", "write ft^2 for sqft"},
    {"cuft", "write ft^3 for cuft"},
    {"sqm", "write m^2 for sqm"},
    {"cbm", "write m^3 for cbm"},
    {"Np", "Np is a logarithmic scale; write the ratio, exp(x)"},
    {"dB", "dB is a logarithmic scale; write the ratio, 10^(x/20) or 10^(x/10)"},
    {"dBm", "dBm is a logarithmic scale; write the power, 10^(x/10)*1{mW}"},
    {"psig", "psig counts from the air's pressure; write psi and add 1{atm}"},
    {"barg", "barg counts from the air's pressure; write bar and add 1{atm}"},
};

// An entry under one of its names.
struct Known {
  const UnitEntry* entry;
  bool is_symbol;
  bool is_name;  // Some are both: "kohm" and "kiloohm".
};

using Names = std::unordered_map<std::string, Known>;

Names all_names() {
  Names names;
  for (const UnitEntry& entry : unit_database().entries) {
    for (const std::string& symbol : entry.symbols) names.insert({symbol, {&entry, true, false}});
    for (const auto* list : {&entry.names, &entry.plurals})
      for (const std::string& name : *list)
        names.insert({name, {&entry, false, true}}).first->second.is_name = true;
  }
  return names;
}

const Names& known_names() {
  static const Names names = all_names();
  return names;
}

bool takes(const UnitEntry& entry, const UnitPrefix& prefix) {
  const auto& list = entry.prefixes;
  // "u" stands for the letters, too.
  const std::string symbol = prefix.factor == 1e-6 ? "u" : prefix.symbol;
  return entry.takes_all || std::find(list.begin(), list.end(), symbol) != list.end();
}

struct Found {
  const UnitEntry* entry;
  double factor;
};

std::optional<Found> look_up(const std::string& name) {
  const Names& names = known_names();
  if (const auto whole = names.find(name); whole != names.end())
    return Found{whole->second.entry, 1.0};
  for (const UnitPrefix& prefix : kUnitPrefixes)
    for (const bool is_symbol : {true, false}) {
      const std::string_view start = is_symbol ? prefix.symbol : prefix.name;
      if (!name.starts_with(start)) continue;
      const auto rest = names.find(name.substr(start.size()));
      if (rest == names.end() || !takes(*rest->second.entry, prefix)) continue;
      if (is_symbol ? rest->second.is_symbol : rest->second.is_name)
        return Found{rest->second.entry, prefix.factor};
    }
  return std::nullopt;
}

NamedUnit named(const std::string& name, const Found& found) {
  const UnitEntry& entry = *found.entry;
  // Powers of ten above 1 are exact: 0.001 kg times 1e3 is 1 kg, and so is it divided by 1e-3.
  const double scale =
      found.factor < 1.0 ? entry.scale / (1.0 / found.factor) : entry.scale * found.factor;
  return {name, scale, entry.dimension, entry.turns,
          entry.takes_all ? entry.symbols.front() : std::string()};
}

// The same letters, whatever case they are in.
bool same_letters(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
    return std::tolower(x) == std::tolower(y);
  });
}

// The names of units that are near one with a spelling mistake. Short names are near to too many.
std::string misspelt_unit(const std::string& name) {
  constexpr std::size_t kShortest = 5;
  if (name.size() < kShortest) return {};
  std::vector<std::string> names;
  for (const auto& [other, known] : known_names()) {
    if (other.size() >= kShortest - 1) names.push_back(other);
    for (const UnitPrefix& prefix : kUnitPrefixes)
      if (known.is_name && takes(*known.entry, prefix)) names.push_back(prefix.name + other);
  }
  const std::vector<std::string> near = nearest(name, names);
  return near.size() > 3 ? "" : joined(near, " or ");
}

}  // namespace

const NamedUnit* find_named_unit(const std::string& name) {
  static std::unordered_map<std::string, NamedUnit> known;
  if (const auto found = known.find(name); found != known.end()) return &found->second;
  for (const auto& [refused, reason] : kRefused)
    if (name == refused) throw std::runtime_error(reason);
  const auto found = look_up(name);
  if (!found) return nullptr;
  if (!found->entry->proportional)
    throw std::runtime_error(name +
                             " has a zero of its own; use K, or delta_degC and delta_degF "
                             "for differences");
  return &known.emplace(name, named(name, *found)).first->second;
}

std::string likely_unit(const std::string& name) {
  constexpr std::size_t kLongest = 20;
  if (name.size() > kLongest) return {};
  std::set<std::string> near;
  for (const auto& [other, known] : known_names()) {
    if (same_letters(name, other)) near.insert(other);
    for (const UnitPrefix& prefix : kUnitPrefixes) {
      const std::string whole = (known.is_symbol ? prefix.symbol : prefix.name) + other;
      if (same_letters(name, whole) && takes(*known.entry, prefix)) near.insert(whole);
    }
  }
  if (!near.empty()) return joined(std::vector<std::string>(near.begin(), near.end()), " or ");
  for (std::size_t at = name.size(); at-- > 1;) {
    const std::string left = name.substr(0, at), right = name.substr(at);
    if (look_up(left) && look_up(right)) return left + " " + right;
  }
  return misspelt_unit(name);
}

}  // namespace worksheet
