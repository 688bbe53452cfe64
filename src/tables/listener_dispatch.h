// Listener dispatch: notifies the listeners of a table and of its entries, keeps track of the running notifications,
// and queues requests to add or remove listeners that are made during one.
//
// A listener may change its table, so a notification may run inside another one. Each notification is a local variable
// of the operation that raises it, and the hub knows the innermost one:
//
//    hub.innermost_ --> Notification --outer--> Notification --outer--> null
//                       of the change           of the change
//                       inside a listener       of the host
//
// Invariants:
//  1. A listener may end or rename the entry that it is notified about, or end the table. Another object may use the
//     block before the listener returns, so the block itself can't show that the old object has ended. Therefore every
//     operation that ends or renames an entry, or ends a table, records that in the table's running notifications, and
//     dispatch reads it there before anything else.
//  2. Nothing of a table, its hub included, is used once `table_ended` is set.
//  3. `dispatching` is a flag in the innermost notification, not a count: it starts true and becomes false when a
//     nested notification ends. While it is true, requests are queued, and the end of the notification carries them
//     out; so a listener that is removed meanwhile is still called. While it is false, requests take effect at once;
//     the notification continues safely, as it reads its vectors anew at each step.

#ifndef TESSARIN_TABLES_LISTENER_DISPATCH_H
#define TESSARIN_TABLES_LISTENER_DISPATCH_H

#include "memory/list.h"
#include "tables/entry_store.h"
#include "tables/listener_set.h"
#include "tessarin/table_interface.h"

#include <cstdint>

namespace Tessarin {

/// A request made during a notification.
struct PendingRecord {
    std::uint32_t remove; // 0 adds the delegate, 1 removes it
    cstr key;             // of the entry; null for the whole table
    Delegate delegate;
};

/// Requests in their order, for each kind of listener. Lives on the general heap.
struct PendingSet {
    List<PendingRecord> queues[kListenerKinds];
};

/// What still exists when the listeners have returned.
enum class DispatchResult { kAllThere, kEntryGone, kTableGone };

/// A running notification.
struct Notification {
    ITable* table;
    std::uint32_t code;
    cstr key;            // the entry's, also after it is renamed; null for the table as a whole
    std::uint32_t index; // for array listeners
    Pair* entry;         // null once it has ended, and if the notification isn't about an entry

    bool table_ended = false;
    bool dispatching = true;       // false once a nested notification has ended
    Notification* outer = nullptr; // on the same table
};

/// The listeners of a table, its running notifications, and the requests that wait for the end of one.
class ListenerHub {
public:
    /// Adds an empty delegate, which the caller fills in at once; null if there is no such entry or memory ran out. A
    /// null key means the whole table.
    Delegate* Add(EntryStore& entries, ListenerKind kind, cstr key);
    void Remove(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);

    // Each of these notifies listeners, then carries out the requests made meanwhile. The result is false, or
    // kTableGone, if a listener has ended the table: nothing of it may then be used.

    /// Notifies the table's listeners. A null key means the table as a whole.
    bool NotifyKey(ITable& table, EntryStore& entries, std::uint32_t code, cstr key);

    /// Notifies the table's listeners, then the entry's, unless the entry is gone by then.
    DispatchResult NotifyEntry(ITable& table, EntryStore& entries, std::uint32_t code, Pair& pair) {
        // There is no listener, and no outer notification whose requests the end of this one would carry out.
        if (listeners_ == nullptr && pair.listeners == nullptr && innermost_ == nullptr) {
            return DispatchResult::kAllThere;
        }
        return DispatchEntry(table, entries, code, pair);
    }

    /// Notifies the table's array listeners.
    bool NotifyIndex(ITable& table, EntryStore& entries, std::uint32_t code, std::uint32_t index);

    // The table's operations report with these, for the running notifications, what they have ended or renamed.
    void EntryEnded(const Pair& pair);
    void EntryRenamed(const Pair& pair);
    void AllEntriesEnded();

    /// Frees everything when the table ends, and marks the running notifications. No listener is notified.
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
