// Fixed-size pools. Blocks lie back to back in chunks, without a header. Sizes aren't rounded, so blocks are aligned
// only if their size is a multiple of the alignment.
//
//     chunks       [ chunk 0, chunk 1, ... ]      each chunk is [ block | block | ... ], blocks_per_chunk of them
//     free_list    [ block, block, ..., block ]   a stack of addresses; the next block to allocate is on top
//
// Invariants:
//
//  1. A chunk's size, block_size * blocks_per_chunk, fits 32 bits.
//  2. Every chunk is in `chunks`, except that one may wait in `unlisted`. No further chunk is made while one waits, so
//     one field is enough, and no chunk is ever leaked.

#include "containers/fixed_size_pool.h"

#include "containers/growth.h"

#include <cstdlib>
#include <type_traits>

static_assert(std::is_standard_layout_v<omem>);

namespace {

/// In bytes. A pool makes few chunks, so the list of chunks may grow in small steps.
constexpr std::uint32_t kChunkListThreshold = 64;

std::uint64_t ChunkBytes(std::uint32_t block_size, std::uint32_t blocks) { return std::uint64_t{block_size} * blocks; }

} // namespace

/// A pool is created with its first chunk, so creation fails if there is no memory for blocks.
omem* omem::Create(std::uint32_t block_size, std::uint32_t blocks_per_chunk) {
    const std::uint64_t bytes = ChunkBytes(block_size, blocks_per_chunk);
    if (bytes == 0 || bytes > Tessarin::kLargestSize) return nullptr;
    auto* pool = static_cast<omem*>(std::malloc(sizeof(omem)));
    if (pool == nullptr) return nullptr;
    *pool = omem{kSignature, nullptr, nullptr, block_size, blocks_per_chunk, nullptr};
    if (pool->CreateLists() && pool->AddChunk()) return pool;
    if (pool->free_list != nullptr) farr::Destroy(pool->free_list);
    if (pool->chunks != nullptr) farr::Destroy(pool->chunks);
    std::free(pool);
    return nullptr;
}

/// The elements of both lists are addresses. The list of free blocks doubles until it has as many bytes as two chunks.
bool omem::CreateLists() {
    chunks = farr::Create(sizeof(void*));
    if (chunks == nullptr) return false;
    free_list = farr::Create(sizeof(void*));
    if (free_list == nullptr) return false;
    const std::uint64_t two_chunks = ChunkBytes(block_size, blocks_per_chunk) * 2;
    chunks->ResetThreshold(kChunkListThreshold);
    free_list->ResetThreshold(two_chunks > UINT32_MAX ? UINT32_MAX : static_cast<std::uint32_t>(two_chunks));
    return true;
}

/// A block that was freed when the list of free blocks couldn't grow counts as not freed.
std::int32_t omem::Destroy(omem* pool) {
    const std::uint32_t all_chunks = pool->chunks->count + (pool->unlisted == nullptr ? 0 : 1);
    const std::uint32_t unfreed = pool->blocks_per_chunk * all_chunks - pool->free_list->count;
    for (std::uint32_t i = 0; i < pool->chunks->count; ++i) std::free(pool->chunks->Items<void*>()[i]);
    std::free(pool->unlisted);
    farr::Destroy(pool->free_list);
    farr::Destroy(pool->chunks);
    std::free(pool);
    return static_cast<std::int32_t>(unfreed);
}

/// Makes a chunk whose blocks are all free. It succeeds even if a list can't grow: a chunk then waits in `unlisted`,
/// and a block that isn't listed is lost until Clear.
bool omem::AddChunk() {
    if (unlisted != nullptr && !chunks->PushItem(unlisted)) return false;
    unlisted = nullptr;
    void* chunk = std::malloc(static_cast<std::size_t>(ChunkBytes(block_size, blocks_per_chunk)));
    if (chunk == nullptr) return false;
    if (!chunks->PushItem(chunk)) unlisted = chunk;
    FreeBlocks(chunk);
    return true;
}

/// In ascending order, so that the highest is allocated first.
void omem::FreeBlocks(void* chunk) {
    auto* block = static_cast<unsigned char*>(chunk);
    for (std::uint32_t i = 0; i < blocks_per_chunk; ++i, block += block_size) Free(block);
}

/// The list can still be empty after AddChunk, if it had no memory for a single entry.
void* omem::AllocFromNewChunk() { return AddChunk() && HasFree() ? TakeFree() : nullptr; }

void omem::FreeIntoFullList(void* block) { free_list->PushItem(block); }

/// Blocks that callers still hold are free afterwards and will be allocated again.
void omem::Clear() {
    free_list->count = 0;
    for (std::uint32_t i = 0; i < chunks->count; ++i) FreeBlocks(chunks->Items<void*>()[i]);
    if (unlisted != nullptr) FreeBlocks(unlisted);
}

// ---------------------------------------------------------------------------------------- the exported functions

using Tessarin::IsLive;

// Each checks the handle, then calls the record's member function.

omem* omem_create(uint32_t block_size, uint32_t blocks_per_chunk) { return omem::Create(block_size, blocks_per_chunk); }

int32_t omem_destroy(omem* pool) { return IsLive(pool) ? omem::Destroy(pool) : 0; }

void* omem_alloc(omem* pool) { return IsLive(pool) ? pool->Alloc() : nullptr; }

void omem_free(omem* pool, void* block) {
    if (IsLive(pool) && block != nullptr) pool->Free(block);
}

void omem_clear(omem* pool) {
    if (IsLive(pool)) pool->Clear();
}
