// The storage of listeners: three vectors of delegates, one for each kind of listener, in a set that belongs to a
// table or to an entry. What happens to a listener that is added or removed during a notification: listener_dispatch.h.
//
// A vector grows through the size classes below and then by doubling; it never shrinks. There is no class of 8. Each
// kind of listener has its own pools.

#ifndef TESSARIN_TABLES_LISTENER_SET_H
#define TESSARIN_TABLES_LISTENER_SET_H

#include "memory/size_class_pools.h"
#include "tessarin/table_interface.h"

#include <cstdint>

namespace Tessarin {

enum ListenerKind : std::uint32_t { kRecordListener, kArgumentListener, kArrayListener, kListenerKinds };

inline constexpr SizeClass kDelegateClasses[] = {
    {4 * sizeof(Delegate), 128}, {16 * sizeof(Delegate), 32}, {32 * sizeof(Delegate), 8}, {64 * sizeof(Delegate), 8}};

/// Delegates of one kind.
struct DelegateVector {
    std::uint32_t count;
    std::uint32_t capacity;
    Delegate* data; // null until the first delegate is added

    /// Adds an empty delegate at the end; null if memory ran out.
    Delegate* Append(ListenerKind kind);

    /// Removes every delegate that is equal to this one; the last delegate fills the gap.
    void Remove(const Delegate& delegate);

    /// Frees the storage. The vector can't be used afterwards.
    void Release(ListenerKind kind);

private:
    bool Grow(ListenerKind kind);
};

/// The listeners of a table or of one entry; an entry never uses the vector of array listeners. Lives in a pool block.
struct ListenerSet {
    DelegateVector vectors[kListenerKinds];

    /// An empty set; null if memory ran out.
    static ListenerSet* Create();

    /// Frees the set and its vectors. No listener is notified.
    static void Destroy(ListenerSet* set);
};

} // namespace Tessarin

#endif
