// An index by address: of a table's entries by their interned keys, and of texts' offsets in a file. Open addressing
// with linear probing, over slots that the owner provides; pointer_map.h has an index that owns its slots.
//
//      home(key)              key A, B and C have the same home; D's was taken by C
//          v
//    +---+---+---+---+---+---+---+---+
//    |   | A | B | C | D |   | E |   |      a probe moves right from its home, wraps at the end,
//    +---+---+---+---+---+---+---+---+      and stops at its key or at a free slot
//
// Invariants:
//  1. The number of slots is a power of two, and the owner keeps at least half of them free, so every probe ends soon.
//  2. No slot between a key's home and its slot is free. Erase closes the gap that it makes to keep this true.
//
// The owner decides what a slot is and how its key is found, by a class `Access` with
//
//    static bool IsFree(const Slot& slot);          // true for a value-initialised slot
//    static const void* KeyOf(const Slot& slot);    // of a slot that isn't free

#ifndef TESSARIN_MEMORY_POINTER_INDEX_H
#define TESSARIN_MEMORY_POINTER_INDEX_H

#include "platform/process_secret.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tessarin {

/// A hash of an address whose highest bits are the best. Neighbouring addresses differ in their low bits; each
/// multiplication carries differences to the top, and the shift brings them down for the second one.
///
/// Interned texts lie back to back, so whoever writes a document chooses the differences of its keys' addresses. One
/// multiplication keeps differences: keys could be chosen that fill one run of slots, whose probes take the square of
/// their number. So there are two, by factors that nobody outside knows, with the shift between them, which isn't
/// linear.
inline std::uint64_t HashOfPointer(const void* pointer) {
    const std::uint64_t(&factors)[2] = process_secret.pointer_factors;
    const std::uint64_t product = std::uint64_t{reinterpret_cast<std::uintptr_t>(pointer)} * factors[0];
    return (product ^ product >> 32) * factors[1];
}

/// A view of the slots, cheap to make for one operation.
template <class Slot, class Access>
class PointerIndex {
public:
    /// REQUIRES: `slot_count` is a power of two above 1
    PointerIndex(Slot* slots, std::size_t slot_count)
        : slots_(slots), mask_(slot_count - 1), shift_(static_cast<unsigned>(64 - std::countr_zero(slot_count))) {}

    /// The slot of a key, or the free slot that the key would get. REQUIRES: a slot is free
    [[nodiscard]] Slot* Find(const void* key) const {
        std::size_t i = Home(key);
        while (!Access::IsFree(slots_[i]) && !Holds(slots_[i], key)) i = Next(i);
        return slots_ + i;
    }

    /// REQUIRES: the key isn't there yet
    void Insert(const Slot& slot) {
        std::size_t i = Home(Access::KeyOf(slot));
        while (!Access::IsFree(slots_[i])) i = Next(i);
        slots_[i] = slot;
    }

    /// Frees the slot of a key and closes the gap: a slot that a probe would no longer reach is moved back into it.
    /// REQUIRES: the key is there
    void Erase(const void* key) {
        auto gap = static_cast<std::size_t>(Find(key) - slots_);
        for (std::size_t i = Next(gap); !Access::IsFree(slots_[i]); i = Next(i)) {
            const std::size_t from_home = (i - Home(Access::KeyOf(slots_[i]))) & mask_;
            if (from_home >= ((i - gap) & mask_)) {
                slots_[gap] = slots_[i];
                gap = i;
            }
        }
        slots_[gap] = Slot{};
    }

    void Clear() { std::fill_n(slots_, mask_ + 1, Slot{}); }

private:
    static bool Holds(const Slot& slot, const void* key) {
        if constexpr (requires { Access::MayHold(slot, key); }) {
            if (!Access::MayHold(slot, key)) return false;
        }
        return Access::KeyOf(slot) == key;
    }

    [[nodiscard]] std::size_t Home(const void* key) const {
        return static_cast<std::size_t>(HashOfPointer(key) >> shift_);
    }

    [[nodiscard]] std::size_t Next(std::size_t i) const { return (i + 1) & mask_; }

    Slot* slots_;
    std::size_t mask_;
    unsigned shift_;
};

} // namespace Tessarin

#endif
