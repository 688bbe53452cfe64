// Tables live in pool blocks, so they are destroyed in place and never deleted. A tree of tables may be a million deep,
// so destruction doesn't recurse but works on one chain of entries. The entries of a child table, which are linked
// already, are put in front of the rest of the chain:
//
//    chain:  a -> b -> c          a is destroyed next; its child table has the entries x and y
//    chain:  x -> y -> b -> c     a and its table are gone

#include "tables/table_factory.h"

#include "tables/table.h"
#include "tables/table_pools.h"
#include "tables/table_registry.h"
#include "tessarin/tables.h"

#include <new>

namespace Tessarin {
namespace {

// The values of the registry.
constexpr std::uint32_t kRootTable = 1;
constexpr std::uint32_t kChildTable = 2;

/// Destroys the table itself and returns its entries in front of `behind`.
Pair* DestroyTableOnly(Table* table, Pair* behind) {
    Pair* chain = table->Dismantle(behind);
    table_pools->tables.Free(table);
    return chain;
}

} // namespace

Table* MakeTable() {
    void* block = table_pools->tables.Alloc();
    return block == nullptr ? nullptr : new (block) Table;
}

Table* MakeTableWithRoom() {
    Table* table = MakeTable();
    if (table == nullptr || table->Entries().AcquireFirst()) return table;
    DestroyTable(table);
    return nullptr;
}

Table* MakeChild() {
    Table* child = MakeTableWithRoom();
    if (child != nullptr) table_registry->Set(child, kChildTable);
    return child;
}

void DestroyTable(Table* table) { DestroyEntries(DestroyTableOnly(table, nullptr)); }

void DestroyRegistered(Table* table) {
    table_registry->Erase(table);
    DestroyTable(table);
}

void DestroyEntries(Pair* chain) {
    while (chain != nullptr) {
        Pair* pair = chain;
        chain = pair->next;
        if (Table* child = pair->OwnedTable()) {
            table_registry->Erase(child);
            chain = DestroyTableOnly(child, chain);
        }
        pair->ReleaseBlocks();
        table_pools->pairs.Free(pair);
    }
}

Table* FinishRoot(Table* table, bool filled) {
    if (table == nullptr) return nullptr;
    if (filled) {
        table_registry->Set(table, kRootTable);
        return table;
    }
    DestroyTable(table);
    return nullptr;
}

} // namespace Tessarin

Tessarin::ITable* CreateTable() { return Tessarin::FinishRoot(Tessarin::MakeTableWithRoom(), true); }

std::uint32_t CloseTable(Tessarin::ITable* table) {
    if (table != nullptr) Tessarin::DestroyRegistered(static_cast<Tessarin::Table*>(table));
    return 1;
}

std::uint32_t ValidateTable(Tessarin::ITable* table) { return Tessarin::table_registry->Get(table); }
