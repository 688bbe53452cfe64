/// Text from a format, for keys that are spelled from numbers.

#ifndef TESSARIN_CORE_FORMAT_KEY_H
#define TESSARIN_CORE_FORMAT_KEY_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace Tessarin {

/// Room for a spelled key with its terminator, in the caller's hands.
inline constexpr std::size_t kFormatKeyRoom = 1024;

/// Writes by the conventions of printf.
/// returns  false if the text doesn't fit, which is then cut, or if the format can't be followed
[[gnu::format(printf, 2, 0)]] inline bool FormatKey(char (&key)[kFormatKeyRoom], const char* format,
                                                    std::va_list arguments) {
    key[0] = '\0';
    int length = std::vsnprintf(key, sizeof key, format, arguments);
    return length >= 0 && static_cast<std::size_t>(length) < sizeof key;
}

/// The same with the arguments in place.
[[gnu::format(printf, 2, 3)]] inline bool FormatKey(char (&key)[kFormatKeyRoom], const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    bool fits = FormatKey(key, format, arguments);
    va_end(arguments);
    return fits;
}

} // namespace Tessarin

#endif
