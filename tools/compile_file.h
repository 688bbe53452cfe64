// Compiling one configuration file.

#ifndef TESSARIN_TOOLS_COMPILE_FILE_H
#define TESSARIN_TOOLS_COMPILE_FILE_H

#include <functional>
#include <string>

namespace Command {

/// Writes a file of either form in binary form. Throws Failure.
/// warn  is called with a readable line for each value that a compiled file can't hold: of several values under one
///       key, all but the last
void CompileFile(const std::string& source, const std::string& target,
                 const std::function<void(const std::string&)>& warn);

} // namespace Command

#endif
