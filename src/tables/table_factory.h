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

/// The same, registered as a child table that `Set` has made.
Table* MakeChild();

/// Destroys a table with all that it owns: child tables of any depth, without recursion and without allocating.
void DestroyTable(Table* table);

/// The same for a table that may be in the registry.
void DestroyRegistered(Table* table);

/// Destroys entries that are in no table any more, chained by `next`, with all that they own.
void DestroyEntries(Pair* chain);

/// The last step of a factory: registers a root table that has been filled, and destroys one that has not.
/// returns  the table, or null if there is none or it has been destroyed
Table* FinishRoot(Table* table, bool filled);

} // namespace Tessarin

#endif
