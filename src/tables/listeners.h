/// Who hears of a table's changes, and how they are told.

#ifndef TESSARIN_TABLES_LISTENERS_H
#define TESSARIN_TABLES_LISTENERS_H

#include "memory/list.h"
#include "tables/entry_store.h"
#include "tables/listener_set.h"
#include "tessarin/table_interface.h"

#include <cstdint>

namespace Tessarin {

class Table;

/// A request that came while listeners were being told.
struct PendingRecord {
    std::uint32_t remove; // 0 adds the delegate, 1 removes it
    cstr key;             // the entry meant; null for the whole table
    Delegate delegate;
};

/// Requests in their order, for each kind of listener. Lives on the general heap.
struct PendingSet {
    List<PendingRecord> queues[kListenerKinds];
};

/// What the listeners of an entry have left of it.
enum class Told { kAllThere, kEntryGone, kTableGone };

/// A notification on its way, on the stack of the operation that raised it. A listener may end or rename the entry, or
/// end the table, that it is told about, and the block may serve another object before the listener returns; so no look
/// at the object itself can tell. Whoever ends one says so to the notifications of its table.
struct Notification {
    Pair* entry; // null once it has ended, and for one about no entry
    cstr key;
    bool table_ended = false;
    Notification* outer = nullptr; // the one that it is nested in, on the same table
};

/// The listeners of a table, the notifications under way, and the requests that wait for the end of one.
///
/// Dispatching is a flag and no count: a listener that changes its table raises a notification within the one it is
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
    Told NotifyEntry(Table& table, std::uint32_t code, Pair& pair) {
        // Nobody to tell, and no notification around this one whose requests would now be carried out.
        if (listeners_ == nullptr && pair.listeners == nullptr && under_way_ == 0) return Told::kAllThere;
        return TellOfEntry(table, code, pair);
    }
    /// The table's array listeners.
    bool NotifyIndex(Table& table, std::uint32_t code, std::uint32_t index);

    // What an operation of the table says to the notifications under way.
    void EntryEnded(const Pair& pair);
    void EntryRenamed(const Pair& pair);
    void AllEntriesEnded();

    /// Gives everything back as the table ends; nobody is told.
    void Release();

private:
    Told TellOfEntry(Table& table, std::uint32_t code, Pair& pair);
    Delegate* AddNow(EntryStore& entries, ListenerKind kind, cstr key);
    void RemoveNow(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate);
    PendingRecord* Queue(ListenerKind kind, std::uint32_t remove, cstr key, const Delegate& delegate);
    ListenerSet** SetOf(EntryStore& entries, cstr key);
    void ApplyPending(EntryStore& entries);
    void Begin(Notification& notification);
    bool End(const Notification& notification, EntryStore& entries);

    [[nodiscard]] bool Dispatching() const { return (under_way_ & kDispatching) != 0; }
    [[nodiscard]] Notification* Innermost() const {
        return reinterpret_cast<Notification*>(under_way_ & ~kDispatching);
    }
    void SetUnderWay(const Notification* innermost, std::uintptr_t dispatching) {
        under_way_ = reinterpret_cast<std::uintptr_t>(innermost) | dispatching;
    }

    // The lowest bit of an address, which no notification's own address has.
    static constexpr std::uintptr_t kDispatching = 1;

    ListenerSet* listeners_ = nullptr; // null until the first listener of the table
    std::uintptr_t under_way_ = 0;     // the innermost notification; kDispatching while listeners are being told
    PendingSet* pending_ = nullptr;    // null until first needed, then kept
};

} // namespace Tessarin

#endif
