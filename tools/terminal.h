/// Whether a stream is read by a person.

#ifndef TESSARIN_TOOLS_TERMINAL_H
#define TESSARIN_TOOLS_TERMINAL_H

#include <cstdio>

namespace Command {

bool IsTerminal(std::FILE* stream);

/// Whether what is written to a stream may have colours: it is a terminal that knows them, and NO_COLOR isn't set.
bool TakesColour(std::FILE* stream);

} // namespace Command

#endif
