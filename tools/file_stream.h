// stdio streams whose errors become exceptions, for everything that reads or writes a file's bytes.

#ifndef TESSARIN_TOOLS_FILE_STREAM_H
#define TESSARIN_TOOLS_FILE_STREAM_H

#include <cstdio>
#include <memory>
#include <string>

namespace Command {

struct StreamCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

/// Whether a file name on the command line means standard input or output.
bool IsDash(const std::string& name);

/// Throws Failure with the system's message for an error number.
/// name  the file as the user knows it
[[noreturn]] void FailWithError(const std::string& name, int error);

/// Opens a file. Throws Failure, whose message calls the file `name`.
/// mode  as fopen takes it
Stream OpenStream(const std::string& path, const char* mode, const std::string& name);

/// Copies the rest of a stream to another and flushes the other. Throws Failure, which names the stream that failed.
void CopyStream(std::FILE* from, const std::string& from_name, std::FILE* to, const std::string& to_name);

} // namespace Command

#endif
