// The two things in which the runtime library's files differ between hosts: names, and positions beyond 31 bits. Which
// modes files are opened in: files/file_io.cpp for the service, files/file_objects.cpp for the objects.

#ifndef TESSARIN_PLATFORM_HOST_FILE_H
#define TESSARIN_PLATFORM_HOST_FILE_H

#include <cstdint>
#include <cstdio>

namespace Tessarin {

/// fopen, with the same meaning of a path's bytes everywhere. On a host whose file names are wide, the path is read as
/// UTF-8; if it isn't valid UTF-8, the runtime library reads it in its code page.
/// mode     as fopen takes it, 7 bytes at most
/// returns  the stream, to be closed with fclose; null if the file can't be opened
/// Threads: any
std::FILE* OpenFile(const char* path, const char* mode);

/// A 64-bit ftell: long has 32 bits on some hosts, and a huge file would seem small.
/// returns  the position in bytes; -1 for a stream that has none
std::int64_t FilePosition(std::FILE* stream);

} // namespace Tessarin

#endif
