#include "tables/table_pools.h"

#include "memory/checked_allocation.h"
#include "tables/listeners.h"
#include "tables/table.h"

#include <cstdlib>

namespace Tessarin {

// Blocks are as large as the objects that they hold; where pointers have 32 bits these are the sizes.
static_assert(sizeof(void*) != 4 || (sizeof(Table) == 32 && sizeof(Pair) == 40 && sizeof(ListenerSet) == 36));

TablePools::TablePools() : tables(sizeof(Table), 64), pairs(sizeof(Pair), 256), matrices(sizeof(Float4x4), 64) {}

KeyPools::KeyPools() { // GCOVR_EXCL_LINE: the way out of an exception, which nothing throws
    constexpr std::uint32_t kBlocksPerChunk[kClasses] = {128, 32, 32, 8, 8};
    for (std::size_t i = 0; i < kClasses; ++i) {
        std::uint32_t capacity = kSmallestCapacity << i;
        pools_[i].Init(static_cast<std::uint32_t>(Bytes(capacity)), kBlocksPerChunk[i]);
    }
}

/// The smallest class that holds `capacity` entries. REQUIRES: no more than the largest holds
std::size_t KeyPools::ClassOf(std::uint32_t capacity) {
    std::size_t its_class = 0;
    while (capacity > kSmallestCapacity << its_class) ++its_class;
    return its_class;
}

Pair** KeyPools::Acquire(std::uint32_t wanted, std::uint32_t& capacity) {
    if (wanted > kLargestClass) {
        if (wanted > kLargestCapacity) return nullptr;
        capacity = wanted;
        return static_cast<Pair**>(std::malloc(Bytes(wanted)));
    }
    std::size_t its_class = ClassOf(wanted);
    capacity = kSmallestCapacity << its_class;
    return static_cast<Pair**>(pools_[its_class].Alloc());
}

void KeyPools::Release(Pair** entries, std::uint32_t capacity) {
    if (capacity > kLargestClass) {
        std::free(entries);
    } else {
        pools_[ClassOf(capacity)].Free(entries);
    }
}

ListenerPools::ListenerPools() {
    constexpr std::uint32_t kBlocksPerChunk[kClasses] = {128, 32, 8, 8};
    sets.Init(sizeof(ListenerSet), 64);
    for (auto& row : vectors_) {
        for (std::size_t i = 0; i < kClasses; ++i) {
            row[i].Init(static_cast<std::uint32_t>(kCapacities[i] * sizeof(Delegate)), kBlocksPerChunk[i]);
        }
    }
}

ObjectPool* ListenerPools::PoolOf(std::size_t kind, std::uint32_t capacity) {
    for (std::size_t i = 0; i < kClasses; ++i) {
        if (capacity == kCapacities[i]) return &vectors_[kind][i];
    }
    return nullptr;
}

void* ListenerPools::Acquire(std::size_t kind, std::uint32_t capacity) {
    ObjectPool* pool = PoolOf(kind, capacity);
    if (pool != nullptr) return pool->Alloc();
    return AllocateArray(capacity, sizeof(Delegate));
}

void ListenerPools::Release(std::size_t kind, void* delegates, std::uint32_t capacity) {
    if (ObjectPool* pool = PoolOf(kind, capacity)) {
        pool->Free(delegates);
    } else {
        std::free(delegates);
    }
}

} // namespace Tessarin
