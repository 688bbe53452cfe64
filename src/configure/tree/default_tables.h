// Gives tables their default tables: the last step of a load, the same for all families. Getters fall back to a default
// table in accessors.h, OwnOrDefault.

#ifndef TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H
#define TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H

#include "strings/string_table.h"
#include "tessarin/configure_interface.h"

namespace Configure {

/// Makes each table's `_default` the default table of its child tables, including `_default` itself. A table without
/// its own `_default` uses the one inside its default table. REQUIRES: all tables can be searched; parents are wired
/// before their children
template <class Table>
class DefaultWiring {
public:
    void Wire(Table& table) {
        ITable* const shared = DefaultFor(table);
        if (shared == nullptr) return;
        for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
            if (ITable* child = unit->GetTable()) static_cast<Table*>(child)->default_table = shared;
        }
    }

private:
    /// The result of the table's GetTable for `_default`. Siblings share a default table and are wired one after
    /// another, so the last search of a default table is remembered: in an edited table a search looks at every entry.
    ITable* DefaultFor(Table& table) {
        if (IIterator* own = table.Find(kKey)) return own->GetTable();
        if (table.default_table == nullptr) return nullptr;
        if (table.default_table != searched_) {
            searched_ = table.default_table;
            IIterator* const inner = searched_->Find(kKey);
            found_ = inner == nullptr ? nullptr : inner->GetTable();
        }
        return found_;
    }

    static constexpr const char* kKey = "_default";
    ITable* searched_ = nullptr;
    ITable* found_ = nullptr;
};

/// Interns the key of default tables, for families whose searches intern. Then none of these searches fails, and no
/// table stays without its default table because memory runs out. False if memory runs out here.
[[nodiscard]] inline bool ReadyToWire() { return Tessarin::string_table->Intern("_default") != nullptr; }

} // namespace Configure

#endif
