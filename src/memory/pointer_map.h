// A map from addresses to small values that owns its memory and only grows: a pointer index with its slots.

#ifndef TESSARIN_MEMORY_POINTER_MAP_H
#define TESSARIN_MEMORY_POINTER_MAP_H

#include "memory/list.h"
#include "memory/pointer_index.h"
#include "memory/sizes.h"

#include <cstdint>
#include <utility>

namespace Tessarin {

/// kFirstSlots  the number of slots that the first key allocates, a power of two
/// Invariant: half of the slots are free at least, or there are none.
template <class Value, std::uint32_t kFirstSlots = OrSmall(64U, 2U)>
class PointerMap {
public:
    struct Slot {
        const void* key; // null in a free slot
        Value value;
    };

    /// The slot of a key. If the key is new, the slot is free, and the caller may take it, by Take, before anything
    /// else is done with the map. Null if memory runs out. REQUIRES: the key isn't null
    [[nodiscard]] Slot* At(const void* key) {
        if (count_ >= slots_.Count() / 2 && !Grow()) return nullptr;
        return Index(slots_.begin(), slots_.Count()).Find(key);
    }
    /// The value of a key; null if it isn't in the map. REQUIRES: the key isn't null
    [[nodiscard]] const Value* Find(const void* key) {
        if (count_ == 0) return nullptr;
        const Slot* slot = Index(slots_.begin(), slots_.Count()).Find(key);
        return Access::IsFree(*slot) ? nullptr : &slot->value;
    }
    void Take(Slot& slot, const void* key, Value value) {
        slot = {key, value};
        ++count_;
    }

private:
    struct Access {
        static bool IsFree(const Slot& slot) { return slot.key == nullptr; }
        static const void* KeyOf(const Slot& slot) { return slot.key; }
    };
    using Index = PointerIndex<Slot, Access>;

    bool Grow() {
        if (slots_.Count() > UINT32_MAX / 2) return false;
        List<Slot> grown;
        if (!grown.Make(slots_.IsEmpty() ? kFirstSlots : slots_.Count() * 2)) return false;
        Index index(grown.begin(), grown.Count());
        for (const Slot& slot : slots_) {
            if (!Access::IsFree(slot)) index.Insert(slot);
        }
        slots_.Swap(grown);
        return true;
    }

    List<Slot> slots_; // their number is a power of two, or 0
    std::uint32_t count_ = 0;
};

} // namespace Tessarin

#endif
