// What a host reads from a pack: its symbols, its table and the records that the rows point at.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "host/efiutils/function_info.hpp"
#include "host/efiutils/system/platform.hpp"
#include "host/packcheck/checks/checks.hpp"
#include "host/packcheck/watch/library_symbols.hpp"
#include "host/packs/unit_rule.hpp"

namespace packcheck {

namespace {

// The flag bits that packs publish.
constexpr unsigned kKnownFlags = 4 | 8;

constexpr const char* kRequired[] = {"theEfi", "numFuncs", "DllRegisterServer",
                                     "DllUnregisterServer"};

// The entry points that hosts call for operators of their own, by the linker's names.
constexpr const char* kEntryPoints[] = {worksheet::kIdentitySymbol,
                                        "_Z8identityP14EfiCallContextP8aComplex",
                                        worksheet::kInverseSymbol,
                                        "_Z3invP14EfiCallContextP7aMatrix",
                                        "_Z4cinvP14EfiCallContextP7aMatrixPS2_b",
                                        worksheet::kEigenvalsSymbol,
                                        "_Z9eigenvalsP14EfiCallContextP7aMatrixd",
                                        worksheet::kEigenvecsSymbol,
                                        "_Z9eigenvecsP14EfiCallContextP7aMatrix"};

template <class Names>
bool is_among(const std::string& name, const Names& names) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// Whether the interface knows symbols of this name: the table, the entry points, and the records of
// names, identifiers and context lists.
bool is_documented(const std::string& name) {
  return is_among(name, kRequired) || is_among(name, kEntryPoints) || name.starts_with("string_") ||
         name.starts_with("identifier_") || name.ends_with("LIST");
}

std::string row_label(const Pack& pack, std::size_t k) {
  const auto name = text_of(pack.memory(), pack.rows()[k].name);
  return name && !name->empty() ? *name : fmt::format("row {}", k);
}

// Runs `look` on each row; it says what is wrong through its second argument.
template <class Look>
void for_each_row(Session& session, Look look) {
  const Pack& pack = session.pack();
  for (std::size_t k = 0; k < pack.rows().size(); ++k)
    look(pack.rows()[k], [&](const char* rule, const std::string& message) {
      session.report_about(row_label(pack, k), rule, message);
    });
}

bool is_word(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) > ' ' && std::strchr("()[],;\"", c) == nullptr;
  });
}

}  // namespace

void check_exports(Session& session) {
  const Pack& pack = session.pack();
  for (const char* name : kRequired)
    if (pack.symbol(name) == nullptr)
      session.report("missing", fmt::format("does not show {}", name));
  const auto* const count = static_cast<const std::int32_t*>(pack.symbol("numFuncs"));
  for (const Symbol& symbol : shown_symbols(session.options.pack)) {
    if (symbol.name == "theEfi" && count != nullptr && symbol.size != 0 &&
        symbol.size != static_cast<std::uint64_t>(*count) * sizeof(FunctionEntry))
      session.report("count", fmt::format("numFuncs is {}, and theEfi has room for {} rows", *count,
                                          symbol.size / sizeof(FunctionEntry)));
    if (session.options.strict && !is_documented(symbol.name))
      session.report("undocumented", fmt::format("shows {}, which no host asks for", symbol.name));
  }
}

void check_rows(Session& session) {
  if (session.pack().rows().empty()) session.report("empty", "has no rows");
  for_each_row(session, [](const FunctionEntry& row, auto report) {
    if (row.reserved != 0) report("reserved", fmt::format("its reserved word is {}", row.reserved));
    if ((row.flags & ~kKnownFlags) != 0)
      report("flags", fmt::format("its flags are {}: no host knows them", row.flags));
    for (const std::uint8_t padding : row.padding)
      if (padding != 0) report("padding", "the bytes behind its flags are not 0");
  });
}

void check_names(Session& session) {
  const AddressSpace& memory = session.pack().memory();
  std::set<std::string> seen;
  for_each_row(session, [&](const FunctionEntry& row, auto report) {
    const auto name = text_of(memory, row.name);
    if (!name) {
      report("record", "its name is no string record");
      return;
    }
    if (!is_word(*name)) report("text", fmt::format("\"{}\" cannot be called by name", *name));
    if (!seen.insert(*name).second) report("twice", "another row has the same name");
    // The terminating NUL is counted.
    const auto wanted = static_cast<std::int32_t>(name->size()) + 1;
    if (row.name->length != wanted)
      report("length",
             fmt::format("the length of its name is {}, not {}", row.name->length, wanted));
  });
}

void check_signatures(Session& session) {
  const AddressSpace& memory = session.pack().memory();
  for_each_row(session, [&](const FunctionEntry& row, auto report) {
    if (!is_host_signature(row.signature)) {
      report("unknown", "its signature is none of the host's");
      return;
    }
    const auto context = context_names(memory, row.context);
    if (context && context->size() >= static_cast<std::size_t>(row.signature->argument_count))
      report("context",
             fmt::format("its signature has {} arguments, and {} of them are its context",
                         row.signature->argument_count, context->size()));
  });
}

void check_contexts(Session& session) {
  const AddressSpace& memory = session.pack().memory();
  for_each_row(session, [&](const FunctionEntry& row, auto report) {
    const auto names = context_names(memory, row.context);
    if (!names) {
      report("list", "its context is no list of identifiers");
      return;
    }
    for (const std::string& name : *names)
      if (!is_word(name)) report("name", fmt::format("it asks for a variable \"{}\"", name));
  });
}

void check_handlers(Session& session) {
  const AddressSpace& memory = session.pack().memory();
  const std::string pack = efi::library_of(session.pack().symbol("theEfi"));
  for_each_row(session, [&](const FunctionEntry& row, auto report) {
    const void* const code = reinterpret_cast<const void*>(row.handler);
    if (code == nullptr)
      report("missing", "it has no handler");
    else if (!memory.executable(code))
      report("code", fmt::format("its handler, {}, is no code", code));
    else if (efi::library_of(code) != pack)
      report("foreign", "its handler is not in the pack");
  });
}

void check_unit_rules(Session& session) {
  const AddressSpace& memory = session.pack().memory();
  for_each_row(session, [&](const FunctionEntry& row, auto report) {
    if (row.unit_rule == nullptr || row.unit_rule == StripUnit_sString) return;
    const auto text = text_of(memory, row.unit_rule);
    if (!text) {
      report("record", "its unit rule is no string record");
      return;
    }
    // A bare name counts the terminating NUL, an expression does not.
    const bool is_name = text->find('(') == std::string::npos;
    const auto wanted = static_cast<std::int32_t>(text->size()) + (is_name ? 1 : 0);
    if (row.unit_rule->length != wanted)
      report("length", fmt::format("the length of its unit rule is {}, not {}",
                                   row.unit_rule->length, wanted));
    const auto context = context_names(memory, row.context);
    if (!context || !is_host_signature(row.signature)) return;
    const auto arguments = static_cast<std::size_t>(row.signature->argument_count);
    const std::vector<worksheet::UnitArgument> plain(arguments - context->size());
    try {
      worksheet::apply_unit_rule(text->c_str(), plain);
    } catch (const worksheet::UnitRuleError& error) {
      report("syntax", fmt::format("{} (\"{}\")", error.what(), *text));
    }
  });
}

}  // namespace packcheck
