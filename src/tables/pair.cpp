// The operations of an entry that need more than its fields: those on values that it owns, a matrix or a child table.

#include "tables/pair.h"

#include "tables/listener_set.h"
#include "tables/table.h"
#include "tables/table_factory.h"
#include "tables/table_pools.h"

namespace Tessarin {

std::uint32_t Pair::GetFloat4x4(Float4x4* out) {
    if (kind != VALUE_FLOAT4X4 || out == nullptr) return 0;
    *out = *value.As<const Float4x4*>();
    return 1;
}

std::uint32_t Pair::SetFloat4x4(const Float4x4* matrix) {
    if (matrix == nullptr) return 0;
    if (kind == VALUE_EMPTY) {
        void* block = table_pools->matrices.Alloc();
        if (block == nullptr) return 0;
        value.Put(block);
        kind = VALUE_FLOAT4X4;
    } else if (kind != VALUE_FLOAT4X4) {
        return 0;
    }
    std::memcpy(value.As<void*>(), matrix, sizeof *matrix);
    return 1;
}

/// Storing would destroy the child table that the entry owns. So if `table` is that child, it stays as it is, and only
/// VALUE_TABLE succeeds.
std::uint32_t Pair::StoreTable(ValueKind new_kind, ITable* table) {
    if (kind == VALUE_TABLE && table != nullptr && value.As<ITable*>() == table) return new_kind == VALUE_TABLE ? 1 : 0;
    return Store(new_kind, table);
}

Table* Pair::OwnedTable() const { return kind == VALUE_TABLE ? static_cast<Table*>(value.As<ITable*>()) : nullptr; }

void Pair::ReleaseBlocks() {
    if (listeners != nullptr) ListenerSet::Destroy(listeners);
    if (kind == VALUE_FLOAT4X4) table_pools->matrices.Free(value.As<void*>());
}

void Pair::ReleaseOwned() {
    if (Table* child = OwnedTable()) DestroyRegistered(child);
    if (kind == VALUE_FLOAT4X4) table_pools->matrices.Free(value.As<void*>());
}

} // namespace Tessarin
