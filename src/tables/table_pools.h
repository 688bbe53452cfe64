// The block pools from which tables and everything that belongs to them are allocated: one pool, or one set of pools by
// size class, for each type of object. They live as long as the library is loaded.

#ifndef TESSARIN_TABLES_TABLE_POOLS_H
#define TESSARIN_TABLES_TABLE_POOLS_H

#include "memory/block_pool.h"
#include "memory/size_class_pools.h"
#include "memory/until_unload.h"
#include "tables/entry_array.h"
#include "tables/listener_set.h"

#include <cstdint>

namespace Tessarin {

/// The entry arrays of tables.
class KeyPools {
public:
    /// Storage for `wanted` entries; 0 is legal and yields the smallest class.
    /// capacity  takes the entries that fit
    /// returns   null if memory ran out
    Pair** Acquire(std::uint32_t wanted, std::uint32_t& capacity);

    /// Frees storage; null is ignored.
    void Release(Pair** entries, std::uint32_t capacity) { pools_.Release(entries, EntryArray::Bytes(capacity)); }

private:
    SizeClassPools<kEntryArrayClasses> pools_;
};

/// Listener sets, and the delegates of each kind of listener.
struct ListenerPools {
    ListenerPools();

    ObjectPool sets;
    SizeClassPools<kDelegateClasses> delegates[kListenerKinds];
};

struct TablePools {
    TablePools();

    ObjectPool tables;
    KeyPools keys;
    ObjectPool pairs;
    ObjectPool matrices;
};

extern UntilUnload<ListenerPools> listener_pools;
extern UntilUnload<TablePools> table_pools;

} // namespace Tessarin

#endif
