// Memory for counted elements, with the product checked: where pointers have 32 bits, it may not fit.

#ifndef TESSARIN_MEMORY_CHECKED_ALLOCATION_H
#define TESSARIN_MEMORY_CHECKED_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace Tessarin {

/// `count` elements of `element_size` bytes from malloc, uninitialised; null if memory ran out or can't hold them.
inline void* AllocateArray(std::uint32_t count, std::size_t element_size) {
    const std::uint64_t bytes = std::uint64_t{count} * element_size;
    if (bytes > std::uint64_t{PTRDIFF_MAX}) return nullptr;
    return std::malloc(static_cast<std::size_t>(bytes));
}

} // namespace Tessarin

#endif
