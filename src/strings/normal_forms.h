/// The two normal forms of a text beside the plain one.

#ifndef TESSARIN_STRINGS_NORMAL_FORMS_H
#define TESSARIN_STRINGS_NORMAL_FORMS_H

#include <cstddef>

namespace Tessarin {

/// Null counts as empty.
constexpr bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

/// `A` to `Z` become `a` to `z`; every other byte stays, whatever the locale says of it.
constexpr char LowerCase(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

/// Room for a path form with its terminator. What doesn't fit is dropped.
inline constexpr std::size_t kPathFormRoom = 256;

/// Writes the path form of `path`: lower case, each run of `\` and `/` one `\`. Ends it with a NUL.
/// returns  the bytes written, without the NUL
inline std::size_t PathForm(const char* path, char (&form)[kPathFormRoom]) {
    std::size_t written = 0;
    bool in_separators = false;
    for (; *path != '\0' && written < kPathFormRoom - 1; ++path) {
        bool separator = *path == '\\' || *path == '/';
        if (!separator) {
            form[written++] = LowerCase(*path);
        } else if (!in_separators) {
            form[written++] = '\\';
        }
        in_separators = separator;
    }
    form[written] = '\0';
    return written;
}

} // namespace Tessarin

#endif
