// A list that grows without moving its items: for the one list of a load that has an item for each entry of the file.
// List would take up to twice the storage, and leave holes in the heap where its earlier storage was.

#ifndef TESSARIN_MEMORY_CHUNKED_LIST_H
#define TESSARIN_MEMORY_CHUNKED_LIST_H

#include "memory/checked_allocation.h"
#include "memory/list.h"
#include "memory/sizes.h"

#include <cstdint>
#include <cstdlib>
#include <type_traits>

namespace Tessarin {

/// Invariant: all chunks but the last are full.
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
        if (count_ == chunks_.Count() * kChunkItems && !AddChunk()) [[unlikely]]
            return false;
        chunks_.Top()[count_++ % kChunkItems] = item;
        return true;
    }

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    T& operator[](std::uint32_t index) { return chunks_[index / kChunkItems][index % kChunkItems]; }
    const T& operator[](std::uint32_t index) const { return chunks_[index / kChunkItems][index % kChunkItems]; }

private:
    static constexpr std::uint32_t kChunkItems = OrSmall(4096U, 2U);

    [[gnu::noinline]] bool AddChunk() {
        auto* chunk = static_cast<T*>(AllocateArray(kChunkItems, sizeof(T)));
        if (chunk != nullptr && chunks_.Push(chunk)) return true;
        std::free(chunk);
        return false;
    }

    List<T*> chunks_;
    std::uint32_t count_ = 0;
};

} // namespace Tessarin

#endif
