// The array part of a table: a dense array of items of one size. The host defines the items; the library only copies
// their bytes.

#ifndef TESSARIN_TABLES_ARRAY_PART_H
#define TESSARIN_TABLES_ARRAY_PART_H

#include "memory/raw_vector.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace Tessarin {

/// Lives on the general heap. `items` is null after memory ran out: the array part then counts as empty and accepts no
/// item.
struct TableArray {
    RawVector* items = nullptr;
    std::uint32_t item_size = 0;

    static TableArray* Create() { return new (std::nothrow) TableArray; }

    static void Destroy(TableArray* array) {
        if (array == nullptr) return;
        array->DropItems();
        delete array;
    }

    /// Drops the items and makes room for new ones of another size. False if memory ran out. A new array part gets no
    /// room for items of size 0, so it accepts none.
    bool Reset(std::uint32_t new_item_size) {
        item_size = new_item_size;
        const bool made_now = items == nullptr;
        if (made_now) items = new (std::nothrow) RawVector;
        if (items == nullptr) return false;
        if ((made_now && item_size == 0) || items->Reset(item_size)) return true;
        DropItems();
        return false;
    }

    [[nodiscard]] std::uint32_t Count() const { return items == nullptr ? 0 : items->count; }

    [[nodiscard]] void* Item(std::uint32_t index) const { return index < Count() ? items->At(index) : nullptr; }

    /// Copies an item into the array; null if memory ran out. `data` may be an item of this array, which moves when it
    /// grows: the item is then found again by its distance from the start.
    void* SetItem(std::uint32_t index, const void* data) {
        if (items == nullptr || items->data == nullptr || data == nullptr || index == UINT32_MAX) return nullptr;
        const auto distance = reinterpret_cast<std::uintptr_t>(data) - reinterpret_cast<std::uintptr_t>(items->data);
        const bool own_item = distance < std::uint64_t{items->count} * item_size;
        if (index >= items->count) {
            if (!items->Reserve(index + 1)) return nullptr;
            items->count = index + 1;
        }
        const void* source = own_item ? static_cast<const unsigned char*>(items->data) + distance : data;
        return std::memmove(items->At(index), source, item_size);
    }

private:
    void DropItems() {
        if (items == nullptr) return;
        items->Release();
        delete items;
        items = nullptr;
    }
};

} // namespace Tessarin

#endif
