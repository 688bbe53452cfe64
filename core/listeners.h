/// Who hears of a table's changes, and how they are told.

#ifndef TESSARIN_CORE_LISTENERS_H
#define TESSARIN_CORE_LISTENERS_H

#include "core/entry_store.h"
#include "tessarin/table_interface.h"

#include <cstdint>

namespace Tessarin {

class Table;

enum ListenerKind : std::uint32_t { kRecordListener, kArgumentListener, kArrayListener, kListenerKinds };

/// Delegates of one kind. Storage: 4, 16, 32 or 64 from the kind's pools, above that from the heap, doubling.
struct DelegateVector {
    std::uint32_t count;
    std::uint32_t capacity;
    Delegate* data; // null until the first

    /// An empty delegate at the end, or null if memory ran out.
    Delegate* Append(ListenerKind kind);
    /// Takes out every equal delegate; the last one fills the gap.
    void Remove(const Delegate& delegate);
    void Release(ListenerKind kind);

private:
    bool Grow(ListenerKind kind);
};

/// The listeners of a table, or of one entry (whose array vector is never used). Lives in a pool block.
struct ListenerSet {
    DelegateVector vectors[kListenerKinds];
};

void ReleaseListenerSet(ListenerSet* set);

/// A request that came while listeners were being told.
struct PendingRecord {
    std::uint32_t remove; // 0 adds the delegate, 1 removes it
    cstr key;             // the entry meant; null for the whole table
    Delegate delegate;
};

struct PendingQueue {
    std::uint32_t count;
    std::uint32_t capacity; // doubles from 4
    PendingRecord* data;

    /// A new record at the end, or null if memory ran out.
    PendingRecord* Append(std::uint32_t remove, cstr key, const Delegate& delegate);
};

struct PendingSet {
    PendingQueue queues[kListenerKinds];
};

/// What the listeners of an entry have left of it.
enum class Told { kAllThere, kEntryGone, kTableGone };

/// The listeners of a table with the requests that wait for the end of a notification.
///
/// `dispatching` is a flag and no count: a listener that changes its table raises a notification within the one it is
/// in, and when the inner one ends, requests take effect at once, also for the outer one, which reads its vectors anew
/// at every step.
class ListenerHub {
public:
    /// An empty delegate for the caller to fill in. A null key means the whole table.
    Delegate* Add(EntryStore& entries, ListenerKind kind, cstr key);
    void Remove(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);

    // Each of these tells the listeners, then carries out the requests that came meanwhile. They answer false, or
    // kTableGone, if a listener has ended the table: nothing of it may then be touched.

    /// The table's listeners. A null key stands for the table as a whole.
    bool NotifyKey(Table& table, std::uint32_t code, cstr key);
    /// The table's listeners, then the entry's, unless the entry is gone by then.
    Told NotifyEntry(Table& table, std::uint32_t code, Pair& pair);
    /// The table's array listeners.
    bool NotifyIndex(Table& table, std::uint32_t code, std::uint32_t index);

    /// Gives everything back; nobody is told.
    void Release();

private:
    Delegate* AddNow(EntryStore& entries, ListenerKind kind, cstr key);
    void RemoveNow(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);
    PendingRecord* Queue(ListenerKind kind, std::uint32_t remove, cstr key, const Delegate& delegate);
    ListenerSet** SetOf(EntryStore& entries, cstr key);
    void ApplyPending(EntryStore& entries);

    ListenerSet* listeners_ = nullptr; // null until the first listener of the table
    std::uint32_t dispatching_ = 0;    // 1 while listeners are being told
    PendingSet* pending_ = nullptr;    // null until first needed, then kept
};

} // namespace Tessarin

#endif
