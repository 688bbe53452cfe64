// The one file of the command with a word of the operating system: no standard function tells a terminal from a pipe.

#include "tools/terminal.h"

#include <cstdlib>
#include <string_view>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace Command {

bool IsTerminal(std::FILE* stream) {
#ifdef _WIN32
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) == 1;
#endif
}

bool TakesColour(std::FILE* stream) {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    if (refused && *refused) return false;
    return IsTerminal(stream) && terminal && std::string_view(terminal) != "dumb";
}

} // namespace Command
