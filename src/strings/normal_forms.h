// The two normal forms in which a text can be interned, besides as it is: lower case and path form. Only ASCII letters
// are folded, whatever the locale. One letter is folded in platform/ascii.h, a whole text in string_hash.h.
//
// Keys of tables are interned as they are. Keys of configuration files are in lower case or in path form: a load
// interns them so in configure/text/text_interner.cpp, and searches fold in configure/tree/key_index.h and edit_tree.h
// (KeyOf).

#ifndef TESSARIN_STRINGS_NORMAL_FORMS_H
#define TESSARIN_STRINGS_NORMAL_FORMS_H

#include "platform/ascii.h"

#include <cstddef>

namespace Tessarin {

/// In which form a text is interned, looked up or compared: as it is, or in lower case.
enum class TextForm { kAsIs, kLowerCase };

/// Null counts as empty.
constexpr bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

/// Bytes of the longest path form, its NUL included. The rest of a longer path is dropped.
inline constexpr std::size_t kPathFormRoom = 256;

/// Writes the path form of `path` and a NUL: letters become lower case, each sequence of `\` and `/` becomes one `\`.
/// returns  the bytes written, without the NUL
inline std::size_t PathForm(const char* path, char (&form)[kPathFormRoom]) {
    std::size_t written = 0;
    bool in_separators = false;
    for (; *path != '\0' && written < kPathFormRoom - 1; ++path) {
        const bool separator = *path == '\\' || *path == '/';
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
