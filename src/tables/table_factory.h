// How tables, and their entries, are made and destroyed.

#ifndef TESSARIN_TABLES_TABLE_FACTORY_H
#define TESSARIN_TABLES_TABLE_FACTORY_H

#include <cstdint>

namespace Tessarin {

class Pair;
class Table;

/// A table without an entry array, which is made with the first entry; null if memory ran out. It isn't registered.
Table* MakeTable();

/// A table with room for the first four entries; null if memory ran out. It isn't registered.
Table* MakeTableWithRoom();

/// Like MakeTableWithRoom, but the table is registered as a child table made by `Set`.
Table* MakeChild();

/// Destroys a table with everything that it owns: child tables of any depth, without recursion and without allocating.
void DestroyTable(Table* table);

/// Removes a table from the registry, if it is there, and destroys it like DestroyTable.
void DestroyRegistered(Table* table);

/// Destroys entries that no table contains any more, chained by `next`, with everything that they own.
void DestroyEntries(Pair* chain);

/// The last step of a factory: registers a root table that has been filled, and destroys one that has not.
/// returns  the table; null if `table` is null or has been destroyed
Table* FinishRoot(Table* table, bool filled);

} // namespace Tessarin

#endif
