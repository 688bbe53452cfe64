// The objects that live as long as the library is loaded. They are defined in one file so that the order of the lines
// below is their order: the loader runs the constructors in it when the library is loaded. When the library is
// unloaded, the loader runs TearDown, which destroys the objects in reverse order.
//
// TearDown destroys no table: the pools free the memory of tables that still exist, and the string table frees every
// cstr.

#include "platform/process_secret.h"
#include "strings/string_table.h"
#include "tables/table_pools.h"
#include "tables/table_registry.h"

namespace Tessarin {

ProcessSecret process_secret = MakeProcessSecret(); // everything after it may hash
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
