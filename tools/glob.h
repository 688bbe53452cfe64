// Patterns of file names.

#ifndef TESSARIN_TOOLS_GLOB_H
#define TESSARIN_TOOLS_GLOB_H

#include <string_view>

namespace Command {

/// Whether a pattern matches a whole name: `*` matches any text, `?` any one byte, everything else itself.
bool MatchesGlob(std::string_view name, std::string_view pattern);

} // namespace Command

#endif
