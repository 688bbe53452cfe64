// Tells AddressSanitizer which blocks of a pool are free: an access to one is then reported like an access to freed
// memory of the heap. In other builds these functions do nothing.

#ifndef TESSARIN_MEMORY_POISON_H
#define TESSARIN_MEMORY_POISON_H

#include <cstddef>

#if __has_include(<sanitizer/asan_interface.h>) // its macros do nothing in other builds; some targets lack it
#include <sanitizer/asan_interface.h>
#endif

namespace Tessarin {

/// Any access to the bytes is an error from now on.
inline void Poison([[maybe_unused]] const void* bytes, [[maybe_unused]] std::size_t size) {
#if defined(ASAN_POISON_MEMORY_REGION)
    ASAN_POISON_MEMORY_REGION(bytes, size);
#endif
}

/// The bytes may be used again; they are as they were.
inline void Unpoison([[maybe_unused]] const void* bytes, [[maybe_unused]] std::size_t size) {
#if defined(ASAN_POISON_MEMORY_REGION)
    ASAN_UNPOISON_MEMORY_REGION(bytes, size);
#endif
}

} // namespace Tessarin

#endif
