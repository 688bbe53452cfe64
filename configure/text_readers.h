/// The family of a text form that is only read.

#ifndef TESSARIN_CONFIGURE_TEXT_READERS_H
#define TESSARIN_CONFIGURE_TEXT_READERS_H

#include "configure/object_array.h"
#include "configure/unit_runs.h"

namespace Configure {

/// Invariant: the Units stand in ascending order of their keys' addresses, which never change; equal keys are
/// neighbours.
struct TxtTableReader final : UnitRun<TxtTableReader, TableContract<TxtTableReader>, TableUnit> {
    static constexpr bool kKeepsLastColon = true;

    std::uint32_t count = 0;
    cstr name = nullptr; // the key under which the table stands; null for the root and for an element of an array
    Unit* units = nullptr;
    ITable* default_table = nullptr;

    /// The key in lower case, interned: a lookup adds to the strings.
    static cstr KeyOf(const char* text) { return Tessarin::library_state->strings.InternLowerCase(text); }
    [[nodiscard]] Unit* Search(cstr key) const;

    /// Puts the Units in order.
    void Sort();
};

using TxtArrayReader = ArrayReader;

/// All that a load for reading makes of a text: each table's Units, and each array's, are a run of the shared ones.
struct TextTree {
    ObjectArray<TxtTableReader> tables; // the root first
    ObjectArray<TxtArrayReader> arrays;
    ObjectArray<TxtTableReader::Unit> table_units;
    ObjectArray<TxtArrayReader::Unit> array_units;

    void Clear() {
        tables.Clear();
        table_units.Clear();
        arrays.Clear();
        array_units.Clear();
    }
};

} // namespace Configure

#endif
