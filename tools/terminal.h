// What a stream is connected to.

#ifndef TESSARIN_TOOLS_TERMINAL_H
#define TESSARIN_TOOLS_TERMINAL_H

#include <cstdio>

namespace Command {

bool IsTerminal(std::FILE* stream);

/// Whether a stream is a terminal that shows colours, and NO_COLOR isn't set: what `--color auto` means. PrintTree in
/// command_line.cpp decides.
bool SupportsColour(std::FILE* stream);

} // namespace Command

#endif
