// The record that the farr_ functions work on: a growable array of elements of one fixed size, kept as raw bytes in one
// heap block. The library itself calls the member functions, which don't check the handle.

#ifndef TESSARIN_CONTAINERS_FLAT_ARRAY_H
#define TESSARIN_CONTAINERS_FLAT_ARRAY_H

#include "containers/copy_bytes.h"
#include "containers/handle.h"
#include "tessarin/containers.h"

#include <cstddef>
#include <cstdint>

/// Invariant: count * element_size <= capacity. The order of the fields is fixed; `data` is never null.
/// Threads: one at a time per array.
struct farr {
    static constexpr std::uint32_t kSignature = Tessarin::kFlatArraySignature;
    static constexpr std::uint32_t kFirstElements = 12;
    static constexpr std::uint32_t kFirstThreshold = 0x800000;

    std::uint32_t signature;
    std::uint32_t count;
    std::uint32_t capacity; // bytes
    std::uint32_t element_size;
    std::uint32_t threshold; // bytes
    void* data;              // `capacity` bytes from malloc, owned by the array

    /// Null if memory runs out, if either argument is 0, or if the size of the buffer would exceed 32 bits.
    [[nodiscard]] static farr* Create(std::uint32_t element_size, std::uint32_t elements = kFirstElements);
    static void Destroy(farr* arr);
    [[nodiscard]] farr* Copy() const;

    void ResetThreshold(std::uint32_t bytes) { threshold = bytes < element_size ? element_size : bytes; }

    /// REQUIRES: index <= count; at `count` is the slot of the next element to be added
    [[nodiscard]] unsigned char* Slot(std::uint32_t index) const {
        return static_cast<unsigned char*>(data) + std::size_t{index} * element_size;
    }

    [[nodiscard]] std::uint32_t UsedBytes() const { return count * element_size; }

    /// Appends an element, its bytes uninitialised; null if memory runs out; the array is then unchanged.
    void* Push() {
        if (NeedsSlowPush()) [[unlikely]]
            return PushSlowly(nullptr);
        return Slot(count++);
    }

    /// Appends a copy; `source` may be one of the array's own elements.
    void* PushElement(const void* source) {
        if (NeedsSlowPush()) [[unlikely]]
            return PushSlowly(source);
        return Tessarin::CopyBytes(Slot(count++), source, element_size);
    }

    /// PushElement for elements of a known type. False if memory runs out.
    /// REQUIRES, here and below: element_size == sizeof(T)
    template <class T>
    bool PushItem(T item) {
        return TryPushItem(item) || PushSlowly(&item) != nullptr;
    }

    /// PushItem that never grows the buffer: false if there is no room.
    template <class T>
    bool TryPushItem(T item) {
        if (std::uint64_t{count} * sizeof(T) + sizeof(T) > capacity) [[unlikely]]
            return false;
        Items<T>()[count++] = item;
        return true;
    }

    template <class T>
    [[nodiscard]] T* Items() const {
        return static_cast<T*>(data);
    }

    void Resize(std::uint32_t new_count, bool zero_fill);
    void Erase(std::uint32_t index);
    void FastErase(std::uint32_t index);
    void Adapt();

private:
    /// True if the next element doesn't fit, and always for elements of size 0, whose count could overflow: subtracting
    /// 1 makes the left side wrap to the largest number.
    [[nodiscard]] bool NeedsSlowPush() const {
        return std::uint64_t{count} * element_size + element_size - 1 >= capacity;
    }

    [[gnu::noinline, gnu::cold]] void* PushSlowly(const void* source);
    bool Reallocate(std::uint32_t bytes);
};

#endif
