// A list that grows without moving its items: for the lists of a load that have an item for each entry of the file.
// List would take up to twice the storage, and leave holes in the heap where its earlier storage was.
//
// Only the first chunk grows, until it has the size of the others, so that a small file takes little. The others are so
// large that heaps map and unmap them apart: what one list has freed isn't resident while the next one is filled.

#ifndef TESSARIN_MEMORY_CHUNKED_LIST_H
#define TESSARIN_MEMORY_CHUNKED_LIST_H

#include "memory/checked_allocation.h"
#include "memory/list.h"
#include "memory/sizes.h"

#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace Tessarin {

/// Invariant: all chunks but the last are full; there is room for `capacity_` items.
template <class T>
class ChunkedList {
public:
    static_assert(std::is_trivially_copyable_v<T>);

    ChunkedList() = default;
    ~ChunkedList() {
        for (T* chunk : chunks_) std::free(chunk);
    }
    ChunkedList(const ChunkedList&) = delete;
    ChunkedList& operator=(const ChunkedList&) = delete;

    /// False if memory runs out; the list is then unchanged.
    [[nodiscard]] bool Push(T item) {
        if (count_ == capacity_ && !AddRoom()) [[unlikely]]
            return false;
        (*this)[count_++] = item;
        return true;
    }

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    T& operator[](std::uint32_t index) { return chunks_[index / kChunkItems][index % kChunkItems]; }
    const T& operator[](std::uint32_t index) const { return chunks_[index / kChunkItems][index % kChunkItems]; }

private:
    static constexpr std::uint32_t kFirstItems = OrSmall(256U, 1U);
    static constexpr std::uint32_t kChunkItems = OrSmall(32768U, 2U); // usually at least 128 KB

    [[gnu::noinline]] bool AddRoom() {
        return capacity_ % kChunkItems == 0 && capacity_ != 0 ? AddChunk() : GrowFirst();
    }

    bool AddChunk() {
        auto* chunk = static_cast<T*>(AllocateArray(kChunkItems, sizeof(T)));
        if (chunk == nullptr || !chunks_.Push(chunk)) {
            std::free(chunk);
            return false;
        }
        capacity_ += kChunkItems;
        return true;
    }

    bool GrowFirst() {
        if (chunks_.IsEmpty() && !chunks_.Push(nullptr)) return false;
        const std::uint32_t items = capacity_ == 0 ? kFirstItems : capacity_ * 2;
        auto* grown = static_cast<T*>(std::realloc(chunks_[0], items * sizeof(T)));
        if (grown == nullptr) return false;
        chunks_[0] = grown;
        capacity_ = items;
        return true;
    }

    List<T*> chunks_;
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace Tessarin

#endif
