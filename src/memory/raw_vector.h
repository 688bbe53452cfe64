// A growable array of raw elements of one fixed size, for the lists of the block pools and the items of a table's array
// part. Hosts can see its capacities through the array part, so the rule never changes: 8, then doubling; or twice the
// need if a need is given. Where hosts can't see them, List is used.
//
// Invariant: count <= capacity, and `data` has room for `capacity` elements; it is null only if the capacity is 0.

#ifndef TESSARIN_MEMORY_RAW_VECTOR_H
#define TESSARIN_MEMORY_RAW_VECTOR_H

#include "memory/checked_allocation.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Tessarin {

struct RawVector {
    static constexpr std::uint32_t kFirstCapacity = 8;

    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
    std::uint32_t element_size = 0;
    void* data = nullptr; // `capacity` elements from malloc, the vector's own

    /// Drops the elements and allocates room for the first new ones. False if memory ran out: the vector is then empty
    /// and usable, and the next growth tries again.
    bool Reset(std::uint32_t new_element_size) {
        Release();
        element_size = new_element_size;
        return Grow(kFirstCapacity);
    }

    void Release() {
        std::free(data);
        data = nullptr;
        count = capacity = 0;
    }

    [[nodiscard]] void* At(std::uint32_t index) const {
        return static_cast<unsigned char*>(data) + std::size_t{index} * element_size;
    }

    /// Appends a copy of an element; null if memory ran out; the vector is then unchanged.
    void* Push(const void* element) {
        if (count == capacity && !GrowForOne()) return nullptr;
        return std::memcpy(At(count++), element, element_size);
    }

    /// Doubles the capacity. False if memory ran out; the vector is then unchanged.
    bool GrowForOne() { return capacity <= UINT32_MAX / 2 && Grow(capacity == 0 ? kFirstCapacity : capacity * 2); }

    /// If there is no room for `needed` elements, makes room for twice as many, and `count` becomes `needed`.
    bool Reserve(std::uint32_t needed) {
        if (needed <= capacity) return true;
        if (needed > UINT32_MAX / 2 || !Grow(needed * 2)) return false;
        count = needed;
        return true;
    }

private:
    bool Grow(std::uint32_t new_capacity) {
        void* grown = AllocateArray(new_capacity, element_size);
        if (grown == nullptr) return false;
        if (count != 0) std::memcpy(grown, data, std::size_t{count} * element_size);
        std::free(data);
        data = grown;
        capacity = new_capacity;
        return true;
    }
};

} // namespace Tessarin

#endif
