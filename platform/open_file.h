/// Streams of the runtime library for files by name.

#ifndef TESSARIN_PLATFORM_OPEN_FILE_H
#define TESSARIN_PLATFORM_OPEN_FILE_H

#include <cstdio>

namespace Tessarin {

/// fopen, with one meaning of a path's bytes everywhere: where the host's names are wide, the path is UTF-8, and only
/// what isn't UTF-8 is left to the runtime library's code page.
/// mode     as fopen takes it, 7 bytes at most
/// returns  the stream, to be closed with fclose; null if the file can't be opened
/// Threads: any
std::FILE* OpenFile(const char* path, const char* mode);

} // namespace Tessarin

#endif
