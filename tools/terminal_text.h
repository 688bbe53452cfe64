// Makes text from files safe to print: escape sequences in it can't control a terminal, and bytes that aren't UTF-8
// can't break the output.
//
// These are escaped, each byte as \n, \r, \t or \xNN: control characters (U+0000 to U+001F and U+007F to U+009F) and
// bytes that aren't part of valid UTF-8.

#ifndef TESSARIN_TOOLS_TERMINAL_TEXT_H
#define TESSARIN_TOOLS_TERMINAL_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Command {

/// The text in double quotes, escaped; quotes and backslashes in it are escaped, too.
std::string Quote(std::string_view text);

/// The text escaped, without quotes around it. Its own quotes and backslashes stay.
std::string Printable(std::string_view text);

/// The text with U+FFFD for each byte that isn't part of valid UTF-8.
std::string ToUtf8(std::string_view text);

/// The columns that a text takes on a terminal: two for a wide character, none for a combining one.
std::size_t DisplayWidth(std::string_view text);

} // namespace Command

#endif
