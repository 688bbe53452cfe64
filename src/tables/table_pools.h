/// The rows of block pools through which growing arrays move.

#ifndef TESSARIN_TABLES_TABLE_POOLS_H
#define TESSARIN_TABLES_TABLE_POOLS_H

#include "memory/block_pool.h"
#include "memory/until_unload.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tessarin {

class Pair;

/// The entry arrays of tables. An array of more than 8 entries carries an index behind its entries (entry_index.h), and
/// above 64 it has physical room for the next power of two, so that the steps of 128 in which its capacity rises
/// seldom move it. All of that follows from the capacity, which the owner must remember.
class KeyPools {
public:
    static constexpr std::uint32_t kSmallestCapacity = 4;
    static constexpr std::uint32_t kLargestClass = 64;
    static constexpr std::uint32_t kLargestUnindexed = 8;
    static constexpr std::uint32_t kLargestCapacity = UINT32_MAX / 64; // its bytes fit wherever pointers do

    KeyPools();

    /// Storage for `wanted` entries; 0 is legal and yields the smallest class.
    /// capacity  takes the entries that fit
    /// returns   null if memory ran out
    Pair** Acquire(std::uint32_t wanted, std::uint32_t& capacity);

    /// Takes storage back; null is ignored.
    void Release(Pair** entries, std::uint32_t capacity);

    /// Entries that the storage of an array of that capacity has room for: the classes are powers of two themselves.
    static std::size_t Room(std::uint32_t capacity) { return std::bit_ceil(std::size_t{capacity}); }

    /// Slots of the index behind the entries.
    static std::size_t IndexSlots(std::uint32_t capacity) {
        return capacity <= kLargestUnindexed ? 0 : 2 * Room(capacity);
    }

private:
    static constexpr std::size_t kClasses = 5;

    static std::size_t Bytes(std::uint32_t capacity) { return (Room(capacity) + IndexSlots(capacity)) * sizeof(Pair*); }
    static std::size_t ClassOf(std::uint32_t capacity);

    ObjectPool pools_[kClasses];
};

/// The listener sets, and the delegate vectors in a row of classes for each of the three kinds of listener.
class ListenerPools {
public:
    static constexpr std::size_t kKinds = 3;
    static constexpr std::size_t kClasses = 4;
    static constexpr std::uint32_t kCapacities[kClasses] = {4, 16, 32, 64};

    ListenerPools();

    /// Storage for `capacity` delegates, one of the classes or any number above the largest, from the row of a kind.
    void* Acquire(std::size_t kind, std::uint32_t capacity);
    void Release(std::size_t kind, void* delegates, std::uint32_t capacity);

    ObjectPool sets;

private:
    /// The pool of a class, or null for what comes from the heap.
    ObjectPool* PoolOf(std::size_t kind, std::uint32_t capacity);

    ObjectPool vectors_[kKinds][kClasses];
};

/// What tables and their entries are made of, one pool an object type.
struct TablePools {
    TablePools();

    ObjectPool tables;
    KeyPools keys;
    ObjectPool pairs;
    ObjectPool matrices;
};

extern UntilUnload<ListenerPools> listener_pools;
extern UntilUnload<TablePools> table_pools;

} // namespace Tessarin

#endif
