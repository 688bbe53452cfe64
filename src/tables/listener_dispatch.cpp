// The three notifications are one pattern: begin, dispatch to the sets that concern them, and, unless a listener has
// ended the table, end and carry out what is pending.

#include "tables/listener_dispatch.h"

#include <new>

namespace Tessarin {
namespace {

/// What a listener set hangs on.
enum class Owner { kTable, kEntry };

bool IsThere(const Notification& notification, Owner owner) {
    return owner == Owner::kTable ? !notification.table_ended : notification.entry != nullptr;
}

void Call(const Delegate& delegate, ListenerKind kind, const Notification& notification) {
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

/// Calls the listeners of one kind in turn, for as long as the owner of their set is there: without it there is no set
/// to look at. Count and data are read anew at each step, as a listener may change them.
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

/// Where the listener set of an entry, or of the table for a null key, hangs; null if there is no such entry.
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

/// Not inlined: g++ would warn that a hub may keep the address of its caller's variable. Only one whose table has ended
/// does, and that one is gone.
[[gnu::noinline]] void ListenerHub::Begin(Notification& notification) {
    notification.outer = innermost_;
    innermost_ = &notification;
}

/// REQUIRES: the table is there, and the hub with it
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

/// The sets are looked up as late as possible: a listener may give the table or the entry its first one.
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

/// A record whose entry is gone, or for which there is no memory, is dropped.
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
