/// \file
/// Types that every part of the library shares. Usable from C99 and from C++17.

#ifndef TESSARIN_TYPES_H
#define TESSARIN_TYPES_H

#include <stdint.h>

/// Marks what the shared library exports to its hosts; everything else is hidden.
#if defined(_WIN32)
#if defined(TESSARIN_BUILDING)
#define TESSARIN_API __declspec(dllexport)
#else
#define TESSARIN_API __declspec(dllimport)
#endif
#else
#define TESSARIN_API __attribute__((visibility("default")))
#endif

/// An interned text. Texts that are equal byte for byte have the same address, so keys compare as pointers. The text
/// ends with a NUL and must not be written to. The 32-bit word right before it holds its length in bytes (it may be at
/// any address: read it with memcpy). Valid until the library is unloaded; nobody frees it.
typedef const char* cstr;

/// Two consecutive 32-bit floats.
typedef struct Float2 {
    float x; ///< the first component
    float y; ///< the second component
} Float2;

/// Three consecutive 32-bit floats.
typedef struct Float3 {
    float x; ///< the first component
    float y; ///< the second component
    float z; ///< the third component
} Float3;

/// Four consecutive 32-bit floats.
typedef struct Float4 {
    float x; ///< the first component
    float y; ///< the second component
    float z; ///< the third component
    float w; ///< the fourth component
} Float4;

/// Sixteen consecutive 32-bit floats, in the order of the host's own matrix.
typedef struct Float4x4 {
    /// The elements.
    float m[16];
} Float4x4;

/// A 32-bit value that belongs to the host; opaque to the library.
typedef uint32_t Handle;

#endif
