// The record that the omem_ functions work on: a pool of blocks of one fixed size, reused last-in, first-out. The
// library itself calls the member functions, which don't check the handle. Tables use another kind of pool:
// memory/block_pool.h.

#ifndef TESSARIN_CONTAINERS_FIXED_SIZE_POOL_H
#define TESSARIN_CONTAINERS_FIXED_SIZE_POOL_H

#include "containers/flat_array.h"

#include <cstdint>

/// The order of the first five fields is fixed. A block is free if and only if `free_list` has its address.
/// Threads: one at a time per pool.
struct omem {
    static constexpr std::uint32_t kSignature = Tessarin::kFixedSizePoolSignature;

    std::uint32_t signature;
    farr* chunks;    // void*: the blocks from malloc, the oldest first
    farr* free_list; // void*: a stack, the next block to allocate on top
    std::uint32_t block_size;
    std::uint32_t blocks_per_chunk;
    void* unlisted; // a chunk that `chunks` had no room for, or null; owned by the pool like the others

    /// Null if memory runs out, if either argument is 0, or if the size of a chunk would exceed 32 bits.
    [[nodiscard]] static omem* Create(std::uint32_t block_size, std::uint32_t blocks_per_chunk);

    /// returns  the number of blocks that weren't freed
    static std::int32_t Destroy(omem* pool);

    /// Null if memory runs out.
    void* Alloc() {
        if (!HasFree()) [[unlikely]]
            return AllocFromNewChunk();
        return TakeFree();
    }

    [[nodiscard]] bool HasFree() const { return free_list->count != 0; }

    /// REQUIRES: HasFree()
    void* TakeFree() { return free_list->Items<void*>()[--free_list->count]; }

    /// If the list of free blocks has to grow and can't, the block is lost until Clear or Destroy.
    void Free(void* block) {
        if (!free_list->TryPushItem(block)) [[unlikely]]
            FreeIntoFullList(block);
    }

    void Clear();

private:
    // Not inlined, so that the usual case needs neither a stack frame nor saved registers.
    [[gnu::noinline, gnu::cold]] void* AllocFromNewChunk();
    [[gnu::noinline, gnu::cold]] void FreeIntoFullList(void* block);
    bool CreateLists();
    bool AddChunk();
    void FreeBlocks(void* chunk);
};

#endif
