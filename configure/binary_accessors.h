/// The family of the binary form, which is only read. A table finds its Units by a trie of its keys, byte by byte, so a
/// lookup by text interns nothing, takes no lock and allocates nothing.

#ifndef TESSARIN_CONFIGURE_BINARY_ACCESSORS_H
#define TESSARIN_CONFIGURE_BINARY_ACCESSORS_H

#include "configure/binary_format.h"
#include "configure/object_array.h"
#include "configure/unit_runs.h"

namespace Configure {

/// One node of a trie. There are several to a key, and fresh memory is most of what a load costs: so it has numbers,
/// not addresses.
struct KeyNode {
    std::uint32_t word = 0; // as stored, see binary_format.h
    std::uint32_t children; // the first one, counted from the root; side by side, by ascending byte, unsigned
    std::uint32_t unit;     // of the key that ends here, counted from the table's first; only if one does
};

/// The Units stand in the order of the trie's nodes: by the length of their keys, then by their bytes.
struct BinTable final : UnitRun<BinTable, TableContract<BinTable>, TableUnit> {
    static constexpr bool kKeepsLastColon = false;

    std::uint32_t count = 0;
    cstr name = nullptr; // the key under which the table stands; null for the root and for an element of an array
    KeyNode* root_node = nullptr; // the table's first node
    Unit* units = nullptr;
    ITable* default_table = nullptr;

    /// The text as it is: the walk folds its letters.
    static const char* KeyOf(const char* text) { return text; }
    [[nodiscard]] Unit* Search(const char* key) const;
};

using BinArray = ArrayReader;

/// All that a load makes of a binary form: the nodes of all tables, table after table, and the Units likewise.
struct BinTree {
    ObjectArray<BinTable> tables; // the root first
    ObjectArray<BinArray> arrays;
    ObjectArray<BinTable::Unit> table_units;
    ObjectArray<BinArray::Unit> array_units;
    ObjectArray<KeyNode> nodes;

    void Clear() {
        nodes.Clear();
        tables.Clear();
        arrays.Clear();
        table_units.Clear();
        array_units.Clear();
    }
};

} // namespace Configure

#endif
