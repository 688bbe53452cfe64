// The common part of the two families of read trees: the file owns one array of each type of object, and the Units of a
// table or an array are consecutive in it.
//
//     tables        root | inn | stock | ...
//     table_units   root's Units | inn's Units | stock's Units | ...
//     slots         root's index | inn's index | ...

#ifndef TESSARIN_CONFIGURE_TREE_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_READ_TREE_H

#include "configure/tree/accessors.h"
#include "configure/tree/key_index.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// A table's entry.
struct TableUnit final : UnitAccessors<TableUnit> {
    std::uint32_t kind = KIND_NONE;
    cstr key = nullptr;
    UnitValue value = {nullptr};
};

/// An array's element.
struct ArrayUnit final : UnitAccessors<ArrayUnit> {
    std::uint32_t kind = KIND_NONE;
    UnitValue value = {nullptr};
};

/// Iteration over the `count` Units from `units` on, for a table or an array that has these fields and a `name`.
template <class Self, class Accessors, class UnitType>
class UnitRun : public Accessors {
public:
    using Unit = UnitType;

    std::uint32_t GetCount() final { return self().count; }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return self().units; }
    IIterator* End() final { return self().units + self().count; }
    IIterator* Next(IIterator* unit) final { return static_cast<Unit*>(unit) + 1; }

private:
    Self& self() { return static_cast<Self&>(*this); }
};

/// An array that is only read, of either stored form.
struct ArrayReader final : UnitRun<ArrayReader, ArrayAccessors<ArrayReader>, ArrayUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // null for an element of an array
    Unit* units = nullptr;

    [[nodiscard]] Unit* UnitAt(std::uint32_t position) const { return position < count ? units + position : nullptr; }
};

/// A table that is only read. Units are found by the text of their keys, so a key needn't be interned to be found. The
/// family's Search decides what happens if a key isn't there.
template <class Self>
struct TableReader : UnitRun<Self, TableAccessors<Self>, TableUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // the key of its Unit; null for the root and for an element of an array
    TableUnit* units = nullptr;
    ITable* default_table = nullptr;
    KeyIndex index;

    static const char* KeyOf(const char* text) { return text; }
};

/// Everything that a load for reading makes.
template <class Table>
struct ReadTree {
    Tessarin::List<Table> tables; // the root first
    Tessarin::List<ArrayReader> arrays;
    Tessarin::List<TableUnit> table_units;
    Tessarin::List<ArrayUnit> array_units;
    Tessarin::List<std::uint32_t> slots;

    /// Makes the tables ready for searches, once their Units are in their final order. False if memory runs out.
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
