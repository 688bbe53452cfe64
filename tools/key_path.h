// The path to an entry as it is written in a shell: keys with `/` between them.
//
// A key in double quotes may contain a `/`; a quote in it is written twice. In an array a key is a position.

#ifndef TESSARIN_TOOLS_KEY_PATH_H
#define TESSARIN_TOOLS_KEY_PATH_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Command {

using KeyPath = std::vector<std::string>;

/// The keys of a path; none for an empty text, the root. Nothing if a quote isn't closed or text follows its end.
std::optional<KeyPath> SplitKeyPath(std::string_view text);

/// A key as SplitKeyPath reads it back: in quotes if it must be.
std::string QuoteKey(std::string_view key);

/// The position that a key means in an array; nothing unless it is decimal digits of a number of 32 bits.
std::optional<std::uint32_t> ParsePosition(std::string_view key);

} // namespace Command

#endif
