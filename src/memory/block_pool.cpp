// The addresses of chunks and of free blocks are in two vectors under one lock. A new chunk's blocks are pushed in
// ascending order, so its last block is handed out first.

#include "memory/block_pool.h"

#include "memory/poison.h"

#include <mutex>

namespace Tessarin {

ObjectPool::~ObjectPool() {
    ReleaseChunks();
    free_blocks_.Release();
    chunks_.Release();
}

bool ObjectPool::Init(std::uint32_t block_size, std::uint32_t blocks_per_chunk) {
    block_size_ = block_size;
    blocks_per_chunk_ = blocks_per_chunk;
    const bool chunks_ready = chunks_.Reset(sizeof(void*));
    const bool stack_ready =
        free_blocks_.Reset(sizeof(void*)); // even if the first failed: both need their element size
    return chunks_ready && stack_ready && FillChunk();
}

void* ObjectPool::Alloc() {
    const std::lock_guard guard(lock_);
    if (free_blocks_.count == 0 && (!FillChunk() || free_blocks_.count == 0)) return nullptr;
    void* block = static_cast<void**>(free_blocks_.data)[--free_blocks_.count];
    Unpoison(block, block_size_);
    return block;
}

void ObjectPool::Free(void* block) {
    if (block == nullptr) return;
    const std::lock_guard guard(lock_);
    PushFree(block);
}

void ObjectPool::ReleaseChunks() {
    for (std::uint32_t i = 0; i < chunks_.count; ++i) std::free(static_cast<void**>(chunks_.data)[i]);
    chunks_.count = 0;
    free_blocks_.count = 0;
}

/// The caller holds the lock, or the pool isn't in use yet. If a chunk's address can't be recorded, the chunk is used
/// all the same, but it is never freed.
bool ObjectPool::FillChunk() {
    void* chunk = std::malloc(std::size_t{block_size_} * blocks_per_chunk_);
    if (chunk == nullptr) return false;
    chunks_.Push(&chunk);
    auto* block = static_cast<unsigned char*>(chunk);
    for (std::uint32_t i = 0; i < blocks_per_chunk_; ++i, block += block_size_) PushFree(block);
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): if neither vector can grow the chunk is lost, as documented
    return true;
}

/// Poisons the block even if it is lost.
void ObjectPool::PushFree(void* block) {
    Poison(block, block_size_);
    if (free_blocks_.count == free_blocks_.capacity && !free_blocks_.GrowForOne()) return;
    static_cast<void**>(free_blocks_.data)[free_blocks_.count++] = block;
}

} // namespace Tessarin
