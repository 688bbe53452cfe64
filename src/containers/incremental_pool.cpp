// Incremental pools: a bump allocator over a list of chunks of one size.
//
//     current --> [ header | used ... | free ... ] --next--> [ header | used ... | unused rest ] --next--> null
//
// Invariants:
//
//  1. There is always a current chunk, and used <= capacity in each chunk.
//  2. Allocations lie back to back, unaligned: a host that needs alignment must ask for sizes that keep it.
//  3. Only the current chunk is allocated from. The rest of an older one stays unused, so no allocation searches.

#include "containers/incremental_pool.h"

#include <cstdlib>
#include <type_traits>

using Tessarin::IncrementalChunk;
using Tessarin::IsLive;

static_assert(std::is_standard_layout_v<imem> && std::is_standard_layout_v<IncrementalChunk>);
static_assert(sizeof(IncrementalChunk) == 2 * sizeof(void*) + 2 * sizeof(std::uint32_t)); // nothing before the data

/// The sum needs 64 bits: the capacity may be the largest 32-bit number.
IncrementalChunk* IncrementalChunk::Create(std::uint32_t capacity, IncrementalChunk* next) {
    const std::uint64_t bytes = std::uint64_t{sizeof(IncrementalChunk)} + capacity;
    if (bytes > SIZE_MAX) return nullptr;
    auto* chunk = static_cast<IncrementalChunk*>(std::malloc(static_cast<std::size_t>(bytes)));
    if (chunk == nullptr) return nullptr;
    *chunk = IncrementalChunk{next, capacity, 0, reinterpret_cast<unsigned char*>(chunk + 1)};
    return chunk;
}

imem* imem::Create(std::uint32_t chunk_size) {
    if (chunk_size == 0) return nullptr;
    auto* pool = static_cast<imem*>(std::malloc(sizeof(imem)));
    if (pool == nullptr) return nullptr;
    *pool = imem{kSignature, chunk_size, IncrementalChunk::Create(chunk_size, nullptr)};
    if (pool->current != nullptr) return pool;
    std::free(pool);
    return nullptr;
}

void imem::Destroy(imem* pool) {
    for (IncrementalChunk* chunk = pool->current; chunk != nullptr;) {
        IncrementalChunk* next = chunk->next;
        std::free(chunk);
        chunk = next;
    }
    std::free(pool);
}

/// If memory runs out, the old chunk stays current, and smaller requests may still fit in it.
void* imem::AllocFromNewChunk(std::uint32_t size) {
    if (size == 0 || size > chunk_size) return nullptr;
    IncrementalChunk* chunk = IncrementalChunk::Create(chunk_size, current);
    if (chunk == nullptr) return nullptr;
    current = chunk;
    chunk->used = size;
    return chunk->data;
}

// ---------------------------------------------------------------------------------------- the exported functions

imem* imem_create(uint32_t chunk_size) { return imem::Create(chunk_size); }

void imem_destroy(imem* pool) {
    if (IsLive(pool)) imem::Destroy(pool);
}

void* imem_alloc(imem* pool, uint32_t size) { return IsLive(pool) ? pool->Alloc(size) : nullptr; }
