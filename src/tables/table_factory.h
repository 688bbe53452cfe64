/// How tables, and the entries with them, come and go.

#ifndef TESSARIN_TABLES_TABLE_FACTORY_H
#define TESSARIN_TABLES_TABLE_FACTORY_H

#include <cstdint>

namespace Tessarin {

class Pair;
class Table;

/// A table without an entry array, which the first entry brings; null if memory ran out. It isn't registered.
Table* MakeTable();

/// A table with room for the first four entries; null if memory ran out. It isn't registered.
Table* MakeTableWithRoom();

/// The same, registered as the child that Set makes.
Table* MakeChild();

/// Ends a table with all that it owns. Child tables of any depth go without recursion and without allocating.
void DestroyTable(Table* table);

/// The same for a table that may stand in the registry.
void DestroyRegistered(Table* table);

/// Ends entries that are in no table any more, chained by `next`, with all that they own.
void DestroyEntries(Pair* chain);

/// Registers a filled root table for its factory, or ends it: for the last line of one.
Table* FinishRoot(Table* table, bool filled);

} // namespace Tessarin

#endif
