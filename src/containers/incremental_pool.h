// The record that the imem_ functions work on: a bump allocator whose memory can only be freed all at once.

#ifndef TESSARIN_CONTAINERS_INCREMENTAL_POOL_H
#define TESSARIN_CONTAINERS_INCREMENTAL_POOL_H

#include "containers/handle.h"
#include "tessarin/containers.h"

#include <cstdint>

namespace Tessarin {

/// The header of a chunk; the data area directly follows it in the same malloc block.
struct IncrementalChunk {
    IncrementalChunk* next; // the chunk made before this one, or null
    std::uint32_t capacity; // bytes of the data area
    std::uint32_t used;     // bytes allocated, never above capacity
    unsigned char* data;

    [[nodiscard]] static IncrementalChunk* Create(std::uint32_t capacity, IncrementalChunk* next);
};

} // namespace Tessarin

/// The order of the fields is fixed. Only the newest chunk is allocated from: free bytes in an older chunk stay unused.
/// Threads: one at a time per pool.
struct imem {
    static constexpr std::uint32_t kSignature = Tessarin::kIncrementalPoolSignature;

    std::uint32_t signature;
    std::uint32_t chunk_size; // bytes of a data area, and the largest request
    Tessarin::IncrementalChunk* current;

    /// Null if memory runs out or for a size of 0.
    [[nodiscard]] static imem* Create(std::uint32_t chunk_size);
    static void Destroy(imem* pool);

    /// Null if memory runs out, or if the size is 0 or above chunk_size.
    void* Alloc(std::uint32_t size) {
        // A size of 0 wraps to the largest number, so it takes this branch too. A size that fits in the chunk is never
        // above chunk_size.
        if (size - 1 >= current->capacity - current->used) [[unlikely]]
            return AllocFromNewChunk(size);
        void* bytes = current->data + current->used;
        current->used += size;
        return bytes;
    }

private:
    [[gnu::noinline, gnu::cold]] void* AllocFromNewChunk(std::uint32_t size);
};

#endif
