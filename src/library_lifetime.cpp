// The library's only objects of static storage duration. They stand in one file so that their order is that of the
// lines below: the loader runs the constructors when the library comes, and TearDown when it goes.

#include "core/library_state.h"

#include "core/pair.h"
#include "core/table.h"

namespace Tessarin {

// Blocks are as large as the objects that they hold; where pointers have 32 bits these are the sizes.
static_assert(sizeof(void*) != 4 || (sizeof(Table) == 32 && sizeof(Pair) == 40 && sizeof(ListenerSet) == 36));

LibraryState::LibraryState() : tables(sizeof(Table), 64), pairs(sizeof(Pair), 256), matrices(sizeof(Float4x4), 64) {}

UntilUnload<ListenerPools> listener_pools;
UntilUnload<LibraryState> library_state;

namespace {

/// Run by the loader, behind every destructor that the process or the library has registered.
[[gnu::destructor]] void TearDown() {
    library_state.TearDown();
    listener_pools.TearDown();
}

} // namespace
} // namespace Tessarin
