/// The wiring of `_default`, the last step of a load, one for all families.

#ifndef TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H
#define TESSARIN_CONFIGURE_TREE_DEFAULT_TABLES_H

#include "strings/string_table.h"
#include "tessarin/configure_interface.h"

namespace Configure {

/// Gives each table's `_default` to its child tables, `_default` itself among them. A table that has none of its own
/// finds the one inside its own default, so parents come before their children.
/// REQUIRES: all tables are ready for lookups
template <class Table>
class DefaultWiring {
public:
    void Wire(Table& table) {
        ITable* its_default = DefaultFor(table);
        if (its_default == nullptr) return;
        for (IIterator* unit = table.Begin(); unit != table.End(); unit = table.Next(unit)) {
            if (ITable* child = unit->GetTable()) static_cast<Table*>(child)->default_table = its_default;
        }
    }

private:
    /// What the table's GetTable answers. A default is asked once for all that it serves, who come one after the other:
    /// to find a key in an edited table takes a look at each entry.
    ITable* DefaultFor(Table& table) {
        if (IIterator* own = table.Find(kKey)) return own->GetTable();
        if (table.default_table == nullptr) return nullptr;
        if (table.default_table != asked_) {
            asked_ = table.default_table;
            IIterator* inner = asked_->Find(kKey);
            answer_ = inner == nullptr ? nullptr : inner->GetTable();
        }
        return answer_;
    }

    static constexpr const char* kKey = "_default";
    ITable* asked_ = nullptr;
    ITable* answer_ = nullptr;
};

/// Whether the lookups of the wiring can't fail any more, in families whose lookups intern the key: a table must not
/// stay without its default for want of memory.
[[nodiscard]] inline bool ReadyToWire() { return Tessarin::string_table->Intern("_default") != nullptr; }

} // namespace Configure

#endif
