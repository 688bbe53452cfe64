// An index of a table's Units by the text of their keys: a hash index with open addressing, over the hash of the text
// in lower case.

#ifndef TESSARIN_CONFIGURE_TREE_KEY_INDEX_H
#define TESSARIN_CONFIGURE_TREE_KEY_INDEX_H

#include "strings/string_hash.h"
#include "strings/string_table.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Configure {

/// The index of one table; the slots belong to its file. A free slot is 0. Another slot holds a Unit's number, counted
/// from 1, and above it the hash bits that the slot's position doesn't contain. So a search reads a Unit only if it is
/// almost certainly the right one.
class KeyIndex {
public:
    /// The number of slots for a table of `count` Units: at most two thirds of the slots are taken.
    [[nodiscard]] static std::uint32_t SlotsFor(std::uint32_t count) {
        return count == 0 ? 0 : std::bit_ceil(count + count / 2 + 1);
    }

    /// Adds all Units. Of several Units with one key only the first can be found.
    /// REQUIRES: SlotsFor(count) slots, all 0, and the keys interned
    template <class Unit>
    void Build(std::uint32_t* slots, const Unit* units, std::uint32_t count) {
        if (count == 0) return;
        slots_ = slots;
        bits_ = static_cast<std::uint32_t>(std::countr_zero(SlotsFor(count)));
        for (std::uint32_t number = 1; number <= count; ++number) {
            const cstr key = units[number - 1].key;
            const std::uint32_t hash = Hash(key, Tessarin::CstrLength(key));
            std::uint32_t place = hash >> (32 - bits_);
            // A key that is already in the index is skipped: equal keys would fill adjacent slots, and each would have
            // to pass all of them.
            while (slots[place] != 0 && !(HasTag(slots[place], hash) && units[NumberIn(slots[place]) - 1].key == key)) {
                place = (place + 1) & Mask();
            }
            if (slots[place] == 0) slots[place] = hash << bits_ | number;
        }
    }

    /// The Unit whose key equals the text in lower case, or null.
    template <class Unit>
    Unit* Find(Unit* units, const char* text, std::size_t length) const {
        if (bits_ == 0) return nullptr;
        const std::uint32_t hash = Hash(text, length);
        for (std::uint32_t place = hash >> (32 - bits_); slots_[place] != 0; place = (place + 1) & Mask()) {
            if (!HasTag(slots_[place], hash)) continue;
            Unit& unit = units[NumberIn(slots_[place]) - 1];
            if (Tessarin::CstrLength(unit.key) == length &&
                Tessarin::EqualTexts<Tessarin::TextForm::kLowerCase>(unit.key, text, length)) {
                return &unit;
            }
        }
        return nullptr;
    }

private:
    /// A hash whose bits are well mixed: the upper bits are a slot's position, the lower bits are stored in the slot.
    static std::uint32_t Hash(const char* text, std::size_t length) {
        return Tessarin::HashOfText<Tessarin::TextForm::kLowerCase>(text, length) * 0x9E3779B1U;
    }

    [[nodiscard]] std::uint32_t Mask() const { return (std::uint32_t{1} << bits_) - 1; }
    [[nodiscard]] bool HasTag(std::uint32_t slot, std::uint32_t hash) const {
        return ((slot ^ hash << bits_) & ~Mask()) == 0;
    }
    [[nodiscard]] std::uint32_t NumberIn(std::uint32_t slot) const { return slot & Mask(); }

    const std::uint32_t* slots_ = nullptr;
    std::uint32_t bits_ = 0; // there are 2^bits_ slots, but none if it is 0
};

} // namespace Configure

#endif
