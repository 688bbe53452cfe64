// Opening files by UTF-8 paths, and positions of 64 bits. The runtime library of Windows reads a narrow path in the
// code page of the user's settings, so a file would be found on one machine and not on the next. Therefore the path is
// converted to the wide form there. Elsewhere both functions are plain calls.

#include "platform/host_file.h"

#if defined(_WIN32)

#include <cstddef>
#include <cstdlib>
#include <windows.h>

namespace Tessarin {
namespace {

/// units  the number of wide characters that the path needs, its NUL included
std::FILE* OpenWide(const char* path, int units, const wchar_t* mode) {
    auto* wide = static_cast<wchar_t*>(std::malloc(static_cast<std::size_t>(units) * sizeof(wchar_t)));
    if (wide == nullptr) return nullptr;
    MultiByteToWideChar(CP_UTF8, 0, path, -1, wide, units);
    std::FILE* stream = _wfopen(wide, mode);
    std::free(wide);
    return stream;
}

} // namespace

std::FILE* OpenFile(const char* path, const char* mode) {
    constexpr std::size_t kModeRoom = 8;
    wchar_t wide_mode[kModeRoom] = {};
    for (std::size_t i = 0; i + 1 < kModeRoom && mode[i] != '\0'; ++i) wide_mode[i] = static_cast<wchar_t>(mode[i]);
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    return units > 0 ? OpenWide(path, units, wide_mode) : std::fopen(path, mode);
}

std::int64_t FilePosition(std::FILE* stream) { return _ftelli64(stream); }

} // namespace Tessarin

#else

namespace Tessarin {

std::FILE* OpenFile(const char* path, const char* mode) { return std::fopen(path, mode); }

std::int64_t FilePosition(std::FILE* stream) { return ftello(stream); }

} // namespace Tessarin

#endif
