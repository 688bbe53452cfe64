// The library's only objects of static storage duration. They stand in one file so that their order is that of the
// lines below: the loader runs the constructors when the library comes, and the destructors, in reverse, when it goes.

#include "core/library_state.h"

#include "core/pair.h"
#include "core/table.h"

namespace Tessarin {

LibraryState::LibraryState() : tables(sizeof(Table), 64), pairs(sizeof(Pair), 256), matrices(sizeof(Float4x4), 64) {}

ListenerPools listener_pools;
LibraryState library_state;

} // namespace Tessarin
