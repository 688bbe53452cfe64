// The entries of a table. Invariants between two operations:
//
//  1. The first entry is Entries()[0], each one's `next` is the one after it, and the last one's is null. A host's
//     walk, Table::Next in table.cpp, only follows these links, and so do saves: the order of all of them is decided
//     here.
//  2. More than 8 entries ascend by the address of their key. 8 or fewer are in the order that earlier operations left.
//  3. The storage never shrinks: a table that falls back to 8 entries keeps their sorted order, and adds new ones at
//     the end. Its index, if it has one, holds exactly the entries, however few they are, as filling it anew would cost
//     as much as the storage is large.
//  4. Up to 1024 entries are in the array, where moving a few cache lines costs less than a search in a tree. One more
//     brings them into the tree of keys, and they return to the array when only 512 are left. So many changes lie
//     between one move and the next that a change pays little for it.
//
// The tree has the keys alone: the index leads from the key before a new one to its entry.

#include "tables/entry_store.h"

#include "tables/table_pools.h"

#include <algorithm>
#include <functional>
#include <new>
#include <span>

namespace Tessarin {
namespace {

bool KeyBelow(const Pair* left, const Pair* right) { return std::less<>()(left->key, right->key); }

} // namespace

// ------------------------------------------------------------------------------------------------------- find, add

Pair* EntryStore::Find(cstr key) const { return count_ > kLargestUnsorted ? FindIndexed(key) : FindUnsorted(key); }

Pair* EntryStore::FindUnsorted(cstr key) const {
    Pair* const* const entries = Entries();
    for (std::uint32_t i = 0; i < count_; ++i) {
        if (entries[i]->key == key) return entries[i];
    }
    return nullptr;
}

/// The entry of a key. If there is none, a new entry, which isn't in its place yet; there is room for it.
Pair* EntryStore::FindOrMake(cstr key, bool& existed) {
    if (key == nullptr) return nullptr;
    Pair* pair = Find(key);
    existed = pair != nullptr;
    return existed ? pair : NewPair(key);
}

Pair* EntryStore::FindOrAdd(cstr key, bool& existed) {
    Pair* const pair = FindOrMake(key, existed);
    if (pair == nullptr || existed || PutInPlace(pair)) return pair;
    table_pools->pairs.Free(pair);
    return nullptr;
}

Pair* EntryStore::FindOrAppend(cstr key, bool& existed) {
    if (InTree()) return FindOrAdd(key, existed);
    Pair* const pair = FindOrMake(key, existed);
    if (pair == nullptr || existed) return pair;
    if (!InTree()) {
        Append(pair);
    } else if (!PutInPlace(pair)) {
        table_pools->pairs.Free(pair);
        return nullptr;
    }
    return pair;
}

void EntryStore::FinishBulkLoad() {
    if (count_ > kLargestUnsorted && !InTree() && !std::is_sorted(Entries(), Entries() + count_, KeyBelow)) Sort();
}

/// A new entry, which isn't in its place yet; there is room for it. Null if memory ran out.
Pair* EntryStore::NewPair(cstr key) {
    if (!MakeRoom()) return nullptr;
    void* block = table_pools->pairs.Alloc();
    return block == nullptr ? nullptr : new (block) Pair(key);
}

/// Adds an entry where the order demands it. False if memory ran out, which only the tree can need.
/// REQUIRES: there is room
bool EntryStore::PutInPlace(Pair* pair) {
    if (InTree()) return PutInTree(pair);
    PutInArray(pair);
    return true;
}

// ------------------------------------------------------------------------------------------------------- storage

bool EntryStore::AcquireFirst() {
    storage_ = table_pools->keys.Acquire(EntryArray::kSmallestCapacity, capacity_);
    if (storage_ == nullptr) capacity_ = 0;
    return storage_ != nullptr;
}

bool EntryStore::MakeRoom() {
    if (count_ == capacity_ && !Grow()) return false;
    return InTree() || count_ < EntryArray::ArrayRoom(capacity_) || MakeTree();
}

/// Moves the storage, unless it already has room for the next capacity. Only storage above the size classes can have
/// that.
bool EntryStore::Grow() {
    const std::uint32_t wanted = EntryArray::NextWanted(capacity_);
    if (capacity_ > EntryArray::kLargestPooled && EntryArray::Room(wanted) == EntryArray::Room(capacity_)) {
        capacity_ = wanted;
        return true;
    }
    std::uint32_t new_capacity = 0;
    Pair** const grown = table_pools->keys.Acquire(wanted, new_capacity);
    if (grown == nullptr) return false;
    if (new_capacity > EntryArray::kLargestUnindexed) FillIndex(EntryArray::Index(grown, new_capacity));
    if (EntryArray::HasOrder(new_capacity)) {
        new (EntryArray::Order(grown, new_capacity)) EntryOrder(InTree() ? Order() : EntryOrder{});
    }
    if (count_ != 0) std::copy_n(Entries(), InTree() ? 1 : count_, EntryArray::Entries(grown, new_capacity));
    table_pools->keys.Release(storage_, capacity_);
    storage_ = grown;
    capacity_ = new_capacity;
    return true;
}

/// Fills the index of another storage. The entries are read in the order of this storage and not by their links, as the
/// next of them can then be fetched before the last has arrived.
void EntryStore::FillIndex(EntryIndex index) const {
    index.Clear();
    for (const EntrySlot& slot : EntryArray::Slots(storage_, capacity_)) {
        if (!slot.IsFree()) index.Insert(slot);
    }
    if (HasIndex()) return;
    for (Pair* const pair : std::span(Entries(), count_)) index.Insert(EntrySlot(pair));
}

/// Brings the keys of a full array into the tree. Called during a bulk load, too, which has left them in any order.
bool EntryStore::MakeTree() {
    FinishBulkLoad();
    EntryOrder order;
    order.last = Last();
    for (const Pair* pair = First(); pair != nullptr; pair = pair->next) {
        cstr before = nullptr;
        if (!order.keys.Insert(pair->key, before)) {
            order.keys.Clear();
            return false;
        }
    }
    Order() = order;
    return true;
}

/// Brings the entries back into the array.
void EntryStore::DropTree() {
    Order().keys.Clear();
    Pair** place = Entries();
    for (Pair* pair = First(); pair != nullptr; pair = pair->next) *place++ = pair;
}

// ------------------------------------------------------------------------------------------------------- the array

/// The position of a key, present or not, among sorted entries.
std::uint32_t EntryStore::PlaceOf(cstr key) const {
    const auto below = [](const Pair* pair, cstr wanted) { return std::less<>()(pair->key, wanted); };
    Pair* const* const entries = Entries();
    return static_cast<std::uint32_t>(std::lower_bound(entries, entries + count_, key, below) - entries);
}

/// Adds an entry at the end of the array, and to the index.
void EntryStore::Append(Pair* pair) {
    Pair** const entries = Entries();
    pair->next = nullptr;
    if (count_ != 0) entries[count_ - 1]->next = pair;
    entries[count_++] = pair;
    if (HasIndex()) Index().Insert(EntrySlot(pair));
}

void EntryStore::PutInArray(Pair* pair) {
    if (count_ <= kLargestUnsorted) {
        Append(pair);
        if (count_ > kLargestUnsorted) Sort(); // the table crosses into the sorted state
        return;
    }
    Pair** const entries = Entries();
    const std::uint32_t place = PlaceOf(pair->key);
    std::copy_backward(entries + place, entries + count_, entries + count_ + 1);
    entries[place] = pair;
    if (place != 0) entries[place - 1]->next = pair;
    pair->next = place < count_ ? entries[place + 1] : nullptr;
    ++count_;
    Index().Insert(EntrySlot(pair));
}

void EntryStore::TakeFromArray(const Pair* pair) {
    Pair** const entries = Entries();
    const auto place = count_ > kLargestUnsorted
                           ? PlaceOf(pair->key)
                           : static_cast<std::uint32_t>(std::find(entries, entries + count_, pair) - entries);
    if (place != 0) entries[place - 1]->next = pair->next;
    std::copy(entries + place + 1, entries + count_, entries + place);
}

void EntryStore::Sort() {
    Pair** const entries = Entries();
    std::sort(entries, entries + count_, KeyBelow);
    for (std::uint32_t i = 0; i + 1 < count_; ++i) entries[i]->next = entries[i + 1];
    entries[count_ - 1]->next = nullptr;
}

// ------------------------------------------------------------------------------------------------------- the tree

/// Puts an entry after another one, or in front of all for null.
void EntryStore::Link(Pair* pair, Pair* before) {
    Pair*& link = before == nullptr ? Entries()[0] : before->next;
    pair->next = link;
    link = pair;
    if (pair->next == nullptr) Order().last = pair;
}

void EntryStore::Unlink(const Pair* pair, Pair* before) {
    (before == nullptr ? Entries()[0] : before->next) = pair->next;
    if (pair->next == nullptr) Order().last = before;
}

bool EntryStore::PutInTree(Pair* pair) {
    EntryOrder& order = Order();
    cstr before = nullptr;
    if (!order.keys.Insert(pair->key, before)) return false;
    Link(pair, order.last->key == before ? order.last : FindIndexed(before));
    Index().Insert(EntrySlot(pair));
    ++count_;
    return true;
}

/// Doesn't change the index, which must still have the entry.
void EntryStore::TakeFromTree(const Pair* pair) {
    cstr before = Order().keys.Erase(pair->key);
    Unlink(pair, FindIndexed(before));
}

/// The new key is added first, as only that can fail. If one of the two keys follows the other, the entry stays where
/// it is.
bool EntryStore::RenameInTree(Pair* pair, cstr new_key) {
    cstr before_new = nullptr;
    KeyTree& keys = Order().keys;
    if (!keys.Insert(new_key, before_new)) return false;
    cstr before_old = keys.Erase(pair->key);
    if (before_new != pair->key && before_old != new_key) {
        Unlink(pair, FindIndexed(before_old));
        Link(pair, FindIndexed(before_new));
    }
    Index().Erase(pair->key);
    pair->key = new_key;
    Index().Insert(EntrySlot(pair));
    return true;
}

// ------------------------------------------------------------------------------------------------ rename, remove

Pair* EntryStore::Take(cstr key) {
    Pair* const pair = Find(key);
    if (pair == nullptr) return nullptr;
    if (InTree()) {
        TakeFromTree(pair);
    } else {
        TakeFromArray(pair);
    }
    if (HasIndex()) Index().Erase(key);
    --count_;
    if (count_ == kFewestInTree && InTree()) DropTree();
    return pair;
}

bool EntryStore::Rename(cstr old_key, cstr new_key) {
    if (new_key == nullptr || Find(new_key) != nullptr) return false;
    Pair* const pair = Find(old_key);
    if (pair == nullptr) return false;
    if (InTree()) return RenameInTree(pair, new_key);
    Take(old_key);
    pair->key = new_key;
    PutInArray(pair);
    return true;
}

/// Frees the tree and links what comes after the last entry. Returns the first, or `behind`.
Pair* EntryStore::Chain(Pair* behind) {
    if (count_ == 0) return behind;
    Last()->next = behind;
    if (InTree()) Order().keys.Clear();
    return First();
}

/// Empties the index by its entries or by its slots, whichever are fewer: the storage may once have held many more.
Pair* EntryStore::TakeAll(Pair* behind) {
    Pair* const chain = Chain(behind);
    if (HasIndex()) {
        if (count_ > EntryArray::Room(capacity_) / 16) {
            Index().Clear();
        } else {
            for (const Pair* pair = chain; pair != behind; pair = pair->next) Index().Erase(pair->key);
        }
    }
    count_ = 0;
    return chain;
}

Pair* EntryStore::Dissolve(Pair* behind) {
    Pair* const chain = Chain(behind);
    table_pools->keys.Release(storage_, capacity_);
    storage_ = nullptr;
    count_ = capacity_ = 0;
    return chain;
}

bool EntryStore::IsValid() const {
    std::uint32_t found = 0;
    for (const Pair* pair = First(); pair != nullptr; pair = pair->next, ++found) {
        if (Find(pair->key) != pair || (HasIndex() && FindIndexed(pair->key) != pair)) return false;
        if (pair->next == nullptr ? pair != Last() : count_ > kLargestUnsorted && !KeyBelow(pair, pair->next))
            return false;
        if (!InTree() && Entries()[found] != pair) return false;
    }
    return found == count_ && (!InTree() || Order().keys.IsValid(count_));
}

} // namespace Tessarin
