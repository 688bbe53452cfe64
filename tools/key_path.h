/// The way to an entry as it is written in a shell: keys with `/` between them.
///
/// A piece in double quotes may hold a `/`; a quote in it is written twice. In an array a piece is a position.

#ifndef TESSARIN_TOOLS_KEY_PATH_H
#define TESSARIN_TOOLS_KEY_PATH_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Command {

using KeyPath = std::vector<std::string>;

/// The pieces of a way; no text is none, the root. Nothing for a quote that doesn't end where its piece does.
std::optional<KeyPath> SplitKeys(std::string_view text);

/// A piece as SplitKeys reads it back.
std::string SpellKey(std::string_view piece);

/// The position that a piece names in an array; nothing unless it is decimal digits that 32 bits hold.
std::optional<std::uint32_t> PositionOf(std::string_view piece);

} // namespace Command

#endif
