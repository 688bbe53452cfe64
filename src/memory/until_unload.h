/// All that the library keeps for the whole process.

#ifndef TESSARIN_CORE_LIBRARY_STATE_H
#define TESSARIN_CORE_LIBRARY_STATE_H

#include "core/block_pool.h"
#include "core/pool_sets.h"
#include "core/string_table.h"
#include "core/table_registry.h"

#include <memory>

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

/// An object of static storage duration that ordinary destruction leaves alone. At the end of a process that would come
/// too soon: a host that has loaded the library by hand may have objects of its own that are destroyed later.
template <class T>
class UntilUnload {
public:
    UntilUnload() : object_() {}
    ~UntilUnload() {}
    UntilUnload(const UntilUnload&) = delete;
    UntilUnload& operator=(const UntilUnload&) = delete;

    T& operator*() { return object_; }
    T* operator->() { return &object_; }
    void TearDown() { std::destroy_at(&object_); }

private:
    union {
        T object_;
    };
};

// Listener pools come up first and go last.
extern UntilUnload<ListenerPools> listener_pools;
extern UntilUnload<LibraryState> library_state;

} // namespace Tessarin

#endif
