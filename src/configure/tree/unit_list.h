// The Units of an edited table or array, in order, each at a slot:
//
//     slots     a | b | - | d | e | room         b and d: GetCount 4, At(2) is d; `-` is a gap, where c was removed
//     index     0   1       3   4
//
// Invariants:
//  1. A Unit's `index` is its slot. The last used slot has a Unit.
//  2. In a list of up to 64 slots a removal moves the Units after it. In a longer one it leaves a gap, and SlotCounts
//     counts the Units; a list has that object only while it may have gaps.
//  3. Gaps are closed when they are more than half of the used slots, or when there is no room for another Unit. So
//     each operation takes about the same time wherever it is in the list, and memory doesn't grow with removals.
//  4. The first Unit is in the object itself, as most containers of a deep nest have just one. From the second one on
//     the slots are in a heap block, after the address of the counts.

#ifndef TESSARIN_CONFIGURE_TREE_UNIT_LIST_H
#define TESSARIN_CONFIGURE_TREE_UNIT_LIST_H

#include "configure/tree/slot_counts.h"
#include "memory/checked_allocation.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

namespace Configure {

/// The Units aren't owned. `Unit` has a field `index`, which belongs to the list.
template <class Unit>
class UnitList {
public:
    UnitList() = default;
    ~UnitList() {
        if (capacity_ == 1) return;
        delete Counts();
        std::free(block_);
    }
    UnitList(const UnitList&) = delete;
    UnitList& operator=(const UnitList&) = delete;

    [[nodiscard]] std::uint32_t Count() const {
        const SlotCounts* const counts = Counts();
        return counts == nullptr ? used_ : counts->Total();
    }

    /// The slots in use; those that are null are gaps.
    [[nodiscard]] Unit* const* begin() const { return Slots(); }
    [[nodiscard]] Unit* const* end() const { return Slots() + used_; }

    [[nodiscard]] bool Has(const Unit& unit) const { return unit.index < used_ && Slots()[unit.index] == &unit; }

    /// The Unit at a position; null after the last.
    [[nodiscard]] Unit* At(std::uint32_t position) const {
        const SlotCounts* const counts = Counts();
        if (counts == nullptr) return position < used_ ? Slots()[position] : nullptr;
        if (position >= counts->Total()) return nullptr;
        Unit* const* slot = Slots() + counts->BlockWith(position);
        for (;; ++slot) {
            if (*slot != nullptr && position-- == 0) return *slot;
        }
    }

    /// The Unit after one of the list's Units; null after the last.
    [[nodiscard]] Unit* After(const Unit& unit) const {
        const std::uint32_t block_end =
            unit.index / SlotCounts::kBlockSlots * SlotCounts::kBlockSlots + SlotCounts::kBlockSlots;
        const std::uint32_t end = std::min(block_end, used_);
        for (std::uint32_t slot = unit.index + 1; slot < end; ++slot) {
            if (Slots()[slot] != nullptr) return Slots()[slot];
        }
        if (end == used_) return nullptr;
        const SlotCounts* const counts = Counts();
        return counts == nullptr ? Slots()[end] : At(counts->ThroughBlockOf(unit.index));
    }

    /// Makes room for `count` Units. False if memory runs out. REQUIRES: the list is empty
    [[nodiscard]] bool Reserve(std::uint32_t count) { return count <= capacity_ || Grow(count); }

    /// Appends a Unit. False if memory runs out; nothing has then changed that can be seen.
    [[nodiscard]] bool Push(Unit* unit) {
        if (used_ == Room() && !MakeRoom()) return false;
        if (SlotCounts* const counts = Counts()) counts->Add(used_);
        unit->index = used_;
        Slots()[used_++] = unit;
        return true;
    }

