// The named entries of a table: pointers to them in their order and, if there are more than 8, an index from keys to
// entries. Where these are in memory: entry_array.h. Setters, and when they notify: table.cpp.

#ifndef TESSARIN_TABLES_ENTRY_STORE_H
#define TESSARIN_TABLES_ENTRY_STORE_H

#include "tables/entry_array.h"
#include "tables/pair.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Tessarin {

/// The entries are in one of two states, and the count alone says in which: up to 8 entries are in the order in which
/// they were added; more entries ascend by the address of their key. Each entry's `next` is the entry after it. What is
/// in order stays so at a cost that hardly grows with the count, whatever the order of additions and removals.
///
/// Keys are interned and unique. Running out of memory is the only failure: the operation then returns null or false
/// and changes nothing.
class EntryStore {
public:
    static constexpr std::uint32_t kLargestUnsorted = EntryArray::kLargestUnindexed;

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    [[nodiscard]] std::uint32_t Capacity() const { return capacity_; }
    [[nodiscard]] Pair* First() const { return count_ == 0 ? nullptr : Entries()[0]; }

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

    /// Takes all entries out, chained by `next` with `behind` after the last; the storage stays.
    Pair* TakeAll(Pair* behind);

    /// Like TakeAll, and gives the storage back.
    Pair* Dissolve(Pair* behind);

    /// Whether order, links and index agree: for tests.
    [[nodiscard]] bool IsValid() const;

private:
    static constexpr std::uint32_t kFewestInTree = EntryArray::kLargestArray / 2;

    [[nodiscard]] bool HasIndex() const { return capacity_ > EntryArray::kLargestUnindexed; }
    [[nodiscard]] EntryIndex Index() const { return EntryArray::Index(storage_, capacity_); }
    [[nodiscard]] Pair* FindIndexed(cstr key) const { return Index().Find(key)->Entry(); }
    [[nodiscard]] Pair** Entries() const { return EntryArray::Entries(storage_, capacity_); }
    [[nodiscard]] EntryOrder& Order() const {
        return *static_cast<EntryOrder*>(EntryArray::Order(storage_, capacity_));
    }
    [[nodiscard]] bool InTree() const { return EntryArray::HasOrder(capacity_) && !Order().keys.Empty(); }
    [[nodiscard]] Pair* FindUnsorted(cstr key) const;
    [[nodiscard]] std::uint32_t PlaceOf(cstr key) const;
    [[nodiscard]] Pair* Last() const { return InTree() ? Order().last : Entries()[count_ - 1]; }

    Pair* FindOrMake(cstr key, bool& existed);
    Pair* NewPair(cstr key);
    bool MakeRoom();
    bool Grow();
    void FillIndex(EntryIndex index) const;
    bool MakeTree();
    void DropTree();

    bool PutInPlace(Pair* pair);
    void Append(Pair* pair);
    void PutInArray(Pair* pair);
    void TakeFromArray(const Pair* pair);
    bool PutInTree(Pair* pair);
    void TakeFromTree(const Pair* pair);
    bool RenameInTree(Pair* pair, cstr new_key);
    void Link(Pair* pair, Pair* before);
    void Unlink(const Pair* pair, Pair* before);
    void Sort();
    Pair* Chain(Pair* behind);

    Pair** storage_ = nullptr; // from the key pools; null while the capacity is 0
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace Tessarin

#endif
