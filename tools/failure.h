// The exception for work that can't be done. main prints it as `tessarin: FILE: what is wrong`. Exit statuses:
// command_line.h.

#ifndef TESSARIN_TOOLS_FAILURE_H
#define TESSARIN_TOOLS_FAILURE_H

#include <stdexcept>
#include <string>

namespace Command {

class Failure : public std::runtime_error {
public:
    Failure(const std::string& file, const std::string& what) : std::runtime_error(file + ": " + what) {}
};

} // namespace Command

#endif
