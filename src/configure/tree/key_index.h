// An index of a table's Units by the text of their keys: open addressing over the hash of the text in lower case.

#ifndef TESSARIN_CONFIGURE_TREE_KEY_INDEX_H
#define TESSARIN_CONFIGURE_TREE_KEY_INDEX_H

#include "strings/string_hash.h"
#include "strings/string_table.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Configure {

/// The index of one table; the slots belong to its file. A slot holds a Unit's number, from 1 on, and above it the bits
/// of the hash that the slot's place doesn't tell, so that a Unit is touched only if it is almost certainly the one; 0
/// is a free slot.
class KeyIndex {
public:
    /// The slots that a table of so many Units needs: at most two thirds are taken.
    [[nodiscard]] static std::uint32_t SlotsFor(std::uint32_t count) {
        return count == 0 ? 0 : std::bit_ceil(count + count / 2 + 1);
    }

    /// Of several Units with one key it finds the first.
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
            // Equal keys would make a row of slots that each of them has to pass.
            while (slots[place] != 0 && !(HasTag(slots[place], hash) && units[NumberIn(slots[place]) - 1].key == key)) {
                place = (place + 1) & Mask();
            }
            if (slots[place] == 0) slots[place] = hash << bits_ | number;
        }
    }

    /// The Unit whose key is the text in lower case, or null.
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
    /// Its bits are spread: the upper ones are a slot's place, the lower ones go into the slot.
    static std::uint32_t Hash(const char* text, std::size_t length) {
        return Tessarin::HashOfText<Tessarin::TextForm::kLowerCase>(text, length) * 0x9E3779B1U;
    }

    [[nodiscard]] std::uint32_t Mask() const { return (std::uint32_t{1} << bits_) - 1; }
    [[nodiscard]] bool HasTag(std::uint32_t slot, std::uint32_t hash) const {
        return ((slot ^ hash << bits_) & ~Mask()) == 0;
    }
    [[nodiscard]] std::uint32_t NumberIn(std::uint32_t slot) const { return slot & Mask(); }

    const std::uint32_t* slots_ = nullptr;
    std::uint32_t bits_ = 0; // there are 2^bits_ slots; none for 0
};

} // namespace Configure

#endif
