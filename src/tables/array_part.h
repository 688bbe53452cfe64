/// The array part of a table: a dense row of equal items of the host's making, raw bytes to the library.

#ifndef TESSARIN_TABLES_ARRAY_PART_H
#define TESSARIN_TABLES_ARRAY_PART_H

#include "memory/raw_vector.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace Tessarin {

/// Lives on the general heap. Without `items`, after memory ran out, it counts as empty and takes nothing.
struct TableArray {
    RawVector* items = nullptr;
    std::uint32_t item_size = 0;

    static TableArray* Create() { return new (std::nothrow) TableArray; }

    static void Destroy(TableArray* array) {
        if (array == nullptr) return;
        array->DropItems();
        delete array;
    }

    /// Drops the items and makes room for new ones of another size. Items of no size at all get no room at first, so
    /// that such an array part takes nothing.
    bool Reset(std::uint32_t its_item_size) {
        item_size = its_item_size;
        bool made_now = items == nullptr;
        if (made_now) items = new (std::nothrow) RawVector;
        if (items == nullptr) return false;
        if ((made_now && item_size == 0) || items->Reset(item_size)) return true;
        DropItems();
        return false;
    }

    [[nodiscard]] std::uint32_t Count() const { return items == nullptr ? 0 : items->count; }

    [[nodiscard]] void* Item(std::uint32_t index) const { return index < Count() ? items->At(index) : nullptr; }

    /// Copies an item in; null if memory ran out. `data` may be an item of this very array, which moves as it grows:
    /// it is then found again by its distance from the start.
    void* SetItem(std::uint32_t index, const void* data) {
        if (items == nullptr || items->data == nullptr || data == nullptr || index == UINT32_MAX) return nullptr;
        auto distance = reinterpret_cast<std::uintptr_t>(data) - reinterpret_cast<std::uintptr_t>(items->data);
        bool own_item = distance < std::uint64_t{items->count} * item_size;
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
