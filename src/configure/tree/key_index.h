// An index of a table's Units by the text of their keys: a hash index with open addressing, over the hash of the text
// in lower case.
//
// There are two hashes. Most tables use the string table's, which is fast, mixed with a secret of the process, so that
// nobody can choose keys whose slots are neighbours. But keys can be chosen for which that hash is the same. A table in
// which several are uses a slower hash instead, for which nobody can choose equal ones.

#ifndef TESSARIN_CONFIGURE_TREE_KEY_INDEX_H
#define TESSARIN_CONFIGURE_TREE_KEY_INDEX_H

#include "strings/keyed_hash.h"
#include "strings/string_table.h"

#include <algorithm>
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
        if (AddAll(slots, units, count)) return;
        is_keyed_ = true;
        std::fill_n(slots, SlotsFor(count), 0U);
        static_cast<void>(AddAll(slots, units, count));
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
    // By chance so many keys hardly ever have one hash, and a key hardly ever has to pass so many slots.
    static constexpr unsigned kMostOfOneHash = 4, kMostPassed = 256;

    /// False, with some Units missing, if the keys are too bad for the fast hash and the keyed one isn't used yet.
    template <class Unit>
    [[nodiscard]] bool AddAll(std::uint32_t* slots, const Unit* units, std::uint32_t count) {
        for (std::uint32_t number = 1; number <= count; ++number) {
            const cstr key = units[number - 1].key;
            const std::uint32_t hash = Hash(key, Tessarin::CstrLength(key));
            std::uint32_t place = hash >> (32 - bits_);
            unsigned of_one_hash = 1, passed = 0;
            for (; slots[place] != 0; place = (place + 1) & Mask()) {
                if (++passed > kMostPassed && !is_keyed_) return false;
                if (!HasTag(slots[place], hash)) continue;
                // A key that is already in the index is skipped: equal keys would fill adjacent slots, and each would
                // have to pass all of them.
                if (units[NumberIn(slots[place]) - 1].key == key) break;
                if (++of_one_hash > kMostOfOneHash && !is_keyed_) return false;
            }
            if (slots[place] == 0) slots[place] = hash << bits_ | number;
        }
        return true;
    }

    /// The upper bits are a slot's position, the lower bits are stored in the slot.
    [[nodiscard]] std::uint32_t Hash(const char* text, std::size_t length) const {
        constexpr auto kForm = Tessarin::TextForm::kLowerCase;
        const Tessarin::ProcessSecret& secret = Tessarin::process_secret;
        if (is_keyed_) [[unlikely]] {
            return static_cast<std::uint32_t>(Tessarin::KeyedHashOfText<kForm>(secret.text_key, text, length));
        }
        const std::uint64_t product = Tessarin::HashOfText<kForm>(text, length) * secret.pointer_factors[0];
        return static_cast<std::uint32_t>(product ^ product >> 32);
    }

    [[nodiscard]] std::uint32_t Mask() const { return (std::uint32_t{1} << bits_) - 1; }
    [[nodiscard]] bool HasTag(std::uint32_t slot, std::uint32_t hash) const {
        return ((slot ^ hash << bits_) & ~Mask()) == 0;
    }
    [[nodiscard]] std::uint32_t NumberIn(std::uint32_t slot) const { return slot & Mask(); }

    const std::uint32_t* slots_ = nullptr;
    std::uint32_t bits_ = 0; // there are 2^bits_ slots, but none if it is 0
    bool is_keyed_ = false;  // which hash is used
};

} // namespace Configure

#endif
