/// The way from a key to its entry in a table of more than 8.

#ifndef TESSARIN_MEMORY_POINTER_INDEX_H
#define TESSARIN_MEMORY_POINTER_INDEX_H

#include "tables/pair.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Tessarin {

/// A view of a power of two of slots, open addressing with linear probing over the address of the key; null is a free
/// slot. At most half the slots are ever taken, so a probe ends soon. Entries keep their address, so that the order of
/// the table may change without a word to its index.
class EntryIndex {
public:
    EntryIndex(Pair** slots, std::size_t count)
        : slots_(slots), mask_(count - 1), shift_(static_cast<unsigned>(64 - std::countr_zero(count))) {}

    [[nodiscard]] Pair* Find(cstr key) const {
        for (std::size_t i = Home(key);; i = Next(i)) {
            if (slots_[i] == nullptr || slots_[i]->key == key) return slots_[i];
        }
    }

    /// REQUIRES: the key isn't there yet
    void Insert(Pair* pair) {
        std::size_t i = Home(pair->key);
        while (slots_[i] != nullptr) i = Next(i);
        slots_[i] = pair;
    }

    /// Takes an entry out and closes the gap: what a probe would no longer reach moves back into it.
    /// REQUIRES: the entry is there
    void Erase(const Pair* pair) {
        std::size_t gap = Home(pair->key);
        while (slots_[gap] != pair) gap = Next(gap);
        for (std::size_t i = Next(gap); slots_[i] != nullptr; i = Next(i)) {
            std::size_t from_home = (i - Home(slots_[i]->key)) & mask_;
            if (from_home >= ((i - gap) & mask_)) {
                slots_[gap] = slots_[i];
                gap = i;
            }
        }
        slots_[gap] = nullptr;
    }

    void Rebuild(Pair* const* entries, std::size_t count) {
        std::fill_n(slots_, mask_ + 1, nullptr);
        for (std::size_t i = 0; i < count; ++i) Insert(entries[i]);
    }

private:
    [[nodiscard]] std::size_t Home(cstr key) const {
        std::uint64_t mixed = std::uint64_t{reinterpret_cast<std::uintptr_t>(key)} * 0x9E3779B97F4A7C15U;
        return static_cast<std::size_t>(mixed >> shift_);
    }

    [[nodiscard]] std::size_t Next(std::size_t i) const { return (i + 1) & mask_; }

    Pair** slots_;
    std::size_t mask_;
    unsigned shift_;
};

} // namespace Tessarin

#endif
