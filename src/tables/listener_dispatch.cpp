// All three kinds of notification follow one pattern: begin, dispatch to the listener sets concerned, and, unless a
// listener has ended the table, end and carry out the pending requests.

#include "tables/listener_dispatch.h"

#include <new>

namespace Tessarin {
namespace {

/// What a listener set belongs to.
enum class Owner { kTable, kEntry };

bool IsThere(const Notification& notification, Owner owner) {
    return owner == Owner::kTable ? !notification.table_ended : notification.entry != nullptr;
}

/// An exception must not pass: innermost_ would go on pointing to a notification on the stack frames that it unwinds.
void Call(const Delegate& delegate, ListenerKind kind, const Notification& notification) noexcept {
    using RecordFunction = void (*)(void*, TableEvent*);
    using ArgumentFunction = void (*)(void*, std::uint32_t, ITable*, cstr);
    using ArrayFunction = void (*)(void*, std::uint32_t, ITable*, std::uint32_t);
    ITable* const table = notification.table;
    const std::uint32_t code = notification.code;
    if (kind == kRecordListener) {
        TableEvent event{code, table, notification.key};
        reinterpret_cast<RecordFunction>(delegate.function)(delegate.object, &event);
    } else if (kind == kArgumentListener) {
        reinterpret_cast<ArgumentFunction>(delegate.function)(delegate.object, code, table, notification.key);
    } else {
        reinterpret_cast<ArrayFunction>(delegate.function)(delegate.object, code, table, notification.index);
    }
}

/// Calls the listeners of one kind in turn, as long as the owner of their set exists: the set ends with it. Count and
/// data are read anew at each step, as a listener may change them.
void Dispatch(const ListenerSet& set, ListenerKind kind, Owner owner, const Notification& notification) {
    for (std::uint32_t i = 0; IsThere(notification, owner) && i < set.vectors[kind].count; ++i) {
        const Delegate delegate = set.vectors[kind].data[i];
        if (delegate.function != nullptr) Call(delegate, kind, notification);
    }
}

} // namespace

Delegate* ListenerHub::Add(EntryStore& entries, ListenerKind kind, cstr key) {
    if (!Dispatching()) return AddNow(entries, kind, key);
    PendingRecord* record = Queue(kind, 0, key, Delegate{});
    return record == nullptr ? nullptr : &record->delegate;
}

void ListenerHub::Remove(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate) {
    if (!Dispatching()) {
        RemoveNow(entries, kind, key, delegate);
    } else {
        Queue(kind, 1, key, delegate);
    }
}

PendingRecord* ListenerHub::Queue(ListenerKind kind, std::uint32_t remove, cstr key, const Delegate& delegate) {
    if (pending_ == nullptr) pending_ = new (std::nothrow) PendingSet;
    PendingRecord* record = pending_ == nullptr ? nullptr : pending_->queues[kind].Extend(1);
    if (record != nullptr) *record = {remove, key, delegate};
    return record;
}

/// The place of the pointer to an entry's listener set, or to the table's for a null key; null if there is no such
/// entry.
ListenerSet** ListenerHub::SetOf(EntryStore& entries, cstr key) {
    if (key == nullptr) return &listeners_;
    Pair* pair = entries.Find(key);
    return pair == nullptr ? nullptr : &pair->listeners;
}

Delegate* ListenerHub::AddNow(EntryStore& entries, ListenerKind kind, cstr key) {
    ListenerSet** set = SetOf(entries, key);
    if (set == nullptr) return nullptr;
    if (*set == nullptr) *set = ListenerSet::Create();
    return *set == nullptr ? nullptr : (*set)->vectors[kind].Append(kind);
}

void ListenerHub::RemoveNow(EntryStore& entries, ListenerKind kind, cstr key, const Delegate& delegate) {
    ListenerSet** set = SetOf(entries, key);
    if (set != nullptr && *set != nullptr) (*set)->vectors[kind].Remove(delegate);
}

/// Not inlined, else g++ warns that innermost_ outlives the local variable that it points to. That happens only if the
/// table has ended, and then the hub is gone, too.
[[gnu::noinline]] void ListenerHub::Begin(Notification& notification) {
    notification.outer = innermost_;
    innermost_ = &notification;
}

/// REQUIRES: the table still exists, and the hub with it
void ListenerHub::End(const Notification& notification, EntryStore& entries) {
    innermost_ = notification.outer;
    if (innermost_ != nullptr) innermost_->dispatching = false;
    ApplyPending(entries);
}

bool ListenerHub::NotifyKey(ITable& table, EntryStore& entries, std::uint32_t code, cstr key) {
    if (listeners_ == nullptr) return true;
    const ListenerSet& set = *listeners_;
    Notification notification{&table, code, key, 0, nullptr};
    Begin(notification);
    Dispatch(set, kRecordListener, Owner::kTable, notification);
    Dispatch(set, kArgumentListener, Owner::kTable, notification);
    if (notification.table_ended) return false;
    End(notification, entries);
    return true;
}

/// Looks up the sets as late as possible: a listener may give the table or the entry its first set.
DispatchResult ListenerHub::DispatchEntry(ITable& table, EntryStore& entries, std::uint32_t code, Pair& pair) {
    Notification notification{&table, code, pair.key, 0, &pair};
    Begin(notification);
    if (const ListenerSet* set = listeners_) {
        Dispatch(*set, kRecordListener, Owner::kTable, notification);
        Dispatch(*set, kArgumentListener, Owner::kTable, notification);
    }
    if (const ListenerSet* set = notification.entry == nullptr ? nullptr : pair.listeners) {
        Dispatch(*set, kRecordListener, Owner::kEntry, notification);
        Dispatch(*set, kArgumentListener, Owner::kEntry, notification);
    }
    if (notification.table_ended) return DispatchResult::kTableGone;
    End(notification, entries);
    return notification.entry == nullptr ? DispatchResult::kEntryGone : DispatchResult::kAllThere;
}

bool ListenerHub::NotifyIndex(ITable& table, EntryStore& entries, std::uint32_t code, std::uint32_t index) {
    if (listeners_ == nullptr) return true;
    Notification notification{&table, code, nullptr, index, nullptr};
    Begin(notification);
    Dispatch(*listeners_, kArrayListener, Owner::kTable, notification);
    if (notification.table_ended) return false;
    End(notification, entries);
    return true;
}

void ListenerHub::EntryEnded(const Pair& pair) {
    for (Notification* each = innermost_; each != nullptr; each = each->outer) {
        if (each->entry == &pair) each->entry = nullptr;
    }
}

void ListenerHub::EntryRenamed(const Pair& pair) {
    for (Notification* each = innermost_; each != nullptr; each = each->outer) {
        if (each->entry == &pair) each->key = pair.key;
    }
}

void ListenerHub::AllEntriesEnded() {
    for (Notification* each = innermost_; each != nullptr; each = each->outer) each->entry = nullptr;
}

/// Drops a request if its entry is gone or there is no memory for it.
void ListenerHub::ApplyPending(EntryStore& entries) {
    if (pending_ == nullptr) return;
    for (std::uint32_t i = 0; i < kListenerKinds; ++i) {
        const auto kind = static_cast<ListenerKind>(i);
        for (const PendingRecord& record : pending_->queues[kind]) {
            if (record.remove != 0) {
                RemoveNow(entries, kind, record.key, record.delegate);
            } else if (Delegate* slot = AddNow(entries, kind, record.key)) {
                *slot = record.delegate;
            }
        }
        pending_->queues[kind].Clear();
    }
}

void ListenerHub::Release() {
    for (Notification* each = innermost_; each != nullptr; each = each->outer) {
        each->entry = nullptr;
        each->table_ended = true;
    }
    delete pending_;
    pending_ = nullptr;
    if (listeners_ != nullptr) ListenerSet::Destroy(listeners_);
    listeners_ = nullptr;
}

} // namespace Tessarin
