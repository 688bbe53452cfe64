// Gives tables their default tables: the last step of a load, the same for all families. Getters fall back to a default
// table in accessors.h, OwnOrDefault.

#ifndef TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H
#define TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H

#include "memory/pointer_map.h"
#include "strings/string_table.h"
#include "tessarin/configure_interface.h"

namespace Configure {

/// Makes each table's `_default` the default table of its child tables, including `_default` itself. A table without
/// its own `_default` uses the one inside its default table. REQUIRES: all tables can be searched; parents are wired
/// before their children
template <class Table>
class DefaultWiring {
public:
    /// False if memory runs out.
    [[nodiscard]] bool Wire(Table& table) {
        ITable* shared = nullptr;
        if (!FindDefault(table, shared)) return false;
        if (shared == nullptr) return true;
        for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
            if (ITable* child = unit->GetTable()) static_cast<Table*>(child)->default_table = shared;
        }
        return true;
    }

private:
    /// Sets `found` to the result of the table's GetTable for `_default`.
    [[nodiscard]] bool FindDefault(Table& table, ITable*& found) {
        if (IIterator* own = table.Find(kKey)) {
            found = own->GetTable();
        } else if (table.default_table != nullptr) {
            if (!FindInside(table.default_table)) return false;
            found = found_;
        }
        return true;
    }

    /// Sets `found_` to the `_default` of a default table. Each is searched once, because in an edited table a search
    /// looks at every entry: siblings share a default table, and the children of several parents may take turns.
    [[nodiscard]] bool FindInside(ITable* table) {
        if (table == searched_) return true;
        searched_ = table;
        auto* known = known_.At(table);
        if (known == nullptr) return false;
        if (known->key == nullptr) {
            IIterator* const inner = table->Find(kKey);
            known_.Take(*known, table, inner == nullptr ? nullptr : inner->GetTable());
        }
        found_ = known->value;
        return true;
    }

    static constexpr const char* kKey = "_default";
    ITable* searched_ = nullptr; // the last one, as most often the next one is the same
    ITable* found_ = nullptr;    // inside it
    Tessarin::PointerMap<ITable*> known_;
};

/// Interns the key of default tables, for families whose searches intern. Then none of these searches fails, and no
/// table stays without its default table because memory runs out. False if memory runs out here.
[[nodiscard]] inline bool ReadyToWire() { return Tessarin::string_table->Intern("_default") != nullptr; }

} // namespace Configure

#endif
