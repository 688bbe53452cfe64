/// What the two families have in common that are only read: Units side by side in a block of the file's.

#ifndef TESSARIN_CONFIGURE_TREE_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_READ_TREE_H

#include "configure/tree/accessors.h"
#include "configure/tree/key_index.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// A table's entry.
struct TableUnit final : UnitContract<TableUnit> {
    std::uint32_t kind = KIND_NONE;
    cstr key = nullptr;
    UnitValue value = {nullptr};
};

/// An array's element.
struct ArrayUnit final : UnitContract<ArrayUnit> {
    std::uint32_t kind = KIND_NONE;
    UnitValue value = {nullptr};
};

/// Iteration over the `count` Units from `units` on, for a table or an array that has these fields and a `name`.
template <class Self, class Contract, class ItsUnit>
class UnitRun : public Contract {
public:
    using Unit = ItsUnit;

    std::uint32_t GetCount() final { return self().count; }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return self().units; }
    IIterator* End() final { return self().units + self().count; }
    IIterator* Next(IIterator* unit) final { return static_cast<Unit*>(unit) + 1; }

private:
    Self& self() { return static_cast<Self&>(*this); }
};

/// An array that is only read. The stored form that it came from makes no difference.
struct ArrayReader final : UnitRun<ArrayReader, ArrayContract<ArrayReader>, ArrayUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // null for an element of an array
    Unit* units = nullptr;

    [[nodiscard]] Unit* UnitAt(std::uint32_t position) const { return position < count ? units + position : nullptr; }
};

/// A table that is only read. Keys are found by the text that they are asked for with, so a key needs not be interned
/// to be found; a family says in its Search what happens to one that isn't.
template <class Self>
struct TableReader : UnitRun<Self, TableContract<Self>, TableUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // the key under which the table stands; null for the root and for an element of an array
    TableUnit* units = nullptr;
    ITable* default_table = nullptr;
    KeyIndex index;

    static const char* KeyOf(const char* text) { return text; }
};

/// All that a load for reading makes: each table's Units, and each array's, are a run of the shared ones, and its index
/// a run of the slots.
template <class Table>
struct ReadTree {
    Tessarin::List<Table> tables; // the root first
    Tessarin::List<ArrayReader> arrays;
    Tessarin::List<TableUnit> table_units;
    Tessarin::List<ArrayUnit> array_units;
    Tessarin::List<std::uint32_t> slots;

    /// Makes the tables ready for lookups, once their Units are in their order. False if memory runs out.
    [[nodiscard]] bool IndexKeys() {
        std::uint32_t slot_count = 0;
        for (const Table& table : tables) slot_count += KeyIndex::SlotsFor(table.count);
        if (!slots.Make(slot_count)) return false;
        std::uint32_t* next = slots.begin();
        for (Table& table : tables) {
            table.index.Build(next, table.units, table.count);
            next += KeyIndex::SlotsFor(table.count);
        }
        return true;
    }

    void Clear() {
        tables.Release();
        table_units.Release();
        arrays.Release();
        array_units.Release();
        slots.Release();
    }
};

} // namespace Configure

#endif
