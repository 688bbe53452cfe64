// Memory for an array, with its size in bytes checked: where pointers have 32 bits, count times element size may not
// fit.

#ifndef TESSARIN_MEMORY_CHECKED_ALLOCATION_H
#define TESSARIN_MEMORY_CHECKED_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace Tessarin {

/// `count` elements of `element_size` bytes from malloc, uninitialised; null if memory ran out or they don't fit in it.
inline void* AllocateArray(std::uint32_t count, std::size_t element_size) {
    const std::uint64_t bytes = std::uint64_t{count} * element_size;
    if (bytes > std::uint64_t{PTRDIFF_MAX}) return nullptr;
    return std::malloc(static_cast<std::size_t>(bytes));
}

} // namespace Tessarin

#endif
