// The objects that live as long as the library is loaded. They are defined in one file so that their order is that of
// the lines below: the loader runs the constructors when the library is loaded, and TearDown when it is unloaded, which
// takes them in reverse.
//
// TearDown destroys no table: the memory of those that are still alive goes with the pools, and every cstr with the
// string table.

#include "strings/string_table.h"
#include "tables/table_pools.h"
#include "tables/table_registry.h"

namespace Tessarin {

UntilUnload<ListenerPools> listener_pools;
UntilUnload<StringTable> string_table;
UntilUnload<TablePools> table_pools;
UntilUnload<TableRegistry> table_registry;

namespace {

/// Run by the loader, after every destructor that the process or the library has registered.
[[gnu::destructor]] void TearDown() {
    table_registry.TearDown();
    table_pools.TearDown();
    string_table.TearDown();
    listener_pools.TearDown();
}

} // namespace
} // namespace Tessarin
