// Blocks are as large as the objects that they hold. Sizes and blocks per chunk stand in the constructors, those of the
// arrays that grow with the arrays' own layouts.

#include "tables/table_pools.h"

#include "tables/table.h"

namespace Tessarin {

// Where pointers have 32 bits these are the sizes.
static_assert(sizeof(void*) != 4 || (sizeof(Table) == 32 && sizeof(Pair) == 40 && sizeof(ListenerSet) == 36));

TablePools::TablePools() : tables(sizeof(Table), 64), pairs(sizeof(Pair), 256), matrices(sizeof(Float4x4), 64) {}

ListenerPools::ListenerPools() : sets(sizeof(ListenerSet), 64) {}

Pair** KeyPools::Acquire(std::uint32_t wanted, std::uint32_t& capacity) {
    if (wanted > EntryArray::kLargestCapacity) return nullptr;
    capacity = EntryArray::CapacityFor(wanted);
    return static_cast<Pair**>(pools_.Acquire(EntryArray::Bytes(capacity)));
}

} // namespace Tessarin
