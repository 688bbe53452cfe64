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
#include <type_traits>

namespace Configure {

/// An address and a kind in one word: no address needs the two highest bits of 64, and the string table relies on more
/// of them. They are 0 for KIND_STRING, so a text can be stored through a plain pointer.
class AddressWithKind {
public:
    [[nodiscard]] std::uint32_t Kind() const { return static_cast<std::uint32_t>(Bits() >> kKindShift) ^ KIND_STRING; }
    [[nodiscard]] std::uintptr_t Address() const { return Bits() & ((std::uintptr_t{1} << kKindShift) - 1); }
    void Set(std::uint32_t kind, std::uintptr_t address) {
        text = reinterpret_cast<cstr>(address | std::uintptr_t{kind ^ KIND_STRING} << kKindShift);
    }

    cstr text = nullptr; // if the kind is KIND_STRING

private:
    static constexpr unsigned kKindShift = sizeof(std::uintptr_t) * 8 - 2;

    [[nodiscard]] std::uintptr_t Bits() const { return reinterpret_cast<std::uintptr_t>(text); }
};

/// The same where an address needs all its bits.
class AddressAndKind {
public:
    [[nodiscard]] std::uint32_t Kind() const { return kind_; }
    [[nodiscard]] std::uintptr_t Address() const { return reinterpret_cast<std::uintptr_t>(text); }
    void Set(std::uint32_t kind, std::uintptr_t address) {
        text = reinterpret_cast<cstr>(address);
        kind_ = kind;
    }

    cstr text = nullptr;

private:
    std::uint32_t kind_ = KIND_NONE;
};

/// The kind and the value of a Unit: KIND_NONE before a load fills it.
class ReadValue {
public:
    ReadValue() { value_.Set(KIND_NONE, 0); }

    [[nodiscard]] std::uint32_t Kind() const { return value_.Kind(); }
    [[nodiscard]] cstr Text() const { return value_.text; }
    [[nodiscard]] IArray* Array() const { return reinterpret_cast<IArray*>(value_.Address()); }
    [[nodiscard]] ITable* Table() const { return reinterpret_cast<ITable*>(value_.Address()); }

    /// Makes the value a text, null until the caller stores one at the place that is returned.
    cstr& HoldText() {
        value_.Set(KIND_STRING, 0);
        return value_.text;
    }
    void Hold(IArray* array) { value_.Set(KIND_ARRAY, reinterpret_cast<std::uintptr_t>(array)); }
    void Hold(ITable* table) { value_.Set(KIND_TABLE, reinterpret_cast<std::uintptr_t>(table)); }

private:
    std::conditional_t<sizeof(void*) == 8, AddressWithKind, AddressAndKind> value_;
};

/// A table's entry.
struct TableUnit final : UnitAccessors<TableUnit>, ReadValue {
    cstr key = nullptr;
};

/// An array's element.
struct ArrayUnit final : UnitAccessors<ArrayUnit>, ReadValue {};

static_assert(sizeof(void*) != 8 || sizeof(ArrayUnit) == 16, "a nest may have one for every byte of the file");

/// Iteration over the Count() Units from `units` on, for a table or an array that has these and a `name`.
template <class Self, class Accessors, class UnitType>
class UnitRun : public Accessors {
public:
    using Unit = UnitType;

    std::uint32_t GetCount() final { return self().Count(); }
    cstr GetName() final { return self().name; }
    IIterator* Begin() final { return self().units; }
    IIterator* End() final { return self().units + self().Count(); }
    IIterator* Next(IIterator* unit) final { return static_cast<Unit*>(unit) + 1; }

private:
    Self& self() { return static_cast<Self&>(*this); }
};

/// An array that is only read, of either stored form. Its Units end where those of the next array in the tree begin.
struct ArrayReader final : UnitRun<ArrayReader, ArrayAccessors<ArrayReader>, ArrayUnit> {
    cstr name = nullptr; // null for an element of an array
    Unit* units = nullptr;

    /// REQUIRES: another array follows in memory; the arrays are filled in order
    void Fill(Unit* first, std::uint32_t count) {
        units = first;
        this[1].units = first + count;
    }
    [[nodiscard]] std::uint32_t Count() const { return static_cast<std::uint32_t>(this[1].units - units); }
    [[nodiscard]] Unit* UnitAt(std::uint32_t position) const { return position < Count() ? units + position : nullptr; }
};

static_assert(sizeof(ArrayReader) == 3 * sizeof(void*), "a nest may have one for every byte of the file");

/// A table that is only read. Units are found by the text of their keys, so a key needn't be interned to be found. The
/// family's Search decides what happens if a key isn't there.
template <class Self>
struct TableReader : UnitRun<Self, TableAccessors<Self>, TableUnit> {
    std::uint32_t count = 0;
    cstr name = nullptr; // the key of its Unit; null for the root and for an element of an array
    TableUnit* units = nullptr;
    ITable* default_table = nullptr;
    KeyIndex index;

    void Fill(TableUnit* first, std::uint32_t unit_count) {
        units = first;
        count = unit_count;
    }
    [[nodiscard]] std::uint32_t Count() const { return count; }
    static const char* KeyOf(const char* text) { return text; }
};

/// Everything that a load for reading makes.
template <class Table>
struct ReadTree {
    Tessarin::List<Table> tables;       // the root first
    Tessarin::List<ArrayReader> arrays; // see MakeArrays
    Tessarin::List<TableUnit> table_units;
    Tessarin::List<ArrayUnit> array_units;
    Tessarin::List<std::uint32_t> slots;

    /// Makes the arrays, and one more where the Units of the last one end. False if memory runs out.
    [[nodiscard]] bool MakeArrays(std::uint32_t count) { return count == 0 || arrays.Make(count + 1); }

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
