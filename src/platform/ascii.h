// Case of ASCII letters. The C library's own functions depend on the locale; these don't.

#ifndef TESSARIN_PLATFORM_ASCII_H
#define TESSARIN_PLATFORM_ASCII_H

namespace Tessarin {

/// `A` to `Z` become `a` to `z`; every other byte stays as it is.
constexpr char LowerCase(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + ('a' - 'A')) : byte;
}

} // namespace Tessarin

#endif
