// No standard function says whether a stream is a terminal. What else the command asks of the operating system is in
// system_files_posix.cpp and system_files_windows.cpp.

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

bool SupportsColour(std::FILE* stream) {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    if (refused && *refused) return false;
    return IsTerminal(stream) && terminal && std::string_view(terminal) != "dumb";
}

} // namespace Command
