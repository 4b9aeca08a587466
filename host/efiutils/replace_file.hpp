// Files that are written whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace efi {

#pragma GCC visibility push(default)

// Writes a new file beside `path` and puts it in the old one's place: a reader, and whoever looks
// after this program was killed, sees one or the other. Gives 0, or an errno: nothing has changed.
int replace_file(const std::string& path, std::string_view content);

#pragma GCC visibility pop

}  // namespace efi
