#include "tables/listeners.h"

#include "tables/table.h"

#include <new>

namespace Tessarin {

namespace {

/// Calls the delegates of a vector in turn, each through `call`, for as long as `there` says that the vector's owner
/// is. Count and data are read anew at each step, as a listener may change them.
template <class There, class Call>
void Tell(const DelegateVector& vector, There there, Call call) {
    for (std::uint32_t i = 0; there() && i < vector.count; ++i) {
        Delegate delegate = vector.data[i];
        if (delegate.function != nullptr) call(delegate);
    }
}

/// Record listeners first, then argument listeners.
template <class There>
void TellOfKey(const ListenerSet& set, There there, Table& table, std::uint32_t code,
               const Notification& notification) {
    using RecordFunction = void (*)(void*, TableEvent*);
    using ArgumentFunction = void (*)(void*, std::uint32_t, ITable*, cstr);
    Tell(set.vectors[kRecordListener], there, [&](const Delegate& delegate) {
        TableEvent event{code, &table, notification.key};
        reinterpret_cast<RecordFunction>(delegate.function)(delegate.object, &event);
    });
    if (!there()) return;
    Tell(set.vectors[kArgumentListener], there, [&](const Delegate& delegate) {
        reinterpret_cast<ArgumentFunction>(delegate.function)(delegate.object, code, &table, notification.key);
    });
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

void ListenerHub::Begin(Notification& notification) {
    notification.outer = Innermost();
    SetUnderWay(&notification, kDispatching);
}

/// Carries out what was asked for meanwhile; false if the table is gone and its hub with it.
bool ListenerHub::End(const Notification& notification, EntryStore& entries) {
    if (notification.table_ended) return false;
    SetUnderWay(notification.outer, kDispatching);
    ApplyPending(entries);
    return true;
}

bool ListenerHub::NotifyKey(Table& table, std::uint32_t code, cstr key) {
    if (listeners_ == nullptr) return true;
    Notification notification{nullptr, key};
    Begin(notification);
    TellOfKey(
        *listeners_, [&] { return !notification.table_ended; }, table, code, notification);
    return End(notification, table.Entries());
}

Told ListenerHub::TellOfEntry(Table& table, std::uint32_t code, Pair& pair) {
    Notification notification{&pair, pair.key};
    Begin(notification);
    if (listeners_ != nullptr) {
        TellOfKey(
            *listeners_, [&] { return !notification.table_ended; }, table, code, notification);
    }
    if (notification.entry != nullptr && pair.listeners != nullptr) {
        TellOfKey(
            *pair.listeners, [&] { return notification.entry != nullptr; }, table, code, notification);
    }
    if (!End(notification, table.Entries())) return Told::kTableGone;
    return notification.entry == nullptr ? Told::kEntryGone : Told::kAllThere;
}

bool ListenerHub::NotifyIndex(Table& table, std::uint32_t code, std::uint32_t index) {
    using ArrayFunction = void (*)(void*, std::uint32_t, ITable*, std::uint32_t);
    if (listeners_ == nullptr) return true;
    Notification notification{nullptr, nullptr};
    Begin(notification);
    Tell(
        listeners_->vectors[kArrayListener], [&] { return !notification.table_ended; },
        [&](const Delegate& delegate) {
            reinterpret_cast<ArrayFunction>(delegate.function)(delegate.object, code, &table, index);
        });
    return End(notification, table.Entries());
}

void ListenerHub::EntryEnded(const Pair& pair) {
    for (Notification* each = Innermost(); each != nullptr; each = each->outer) {
        if (each->entry == &pair) each->entry = nullptr;
    }
}

void ListenerHub::EntryRenamed(const Pair& pair) {
    for (Notification* each = Innermost(); each != nullptr; each = each->outer) {
        if (each->entry == &pair) each->key = pair.key;
    }
}

void ListenerHub::AllEntriesEnded() {
    for (Notification* each = Innermost(); each != nullptr; each = each->outer) each->entry = nullptr;
}

/// Ends every notification. A record whose entry is gone, or for which there is no memory, is dropped.
void ListenerHub::ApplyPending(EntryStore& entries) {
    SetUnderWay(Innermost(), 0);
    if (pending_ == nullptr) return;
    for (std::uint32_t i = 0; i < kListenerKinds; ++i) {
        auto kind = static_cast<ListenerKind>(i);
        List<PendingRecord>& queue = pending_->queues[kind];
        for (const PendingRecord& record : queue) {
            if (record.remove != 0) {
                RemoveNow(entries, kind, record.key, record.delegate);
            } else if (Delegate* slot = AddNow(entries, kind, record.key)) {
                *slot = record.delegate;
            }
        }
        queue.Clear();
    }
}

void ListenerHub::Release() {
    for (Notification* each = Innermost(); each != nullptr; each = each->outer) {
        each->entry = nullptr;
        each->table_ended = true;
    }
    delete pending_;
    pending_ = nullptr;
    if (listeners_ != nullptr) ListenerSet::Destroy(listeners_);
    listeners_ = nullptr;
}

} // namespace Tessarin
