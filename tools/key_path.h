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

/// The keys of a path; no keys for an empty text, which means the root. No value if a quote isn't closed or text
/// follows its end.
std::optional<KeyPath> SplitKeyPath(std::string_view text);

/// A key in the spelling that SplitKeyPath reads back: in quotes if necessary.
std::string QuoteKey(std::string_view key);

/// The position that a key means in an array; no value unless the key is the decimal digits of a 32-bit number.
std::optional<std::uint32_t> ParsePosition(std::string_view key);

} // namespace Command

#endif
