// Blocks are as large as the objects that they hold. The constructors give their sizes and the blocks per chunk; those
// of growing arrays are beside the layouts of the arrays, in entry_array.h and listener_set.h.

#include "tables/table_pools.h"

#include "memory/sizes.h"
#include "tables/table.h"

namespace Tessarin {

// The sizes on hosts whose pointers have 32 bits.
static_assert(sizeof(void*) != 4 || (sizeof(Table) == 32 && sizeof(Pair) == 40 && sizeof(ListenerSet) == 36));

TablePools::TablePools()
    : tables(sizeof(Table), OrSmall(64U, 1U)), pairs(sizeof(Pair), OrSmall(256U, 1U)),
      matrices(sizeof(Float4x4), OrSmall(64U, 1U)) {}

ListenerPools::ListenerPools() : sets(sizeof(ListenerSet), OrSmall(64U, 1U)) {}

Pair** KeyPools::Acquire(std::uint32_t wanted, std::uint32_t& capacity) {
    if (wanted > EntryArray::kLargestCapacity) return nullptr;
    capacity = EntryArray::CapacityFor(wanted);
    return static_cast<Pair**>(pools_.Acquire(EntryArray::Bytes(capacity)));
}

} // namespace Tessarin
