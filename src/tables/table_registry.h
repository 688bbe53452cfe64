// Which addresses are live tables, and how the tables were made. Callers only ask about addresses: no table is accessed
// through the registry.

#ifndef TESSARIN_TABLES_TABLE_REGISTRY_H
#define TESSARIN_TABLES_TABLE_REGISTRY_H

#include "containers/hash_map.h"
#include "memory/until_unload.h"
#include "platform/critical_section.h"

#include <cstdint>
#include <mutex>

namespace Tessarin {

/// Safe from any thread. If memory runs out, a table isn't registered; if the map couldn't be made at the start, no
/// table is.
class TableRegistry {
public:
    TableRegistry() : map_(hm::Create(99991, sizeof(std::uint32_t))) {}
    ~TableRegistry() {
        if (map_ != nullptr) hm::Destroy(map_);
    }
    TableRegistry(const TableRegistry&) = delete;
    TableRegistry& operator=(const TableRegistry&) = delete;

    /// origin  a number that says how the table was made; not 0
    void Set(const void* table, std::uint32_t origin) {
        const std::lock_guard guard(lock_);
        if (map_ != nullptr) map_->Set(Key(table), &origin);
    }

    void Erase(const void* table) {
        const std::lock_guard guard(lock_);
        if (map_ != nullptr) map_->Erase(Key(table));
    }

    /// The origin of a table; 0 for an address that isn't registered.
    std::uint32_t Get(const void* table) {
        const std::lock_guard guard(lock_);
        const void* origin = map_ == nullptr || table == nullptr ? nullptr : map_->Get(Key(table));
        return origin == nullptr ? 0 : *static_cast<const std::uint32_t*>(origin);
    }

private:
    static std::uintptr_t Key(const void* table) { return reinterpret_cast<std::uintptr_t>(table); }

    CriticalSection lock_;
    hm* map_;
};

extern UntilUnload<TableRegistry> table_registry;

} // namespace Tessarin

#endif
