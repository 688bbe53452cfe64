// Where the runtime library's files differ between hosts: names, and positions past 31 bits.

#ifndef TESSARIN_PLATFORM_HOST_FILE_H
#define TESSARIN_PLATFORM_HOST_FILE_H

#include <cstdint>
#include <cstdio>

namespace Tessarin {

/// fopen, with one meaning of a path's bytes everywhere: where the host's names are wide, the path is UTF-8, and only
/// what isn't UTF-8 is left to the runtime library's code page.
/// mode     as fopen takes it, 7 bytes at most
/// returns  the stream, to be closed with fclose; null if the file can't be opened
/// Threads: any
std::FILE* OpenFile(const char* path, const char* mode);

/// ftell with 64 bits, which a long hasn't everywhere: a larger file must not pass for a small one.
/// returns  the position in bytes; -1 for a stream that has none
std::int64_t FilePosition(std::FILE* stream);

} // namespace Tessarin

#endif
