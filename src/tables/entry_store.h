// The named entries of a table: an array of pointers to them and, if there are more than 8, an index from keys to
// entries. The array's layout: entry_array.h. Setters, and when they notify: table.cpp.

#ifndef TESSARIN_TABLES_ENTRY_STORE_H
#define TESSARIN_TABLES_ENTRY_STORE_H

#include "tables/entry_array.h"
#include "tables/pair.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Tessarin {

/// The array is in one of two states, and the count alone says in which: up to 8 entries are in the order in which they
/// were added; more entries ascend by the address of their key. Each entry's `next` is the entry after it.
///
/// Keys are interned and unique. Running out of memory is the only failure: the operation then returns null or false
/// and changes nothing.
class EntryStore {
public:
    static constexpr std::uint32_t kLargestUnsorted = EntryArray::kLargestUnindexed;

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    [[nodiscard]] std::uint32_t Capacity() const { return capacity_; }
    [[nodiscard]] Pair* First() const { return count_ == 0 ? nullptr : entries_[0]; }

    /// Allocates the first array, of the smallest class. REQUIRES: there is none yet
    bool AcquireFirst();

    [[nodiscard]] Pair* Find(cstr key) const;

    /// The entry of `key`, old or new; a new one has VALUE_EMPTY. Null for a null key.
    Pair* FindOrAdd(cstr key, bool& existed);

    /// Like FindOrAdd, for a bulk load: a new entry is added at the end even if the order demands another position.
    /// FinishBulkLoad restores the order; until then only Find, FindOrAppend and FinishBulkLoad may be called.
    Pair* FindOrAppend(cstr key, bool& existed);

    /// Sorts the entries if their number demands it.
    void FinishBulkLoad();

    /// Takes an entry out without destroying it; null if there is none.
    Pair* Take(cstr key);

    /// False if `old_key` is absent or `new_key` present.
    bool Rename(cstr old_key, cstr new_key);

    /// Takes all entries out, chained by `next` with `behind` after the last; the array stays.
    Pair* TakeAll(Pair* behind);

    /// Gives the array back. REQUIRES: it holds no entries
    void ReleaseArray();

    /// Whether order, links and index agree: for tests.
    [[nodiscard]] bool IsValid() const;

private:
    [[nodiscard]] bool Indexed() const { return count_ > kLargestUnsorted; }
    [[nodiscard]] EntryIndex Index() const { return EntryArray::Index(entries_, capacity_); }
    void RebuildIndex();
    [[nodiscard]] Pair* FindUnsorted(cstr key) const;
    [[nodiscard]] std::uint32_t PlaceOf(cstr key) const;
    [[nodiscard]] std::uint32_t IndexOf(const Pair* pair) const;
    Pair* FindOrMake(cstr key, bool& existed);
    Pair* NewPair(cstr key);
    void Append(Pair* pair);
    void PutInPlace(Pair* pair);
    void Sort();
    void Relink();
    bool Grow();

    Pair** entries_ = nullptr; // with the index after them, from the key pools; null while the capacity is 0
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace Tessarin

#endif
