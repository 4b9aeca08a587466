// Values as MathML in HTML.
#pragma once

#include <string>

#include "host/efiutils/store.hpp"
#include "host/worksheet/output/display_options.hpp"
#include "host/worksheet/values/value.hpp"

namespace worksheet {

// "name = value" as one formula, or a formula for each part of a joined value that has not been
// taken apart. The name may be empty. The store is that of the value. Points stand below one
// another. Long and wide matrices are elided, and nested ones beyond kReportLimit are named only,
// unless options.all is set: then a long matrix is a table.
std::string math_markup(const efi::Store& store, const std::string& name, const Value& value,
                        const DisplayOptions& options);

}  // namespace worksheet