    /// Removes a Unit. Returns the one that has taken its place; null if it was the last. Never fails: where memory
    /// runs out for the counts, later Units are moved. REQUIRES: the list has the Unit
    Unit* Remove(const Unit& unit) {
        Unit* const after = After(unit);
        const std::uint32_t slot = unit.index;
        if (after != nullptr && !StartCounts()) {
            Close(slot);
            return after;
        }
        Slots()[slot] = nullptr;
        if (SlotCounts* const counts = Counts()) counts->Subtract(slot);
        while (used_ != 0 && Slots()[used_ - 1] == nullptr) --used_;
        if (Count() < used_ / 2 || used_ == 0) CloseAll();
        return after;
    }

private:
    /// REQUIRES: there is a heap block
    [[nodiscard]] SlotCounts*& CountsInBlock() const { return *static_cast<SlotCounts**>(block_); }
    [[nodiscard]] SlotCounts* Counts() const { return capacity_ == 1 ? nullptr : CountsInBlock(); }
    [[nodiscard]] Unit** Slots() const {
        return capacity_ == 1 ? const_cast<Unit**>(&only_) : static_cast<Unit**>(block_) + 1;
    }

    /// The number of slots that can be used before gaps are closed, or the block grows.
    [[nodiscard]] std::uint32_t Room() const {
        const SlotCounts* const counts = Counts();
        return counts == nullptr ? capacity_ : counts->Slots();
    }

    /// Makes sure that there are counts, if the list is long. False if it is short, or if memory runs out.
    /// They are for twice the used slots, not for the whole block, which may have held far more Units before.
    [[nodiscard]] bool StartCounts() {
        if (Counts() != nullptr) return true;
        if (used_ <= kShort) return false;
        auto* const counts = new (std::nothrow) SlotCounts;
        const bool made =
            counts != nullptr &&
            counts->Make(static_cast<std::uint32_t>(std::min<std::uint64_t>(capacity_, std::uint64_t{used_} * 2)),
                         used_);
        if (made) {
            CountsInBlock() = counts;
        } else {
            delete counts;
        }
        return made;
    }

    /// Closes the gap at a slot by moving the later Units, when there are no counts.
    void Close(std::uint32_t slot) {
        --used_;
        for (; slot != used_; ++slot) Place(slot, Slots()[slot + 1]);
    }

    /// Closes all gaps.
    void CloseAll() {
        std::uint32_t count = 0;
        for (std::uint32_t slot = 0; slot != used_; ++slot) {
            if (Unit* const unit = Slots()[slot]) Place(count++, unit);
        }
        used_ = count;
        if (capacity_ > 1) delete std::exchange(CountsInBlock(), nullptr);
    }

    void Place(std::uint32_t slot, Unit* unit) {
        Slots()[slot] = unit;
        unit->index = slot;
    }

    /// Closes the gaps, and lets the block grow if that hasn't made a quarter of it free.
    [[gnu::noinline]] bool MakeRoom() {
        CloseAll();
        if (used_ < capacity_ - capacity_ / 4) return true;
        return (capacity_ <= UINT32_MAX / 2 && Grow(capacity_ * 2)) || used_ < capacity_;
    }

    /// REQUIRES: there are no counts, and `capacity` is more than 1 and more than before
    [[nodiscard]] bool Grow(std::uint32_t capacity) {
        if (capacity >= PTRDIFF_MAX / sizeof(Unit*)) return false;
        void* const grown =
            std::realloc(capacity_ == 1 ? nullptr : block_, (std::size_t{capacity} + 1) * sizeof(Unit*));
        if (grown == nullptr) return false;
        if (capacity_ == 1) {
            Unit* const only = only_;
            *static_cast<SlotCounts**>(grown) = nullptr;
            static_cast<Unit**>(grown)[1] = only;
        }
        block_ = grown;
        capacity_ = capacity;
        return true;
    }

    static constexpr std::uint32_t kShort = 64;

    union {
        Unit* only_ = nullptr; // if capacity_ is 1
        void* block_;          // otherwise
    };
    std::uint32_t used_ = 0;
    std::uint32_t capacity_ = 1;
};

} // namespace Configure

#endif
