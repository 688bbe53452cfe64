// The entries of a table. Invariants between two operations:
//
//  1. entries_[i]->next is entries_[i + 1], and the last one's is null. A host's walk, Table::Next in table.cpp, only
//     follows these links, and so do saves: the order of all of them is decided here.
//  2. More than 8 entries ascend by the address of their key, and the index after the array holds exactly these
//     entries. 8 or fewer are in the order that earlier operations left, and the index, if the array has one, is stale.
//  3. The array never shrinks: a table that falls back to 8 entries keeps their sorted order, and adds new ones at the
//     end.

#include "tables/entry_store.h"

#include "tables/table_pools.h"

#include <algorithm>
#include <functional>
#include <new>

namespace Tessarin {
namespace {

bool KeyBelow(const Pair* left, const Pair* right) { return std::less<>()(left->key, right->key); }

} // namespace

bool EntryStore::AcquireFirst() {
    entries_ = table_pools->keys.Acquire(EntryArray::kSmallestCapacity, capacity_);
    if (entries_ == nullptr) capacity_ = 0;
    return entries_ != nullptr;
}

Pair* EntryStore::Find(cstr key) const { return Indexed() ? *Index().Find(key) : FindUnsorted(key); }

Pair* EntryStore::FindUnsorted(cstr key) const {
    for (std::uint32_t i = 0; i < count_; ++i) {
        if (entries_[i]->key == key) return entries_[i];
    }
    return nullptr;
}

/// The position of a key, present or not, among sorted entries.
std::uint32_t EntryStore::PlaceOf(cstr key) const {
    const auto below = [](const Pair* pair, cstr wanted) { return std::less<>()(pair->key, wanted); };
    return static_cast<std::uint32_t>(std::lower_bound(entries_, entries_ + count_, key, below) - entries_);
}

std::uint32_t EntryStore::IndexOf(const Pair* pair) const {
    if (Indexed()) return PlaceOf(pair->key);
    return static_cast<std::uint32_t>(std::find(entries_, entries_ + count_, pair) - entries_);
}

/// The entry of a key. If there is none, a new entry, which isn't in the array yet; the array has room for it.
Pair* EntryStore::FindOrMake(cstr key, bool& existed) {
    if (key == nullptr) return nullptr;
    Pair* pair = Find(key);
    existed = pair != nullptr;
    return existed ? pair : NewPair(key);
}

Pair* EntryStore::FindOrAdd(cstr key, bool& existed) {
    Pair* pair = FindOrMake(key, existed);
    if (pair != nullptr && !existed) PutInPlace(pair);
    return pair;
}

Pair* EntryStore::FindOrAppend(cstr key, bool& existed) {
    Pair* pair = FindOrMake(key, existed);
    if (pair == nullptr || existed) return pair;
    Append(pair);
    if (count_ == kLargestUnsorted + 1) {
        RebuildIndex();
    } else if (Indexed()) {
        Index().Insert(pair);
    }
    return pair;
}

void EntryStore::FinishBulkLoad() {
    if (Indexed() && !std::is_sorted(entries_, entries_ + count_, KeyBelow)) Sort();
}

/// A new entry, which isn't in the array yet; the array has room for it. Null if memory ran out.
Pair* EntryStore::NewPair(cstr key) {
    if (count_ == capacity_ && !Grow()) return nullptr;
    void* block = table_pools->pairs.Alloc();
    return block == nullptr ? nullptr : new (block) Pair(key);
}

void EntryStore::Append(Pair* pair) {
    pair->next = nullptr;
    if (count_ != 0) entries_[count_ - 1]->next = pair;
    entries_[count_++] = pair;
}

/// Adds an entry at the position that the order demands. REQUIRES: there is room
void EntryStore::PutInPlace(Pair* pair) {
    if (count_ < kLargestUnsorted) {
        Append(pair);
        return;
    }
    if (count_ == kLargestUnsorted) { // the table crosses into the sorted state
        Append(pair);
        Sort();
        RebuildIndex();
        return;
    }
    const std::uint32_t place = PlaceOf(pair->key);
    std::copy_backward(entries_ + place, entries_ + count_, entries_ + count_ + 1);
    entries_[place] = pair;
    ++count_;
    if (place != 0) entries_[place - 1]->next = pair;
    pair->next = place + 1 < count_ ? entries_[place + 1] : nullptr;
    Index().Insert(pair);
}

void EntryStore::Sort() {
    std::sort(entries_, entries_ + count_, KeyBelow);
    Relink();
}

void EntryStore::Relink() {
    for (std::uint32_t i = 0; i + 1 < count_; ++i) entries_[i]->next = entries_[i + 1];
    if (count_ != 0) entries_[count_ - 1]->next = nullptr;
}

void EntryStore::RebuildIndex() {
    EntryIndex index = Index();
    index.Clear();
    for (std::uint32_t i = 0; i < count_; ++i) index.Insert(entries_[i]);
}

/// Moves the array, unless its storage already has room for the next capacity. Only storage above the size classes can
/// have that.
bool EntryStore::Grow() {
    const std::uint32_t wanted = EntryArray::NextWanted(capacity_);
    if (capacity_ > EntryArray::kLargestPooled && EntryArray::Room(wanted) == EntryArray::Room(capacity_)) {
        capacity_ = wanted;
        return true;
    }
    std::uint32_t new_capacity = 0;
    Pair** grown = table_pools->keys.Acquire(wanted, new_capacity);
    if (grown == nullptr) return false;
    if (count_ != 0) std::copy_n(entries_, count_, grown);
    table_pools->keys.Release(entries_, capacity_);
    entries_ = grown;
    capacity_ = new_capacity;
    if (Indexed()) RebuildIndex();
    return true;
}

Pair* EntryStore::Take(cstr key) {
    Pair* pair = Find(key);
    if (pair == nullptr) return nullptr;
    const std::uint32_t index = IndexOf(pair);
    if (Indexed()) Index().Erase(pair->key);
    std::copy(entries_ + index + 1, entries_ + count_, entries_ + index);
    --count_;
    if (index != 0) entries_[index - 1]->next = index < count_ ? entries_[index] : nullptr;
    return pair;
}

bool EntryStore::Rename(cstr old_key, cstr new_key) {
    if (new_key == nullptr || Find(new_key) != nullptr) return false;
    Pair* pair = Take(old_key);
    if (pair == nullptr) return false;
    pair->key = new_key;
    PutInPlace(pair);
    return true;
}

Pair* EntryStore::TakeAll(Pair* behind) {
    if (count_ == 0) return behind;
    entries_[count_ - 1]->next = behind;
    count_ = 0;
    return entries_[0];
}

void EntryStore::ReleaseArray() {
    table_pools->keys.Release(entries_, capacity_);
    entries_ = nullptr;
    capacity_ = 0;
}

bool EntryStore::IsValid() const {
    for (std::uint32_t i = 0; i < count_; ++i) {
        if (entries_[i]->next != (i + 1 < count_ ? entries_[i + 1] : nullptr)) return false;
        if (Find(entries_[i]->key) != entries_[i]) return false;
    }
    return !Indexed() || std::is_sorted(entries_, entries_ + count_, KeyBelow);
}

} // namespace Tessarin
