// The allocator of tables, entries, matrices and listener lists: blocks of one fixed size, cut from chunks that aren't
// returned to the heap before the end. Safe from any thread.
//
//    chunks_                     a chunk: blocks_per_chunk_ blocks, one malloc
//    +---+                       +-------+-------+-------+-------+
//    | *-|---------------------> |       |       |       |       |
//    +---+                       +-------+-------+-------+-------+
//    | *-|--> another                ^               ^
//    +---+                           |               |
//    free_blocks_            ...   +-|-+           +-|-+   top: the next to be handed out
//                                  | * |           | * |
//                                  +---+           +---+
//
// Invariants:
//  1. A block is either on the stack of free blocks or in use. The pool doesn't check this: a block that is freed twice
//     is handed out twice.
//  2. Blocks have no header and are uninitialised: they have the bytes that malloc or their last user left.
//  3. A pool never shrinks. The common path is a lock, a few loads and stores, and an unlock.

#ifndef TESSARIN_MEMORY_BLOCK_POOL_H
#define TESSARIN_MEMORY_BLOCK_POOL_H

#include "memory/raw_vector.h"
#include "platform/critical_section.h"

#include <cstdint>

namespace Tessarin {

/// The block that was freed last is handed out next; the blocks of a new chunk are handed out from its end downwards.
class ObjectPool {
public:
    ObjectPool() = default;
    /// A pool with its first chunk.
    ObjectPool(std::uint32_t block_size, std::uint32_t blocks_per_chunk) { Init(block_size, blocks_per_chunk); }
    ~ObjectPool();
    ObjectPool(const ObjectPool&) = delete;
    ObjectPool& operator=(const ObjectPool&) = delete;

    /// Sets the block size in bytes and the blocks per chunk, and makes the first chunk. False if memory ran out; Alloc
    /// then tries again.
    bool Init(std::uint32_t block_size, std::uint32_t blocks_per_chunk);

    /// A block, or null if memory ran out.
    void* Alloc();

    /// Frees a block; null is ignored. If the stack of free blocks can't grow, the block is lost until the end.
    void Free(void* block);

    /// Frees every chunk, even if blocks of it are in use.
    void ReleaseChunks();

private:
    bool FillChunk();
    void PushFree(void* block);

    std::uint32_t block_size_ = 0;
    std::uint32_t blocks_per_chunk_ = 0;
    RawVector chunks_;
    RawVector free_blocks_;
    CriticalSection lock_; // guards both vectors
};

} // namespace Tessarin

#endif
