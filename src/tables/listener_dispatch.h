// Listener dispatch: notifies the listeners of a table and of its entries, keeps track of the notifications that run,
// and queues the requests to add and remove listeners that come meanwhile.
//
// A listener may change its table, so a notification may run inside another one. Notifications lie on the stack of the
// operations that raise them, and the hub knows the innermost:
//
//    hub.innermost_ --> Notification --outer--> Notification --outer--> null
//                       of the change           of the change
//                       inside a listener       of the host
//
// Invariants:
//  1. A listener may end or rename the entry, or end the table, that it is notified about, and the block may serve
//     another object before the listener returns; so no look at the object itself can tell. Every operation that ends
//     one marks the notifications of its table, and dispatch reads that mark before anything else.
//  2. Nothing of a table, its hub included, is used once `table_ended` is set.
//  3. Dispatching is a flag and no count. It is set when a notification begins and cleared when any of the table ends,
//     so it is on only while the innermost notification has had no other inside it: its place is that notification.
//     While it is on, requests are queued, and the end of the notification carries them out. Requests take effect at
//     once when it is off; an outer notification goes on all the same, as it reads its vectors anew at each step.

#ifndef TESSARIN_TABLES_LISTENER_DISPATCH_H
#define TESSARIN_TABLES_LISTENER_DISPATCH_H

#include "memory/list.h"
#include "tables/entry_store.h"
#include "tables/listener_set.h"
#include "tessarin/table_interface.h"

#include <cstdint>

namespace Tessarin {

/// A request that came during a notification.
struct PendingRecord {
    std::uint32_t remove; // 0 adds the delegate, 1 removes it
    cstr key;             // the entry meant; null for the whole table
    Delegate delegate;
};

/// Requests in their order, for each kind of listener. Lives on the general heap.
struct PendingSet {
    List<PendingRecord> queues[kListenerKinds];
};

/// What is left when the listeners have returned.
enum class DispatchResult { kAllThere, kEntryGone, kTableGone };

/// A notification that runs.
struct Notification {
    ITable* table;
    std::uint32_t code;
    cstr key;            // that of the entry even when it has been renamed; null for the table as a whole
    std::uint32_t index; // for array listeners
    Pair* entry;         // null once it has ended, and for a notification about no entry

    bool table_ended = false;
    bool dispatching = true;       // false once a nested notification has ended
    Notification* outer = nullptr; // on the same table
};

/// The listeners of a table, the notifications that run, and the requests that wait for the end of one.
class ListenerHub {
public:
    /// An empty delegate for the caller to fill in at once; null if there is no such entry or memory ran out. A null
    /// key means the whole table.
    Delegate* Add(EntryStore& entries, ListenerKind kind, cstr key);
    void Remove(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);

    // Each of these notifies the listeners, then carries out the requests that came meanwhile. They return false, or
    // kTableGone, if a listener has ended the table: nothing of it may then be touched.

    /// The table's listeners. A null key stands for the table as a whole.
    bool NotifyKey(ITable& table, EntryStore& entries, std::uint32_t code, cstr key);

    /// The table's listeners, then the entry's, unless the entry is gone by then.
    DispatchResult NotifyEntry(ITable& table, EntryStore& entries, std::uint32_t code, Pair& pair) {
        // No listener, and no notification around this one whose requests would now be carried out.
        if (listeners_ == nullptr && pair.listeners == nullptr && innermost_ == nullptr) {
            return DispatchResult::kAllThere;
        }
        return DispatchEntry(table, entries, code, pair);
    }

    /// The table's array listeners.
    bool NotifyIndex(ITable& table, EntryStore& entries, std::uint32_t code, std::uint32_t index);

    // How an operation of the table marks the notifications that run.
    void EntryEnded(const Pair& pair);
    void EntryRenamed(const Pair& pair);
    void AllEntriesEnded();

    /// Gives everything back as the table ends, and marks the notifications that run. No listener is notified.
    void Release();

private:
    DispatchResult DispatchEntry(ITable& table, EntryStore& entries, std::uint32_t code, Pair& pair);
    Delegate* AddNow(EntryStore& entries, ListenerKind kind, cstr key);
    void RemoveNow(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);
    PendingRecord* Queue(ListenerKind kind, std::uint32_t remove, cstr key, const Delegate& delegate);
    ListenerSet** SetOf(EntryStore& entries, cstr key);
    void ApplyPending(EntryStore& entries);
    void Begin(Notification& notification);
    void End(const Notification& notification, EntryStore& entries);

    [[nodiscard]] bool Dispatching() const { return innermost_ != nullptr && innermost_->dispatching; }

    ListenerSet* listeners_ = nullptr;  // null until the first listener of the table
    Notification* innermost_ = nullptr; // null while none runs
    PendingSet* pending_ = nullptr;     // null until first needed, then kept
};

} // namespace Tessarin

#endif
