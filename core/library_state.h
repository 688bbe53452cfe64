/// All that the library keeps for the whole process.

#ifndef TESSARIN_CORE_LIBRARY_STATE_H
#define TESSARIN_CORE_LIBRARY_STATE_H

#include "core/block_pool.h"
#include "core/pool_sets.h"
#include "core/string_table.h"
#include "core/table_registry.h"

namespace Tessarin {

/// Built in the order of its members when the library is loaded, torn down in reverse when it is unloaded. No table is
/// destroyed then: the memory of those that still live goes with the pools, and every cstr with the strings.
struct LibraryState {
    LibraryState();

    StringTable strings;
    ObjectPool tables;
    KeyPools keys;
    ObjectPool pairs;
    ObjectPool matrices;
    TableRegistry registry;
};

// Listener pools come up first and go last.
extern ListenerPools listener_pools;
extern LibraryState library_state;

} // namespace Tessarin

#endif
