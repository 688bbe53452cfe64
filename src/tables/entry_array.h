// The storage of a table's entries: the index from keys to entries, followed by an array of pointers to the entries in
// their order. A table of more than 1024 entries has their order in a tree, and of the array only the first pointer.
//
//    capacity up to 8       capacity up to 1024                capacity above 1024
//
//    +---------+--------+   +-----------+---------+--------+   +-----------+-------+---------+--------+
//    | entries | unused |   |   index   | entries | unused |   |   index   | order | entries | unused |
//    +---------+--------+   +-----------+---------+--------+   +-----------+-------+---------+--------+
//                             2 * Room              Room         2 * Room                        1024
//
// A capacity up to 64 is a power of two; a larger one is any number. The index has room for the next power of two, so
// it has at least twice as many slots as there are entries, and a capacity that rises in steps of 128 seldom moves the
// storage. The capacity alone determines the layout, so the owner must remember it.

#ifndef TESSARIN_TABLES_ENTRY_ARRAY_H
#define TESSARIN_TABLES_ENTRY_ARRAY_H

#include "memory/pointer_index.h"
#include "memory/size_class_pools.h"
#include "tables/key_tree.h"
#include "tables/pair.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Tessarin {

/// A slot of the index: the address of an entry, and in its lowest bits, which alignment leaves free, a few bits of the
/// key's address. They nearly always show that a slot has another key, so that its entry isn't fetched to find out.
class EntrySlot {
public:
    EntrySlot() = default;
    explicit EntrySlot(Pair* pair) : word_(reinterpret_cast<std::uintptr_t>(pair) | TagOf(pair->key)) {}

    [[nodiscard]] bool IsFree() const { return word_ == 0; }
    [[nodiscard]] Pair* Entry() const { return reinterpret_cast<Pair*>(word_ & ~kTag); } // null for a free slot
    [[nodiscard]] bool MayHold(const void* key) const { return (word_ & kTag) == TagOf(key); }

private:
    static constexpr std::uintptr_t kTag = alignof(Pair) - 1;

    static std::uintptr_t TagOf(const void* key) {
        const auto address = reinterpret_cast<std::uintptr_t>(key);
        return (address >> 3 ^ address >> 7) & kTag;
    }

    std::uintptr_t word_ = 0;
};

static_assert(sizeof(EntrySlot) == sizeof(Pair*));

/// How the index reads the key of a slot. Entries keep their address, so their order may change without touching the
/// index.
struct EntrySlotAccess {
    static bool IsFree(const EntrySlot& slot) { return slot.IsFree(); }
    static bool MayHold(const EntrySlot& slot, const void* key) { return slot.MayHold(key); }
    static const void* KeyOf(const EntrySlot& slot) { return slot.Entry()->key; }
};

using EntryIndex = PointerIndex<EntrySlot, EntrySlotAccess>;

/// The order of many entries.
struct EntryOrder {
    KeyTree keys;         // empty while the array has the order
    Pair* last = nullptr; // the entry of the greatest key; valid while the tree isn't empty
};

/// The layout of an entry array, from its capacity.
struct EntryArray {
    static constexpr std::uint32_t kSmallestCapacity = 4;
    static constexpr std::uint32_t kLargestUnindexed = 8;
    static constexpr std::uint32_t kLargestPooled = 64;
    static constexpr std::uint32_t kLargestArray = 1024;
    static constexpr std::uint32_t kLargestCapacity = UINT32_MAX / 64; // its bytes fit wherever pointers do

    /// The capacity of an array for `wanted` entries; 0 is legal.
    static constexpr std::uint32_t CapacityFor(std::uint32_t wanted) {
        return wanted > kLargestPooled ? wanted : std::bit_ceil(std::max(wanted, kSmallestCapacity));
    }

    /// How many entries to request when an array is full. The capacities are then 4, 8, 16, 32, 64, 128, 256, and
    /// further ones in steps of 128.
    static constexpr std::uint32_t NextWanted(std::uint32_t capacity) {
        return capacity <= 128 ? capacity * 2 : capacity + 128;
    }

    /// Entries that the index has room for.
    static constexpr std::size_t Room(std::uint32_t capacity) { return std::bit_ceil(std::size_t{capacity}); }

    static constexpr std::size_t IndexSlots(std::uint32_t capacity) {
        return capacity <= kLargestUnindexed ? 0 : 2 * Room(capacity);
    }

    static constexpr bool HasOrder(std::uint32_t capacity) { return capacity > kLargestArray; }

    /// Entries that the array has room for.
    static constexpr std::size_t ArrayRoom(std::uint32_t capacity) {
        return HasOrder(capacity) ? kLargestArray : Room(capacity);
    }

    static constexpr std::uint32_t Bytes(std::uint32_t capacity) {
        return static_cast<std::uint32_t>((EntriesAt(capacity) + ArrayRoom(capacity)) * sizeof(Pair*));
    }

    static Pair** Entries(Pair** storage, std::uint32_t capacity) { return storage + EntriesAt(capacity); }

    static std::span<EntrySlot> Slots(Pair** storage, std::uint32_t capacity) {
        return {reinterpret_cast<EntrySlot*>(storage), IndexSlots(capacity)};
    }

    /// REQUIRES: the capacity has an index
    static EntryIndex Index(Pair** storage, std::uint32_t capacity) {
        return {reinterpret_cast<EntrySlot*>(storage), IndexSlots(capacity)};
    }

    /// REQUIRES: the capacity has an order
    static void* Order(Pair** storage, std::uint32_t capacity) { return storage + IndexSlots(capacity); }

private:
    static constexpr std::size_t EntriesAt(std::uint32_t capacity) {
        return IndexSlots(capacity) + (HasOrder(capacity) ? sizeof(EntryOrder) / sizeof(Pair*) : 0);
    }

    static_assert(alignof(EntryOrder) == alignof(Pair*));
};

inline constexpr SizeClass kEntryArrayClasses[] = {{EntryArray::Bytes(4), 128},
                                                   {EntryArray::Bytes(8), 32},
                                                   {EntryArray::Bytes(16), 32},
                                                   {EntryArray::Bytes(32), 8},
                                                   {EntryArray::Bytes(64), 8}};

} // namespace Tessarin

#endif
