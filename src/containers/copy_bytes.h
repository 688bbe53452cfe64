// Copies one element or value whose size is known only at run time. The most frequent sizes are copied inline, because
// a call of memmove costs more than such a copy.

#ifndef TESSARIN_CONTAINERS_COPY_BYTES_H
#define TESSARIN_CONTAINERS_COPY_BYTES_H

#include <cstdint>
#include <cstring>

namespace Tessarin {

/// All bytes are read before one is written, so the two places may overlap.
template <std::uint32_t Size>
inline void* CopyFixed(void* to, const void* from) {
    unsigned char bytes[Size];
    std::memcpy(bytes, from, Size);
    return std::memcpy(to, bytes, Size);
}

/// The two places may overlap.
/// returns  `to`
inline void* CopyBytes(void* to, const void* from, std::uint32_t size) {
    switch (size) {
    case 4:
        return CopyFixed<4>(to, from);
    case 8:
        return CopyFixed<8>(to, from);
    case 16:
        return CopyFixed<16>(to, from);
    default:
        return std::memmove(to, from, size);
    }
}

} // namespace Tessarin

#endif
