// Streams that throw on errors. Invariant: errno is read directly after the call that failed, before another call can
// change it.

#include "tools/file_stream.h"

#include "tools/failure.h"

#include <cerrno>
#include <system_error>
#include <vector>

namespace Command {

bool IsDash(const std::string& name) { return name == "-"; }

void FailWithError(const std::string& name, int error) { throw Failure(name, std::generic_category().message(error)); }

Stream OpenStream(const std::string& path, const char* mode, const std::string& name) {
    Stream stream(std::fopen(path.c_str(), mode));
    if (!stream) FailWithError(name, errno);
    return stream;
}

void CopyStream(std::FILE* from, const std::string& from_name, std::FILE* to, const std::string& to_name) {
    std::vector<char> buffer(1 << 16);
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), from)) {
        if (std::fwrite(buffer.data(), 1, size, to) != size) FailWithError(to_name, errno);
    }
    if (std::ferror(from)) FailWithError(from_name, errno);
    if (std::fflush(to) != 0) FailWithError(to_name, errno);
}

} // namespace Command
