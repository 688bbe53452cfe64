// The operations on a stream of the runtime library that the file objects and the file service share.

#ifndef TESSARIN_FILES_STREAM_H
#define TESSARIN_FILES_STREAM_H

#include "platform/host_file.h"

#include <cstdint>
#include <cstdio>
#include <limits>

namespace Tessarin {

/// The size in bytes; 0 for a null stream; -1 if the stream can't seek or its size needs more than 31 bits. Afterwards
/// the position is the start, because the callers read from there.
inline std::int32_t StreamSize(std::FILE* stream) {
    if (stream == nullptr) return 0;
    const std::int64_t size = std::fseek(stream, 0, SEEK_END) == 0 ? FilePosition(stream) : -1;
    static_cast<void>(std::fseek(stream, 0, SEEK_SET));
    return size < 0 || size > std::numeric_limits<std::int32_t>::max() ? -1 : static_cast<std::int32_t>(size);
}

/// Reads up to `count` bytes; reads nothing if `buffer` has room for fewer than `count`.
inline std::uint32_t ReadStream(std::FILE* stream, void* buffer, std::uint32_t buffer_size, std::uint32_t count) {
    if (stream == nullptr || buffer == nullptr || buffer_size < count) return 0;
    return static_cast<std::uint32_t>(std::fread(buffer, 1, count, stream));
}

/// Writes `size` bytes; returns how many the stream took.
inline std::uint32_t WriteStream(std::FILE* stream, const void* buffer, std::uint32_t size) {
    if (stream == nullptr || buffer == nullptr) return 0;
    return static_cast<std::uint32_t>(std::fwrite(buffer, 1, size, stream));
}

} // namespace Tessarin

#endif
