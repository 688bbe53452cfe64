/// The allocator behind tables, entries, matrices and listener lists: blocks of one fixed size from chunks that are
/// never given back before the end. Safe from any thread.

#ifndef TESSARIN_MEMORY_BLOCK_POOL_H
#define TESSARIN_MEMORY_BLOCK_POOL_H

#include "memory/raw_vector.h"
#include "platform/critical_section.h"

#include <cstdint>

namespace Tessarin {

/// A block is either on the stack of free ones or in somebody's hands; the last one given back is the next dealt out.
/// Blocks have no header, and come uninitialised: as malloc or their last user left them.
class ObjectPool {
public:
    ObjectPool() = default;
    /// A pool with its first chunk.
    ObjectPool(std::uint32_t block_size, std::uint32_t blocks_per_chunk) { Init(block_size, blocks_per_chunk); }
    ~ObjectPool();
    ObjectPool(const ObjectPool&) = delete;
    ObjectPool& operator=(const ObjectPool&) = delete;

    /// Sets the sizes, in bytes and blocks, and fills the first chunk. False if memory ran out; Alloc then tries again.
    bool Init(std::uint32_t block_size, std::uint32_t blocks_per_chunk);

    /// A block, or null if memory ran out.
    void* Alloc();

    /// Takes a block back; null is ignored. A block that the stack has no room for is lost until the end.
    void Free(void* block);

    /// Ends every chunk, whoever holds blocks of it.
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
