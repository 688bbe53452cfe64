/// The wiring of `_default`, the last step of a load, one for all families.

#ifndef TESSARIN_CONFIGURE_DEFAULT_TABLES_H
#define TESSARIN_CONFIGURE_DEFAULT_TABLES_H

#include "core/library_state.h"
#include "tessarin/configure_interface.h"

namespace Configure {

/// Gives a table's `_default` to each of its child tables, `_default` itself among them. A table that has none of its
/// own finds the one inside its own default, so parents come before their children.
/// REQUIRES: the tables are ready for lookups, the child tables included
template <class Table>
void WireDefault(Table& table) {
    ITable* default_table = table.GetTable("_default");
    if (default_table == nullptr) return;
    for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
        if (ITable* child = unit->GetTable()) static_cast<Table*>(child)->default_table = default_table;
    }
}

/// Whether the lookups of the wiring can't fail any more, in families whose lookups intern the key: a table must not
/// stay without its default for want of memory.
[[nodiscard]] inline bool ReadyToWire() { return Tessarin::library_state->strings.Intern("_default") != nullptr; }

} // namespace Configure

#endif
