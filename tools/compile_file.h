// Compiling one configuration file.

#ifndef TESSARIN_TOOLS_COMPILE_FILE_H
#define TESSARIN_TOOLS_COMPILE_FILE_H

#include <functional>
#include <string>

namespace Command {

/// Writes a file of either form in binary form. Throws Failure.
/// warn  is called with a line for people for each value that a compiled file can't hold: the earlier ones of several
///       under one key
void CompileFile(const std::string& source, const std::string& target,
                 const std::function<void(const std::string&)>& warn);

} // namespace Command

#endif
