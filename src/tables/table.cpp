// The operations of a table. All setters follow one pattern: find the entry or make it, check its kind, return at once
// if the value is the same, notify the listeners, store, notify them again. They differ in when a value counts as the
// same and in how it is stored, so a setter states only these two.
//
// Invariant: a listener may end the table or the entry, or store a value. So after each notification that isn't the
// last step, an operation looks at the result, which says whether table and entry still exist, and checks the entry's
// kind again.
//
// SaveFile and SaveBuffer are defined with the document form that they write.

#include "tables/table.h"

#include "strings/string_table.h"
#include "tables/table_factory.h"

namespace Tessarin {
namespace {

cstr Interned(const char* text) { return string_table->Intern(text); }
cstr InternedPath(const char* path) { return string_table->InternPath(path); }

/// The code before a change, from the code after it.
constexpr std::uint32_t Before(std::uint32_t after) { return after + (EVENT_ADDING - EVENT_ADDED); }

} // namespace

// ------------------------------------------------------------------------------------------------------- getters

Pair* Table::FindEntry(const char* key) const { return entries_.Find(Interned(key)); }

std::int32_t Table::GetInteger(const char* key, std::int32_t fallback) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? fallback : pair->GetInteger();
}

float Table::GetReal(const char* key, float fallback) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? fallback : pair->GetReal();
}

cstr Table::GetString(const char* key, cstr fallback) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? fallback : pair->value.As<cstr>();
}

ITable* Table::GetTable(const char* key) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? nullptr : pair->GetTable();
}

ITable* Table::FindTable(const char* key) { return GetTable(key); }

std::int32_t Table::GetInteger(const char* key) { return GetInteger(key, 0); }

float Table::GetReal(const char* key) {
    Pair* pair = FindEntry(key);
    if (pair == nullptr) return 0.0F;
    return pair->kind == VALUE_INTEGER ? NearestFloat(pair->GetInteger()) : pair->GetReal();
}

cstr Table::GetString(const char* key) { return GetString(key, nullptr); }

void* Table::GetPtr(const char* key) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? nullptr : pair->GetPtr();
}

std::uint32_t Table::GetFloat2(const char* key, Float2* out) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? 0 : pair->GetFloat2(out);
}

std::uint32_t Table::GetFloat3(const char* key, Float3* out) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? 0 : pair->GetFloat3(out);
}

std::uint32_t Table::GetFloat4(const char* key, Float4* out) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? 0 : pair->GetFloat4(out);
}

std::uint32_t Table::GetFloat4x4(const char* key, Float4x4* out) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? 0 : pair->GetFloat4x4(out);
}

Handle Table::GetHandle(const char* key) {
    Pair* pair = FindEntry(key);
    return pair == nullptr ? 0 : pair->GetHandle();
}

// ------------------------------------------------------------------------------------------------------- setters

Table::Target Table::TargetFor(const char* key, ValueKind kind) {
    Target target;
    target.pair = entries_.FindOrAdd(Interned(key), target.existed);
    if (target.pair != nullptr && !target.Takes(kind)) target.pair = nullptr;
    return target;
}

/// Stores through `store`, and notifies the listeners before and after. A listener may store a value meanwhile: the
/// kind of that value then decides whether the entry accepts the new one.
template <class Store>
Table::Outcome Table::Commit(Target target, ValueKind kind, std::uint32_t notify, Store store) {
    const std::uint32_t code = target.existed ? EVENT_CHANGED : EVENT_ADDED;
    if (notify != 0 &&
        listeners_.NotifyEntry(*this, entries_, Before(code), *target.pair) != DispatchResult::kAllThere) {
        return Outcome::kRefused;
    }
    if (!target.Takes(kind) || store(*target.pair) == 0) return Outcome::kRefused;
    const bool stayed =
        notify == 0 || listeners_.NotifyEntry(*this, entries_, code, *target.pair) == DispatchResult::kAllThere;
    return stayed ? Outcome::kStored : Outcome::kStoredAndEnded;
}

template <class Same, class Store>
std::uint32_t Table::Assign(const char* key, ValueKind kind, std::uint32_t notify, Same same, Store store) {
    const Target target = TargetFor(key, kind);
    if (target.pair == nullptr) return 0;
    if (target.pair->kind == kind && same(*target.pair)) return 1;
    return Commit(target, kind, notify, store) == Outcome::kRefused ? 0 : 1;
}

/// Works on a copy, as `value` may point to something that a listener changes.
template <class Vector>
std::uint32_t Table::AssignVector(const char* key, ValueKind kind, const Vector* value, std::uint32_t notify,
                                  std::uint32_t (Pair::*store)(const Vector*)) {
    if (value == nullptr) return 0;
    const Vector copy = *value;
    return Assign(
        key, kind, notify, [&copy](const Pair& pair) { return pair.SameVector(copy); },
        [&copy, store](Pair& pair) { return (pair.*store)(&copy); });
}

std::uint32_t Table::SetFloat2(const char* key, const Float2* value, std::uint32_t notify) {
    return AssignVector(key, VALUE_FLOAT2, value, notify, &Pair::SetFloat2);
}

std::uint32_t Table::SetFloat3(const char* key, const Float3* value, std::uint32_t notify) {
    return AssignVector(key, VALUE_FLOAT3, value, notify, &Pair::SetFloat3);
}

std::uint32_t Table::SetFloat4(const char* key, const Float4* value, std::uint32_t notify) {
    return AssignVector(key, VALUE_FLOAT4, value, notify, &Pair::SetFloat4);
}

std::uint32_t Table::SetFloat4x4(const char* key, const Float4x4* value, std::uint32_t notify) {
    if (value == nullptr) return 0;
    const Float4x4 copy = *value;
    const auto never_same = [](const Pair&) { return false; };
    return Assign(key, VALUE_FLOAT4X4, notify, never_same, [&copy](Pair& pair) { return pair.SetFloat4x4(&copy); });
}

std::uint32_t Table::SetHandle(const char* key, const Handle* value, std::uint32_t notify) {
    if (value == nullptr) return 0;
    const Handle copy = *value;
    return Assign(
        key, VALUE_HANDLE, notify, [copy](Pair& pair) { return pair.GetHandle() == copy; },
        [copy](Pair& pair) { return pair.SetHandle(&copy); });
}

std::uint32_t Table::SetReal(const char* key, float value, std::uint32_t notify) {
    return Assign(
        key, VALUE_REAL, notify, [value](Pair& pair) { return IsEqual(pair.GetReal(), value); },
        [value](Pair& pair) { return pair.SetReal(value); });
}

std::uint32_t Table::SetInteger(const char* key, std::int32_t value, std::uint32_t notify) {
    return Assign(
        key, VALUE_INTEGER, notify, [value](Pair& pair) { return pair.GetInteger() == value; },
        [value](Pair& pair) { return pair.SetInteger(value); });
}

std::uint32_t Table::SetPtr(const char* key, void* value, std::uint32_t notify) {
    return Assign(
        key, VALUE_PTR, notify, [value](Pair& pair) { return pair.GetPtr() == value; },
        [value](Pair& pair) { return pair.SetPtr(value); });
}

/// Interns the text only if the entry accepts one.
std::uint32_t Table::AssignText(const char* key, const char* text, cstr (*intern)(const char*), std::uint32_t notify) {
    const Target target = TargetFor(key, VALUE_STRING);
    if (target.pair == nullptr) return 0;
    cstr interned = intern(text);
    if (interned == nullptr && text != nullptr) return 0;
    if (target.pair->kind == VALUE_STRING && target.pair->GetString() == interned) return 1;
    const auto store = [interned](Pair& pair) { return pair.SetString(interned); };
    return Commit(target, VALUE_STRING, notify, store) == Outcome::kRefused ? 0 : 1;
}

std::uint32_t Table::SetString(const char* key, const char* text, std::uint32_t notify) {
    return AssignText(key, text, Interned, notify);
}

std::uint32_t Table::SetPath(const char* key, const char* path, std::uint32_t notify) {
    return AssignText(key, path, InternedPath, notify);
}

std::uint32_t Table::SetExternalTable(const char* key, ITable* table, std::uint32_t notify) {
    return Assign(
        key, VALUE_EXTERNAL_TABLE, notify, [table](Pair& pair) { return pair.GetTable() == table; },
        [table](Pair& pair) { return pair.SetExternalTable(table); });
}

std::uint32_t Table::SetReferenceTable(const char* key, ITable* table, std::uint32_t notify) {
    return Assign(
        key, VALUE_REFERENCE_TABLE, notify, [table](Pair& pair) { return pair.GetTable() == table; },
        [table](Pair& pair) { return pair.SetReferenceTable(table); });
}

std::uint32_t Table::SetTable(const char* key, ITable* table, std::uint32_t notify) {
    const Target target = TargetFor(key, VALUE_EMPTY);
    if (target.pair == nullptr) return 0;
    const auto store = [table](Pair& pair) { return pair.SetTable(table); };
    return Commit(target, VALUE_EMPTY, notify, store) == Outcome::kRefused ? 0 : 1;
}

ITable* Table::Set(const char* key, std::uint32_t notify) {
    const Target target = TargetFor(key, VALUE_EMPTY);
    if (target.pair == nullptr) return nullptr;
    Table* child = MakeChild();
    if (child == nullptr) return nullptr;
    const Outcome outcome = Commit(target, VALUE_EMPTY, notify, [child](Pair& pair) { return pair.Set(child); });
    if (outcome == Outcome::kRefused) DestroyRegistered(child);
    const bool stayed = outcome == Outcome::kStored && target.pair->OwnedTable() == child;
    return stayed ? child : nullptr; // a listener may have destroyed the entry, or put another value in it
}

// ----------------------------------------------------------------------------------------------- the set of entries

std::uint32_t Table::Rename(const char* old_key, const char* new_key, std::uint32_t notify) {
    cstr old_name = Interned(old_key);
    cstr new_name = Interned(new_key);
    if (notify != 0) {
        Pair* pair = entries_.Find(old_name);
        if (pair == nullptr ||
            listeners_.NotifyEntry(*this, entries_, EVENT_RENAMING, *pair) == DispatchResult::kTableGone)
            return 0;
    }
    if (!entries_.Rename(old_name, new_name)) return 0;
    listeners_.EntryRenamed(*entries_.Find(new_name));
    if (notify != 0) listeners_.NotifyKey(*this, entries_, EVENT_RENAMED, new_name);
    return 1;
}

std::uint32_t Table::Remove(const char* key, std::uint32_t notify) {
    cstr name = Interned(key);
    if (notify != 0) {
        Pair* pair = entries_.Find(name);
        if (pair == nullptr ||
            listeners_.NotifyEntry(*this, entries_, EVENT_REMOVING, *pair) == DispatchResult::kTableGone)
            return 0;
    }
    Pair* pair = entries_.Take(name);
    if (pair == nullptr) return 0;
    listeners_.EntryEnded(*pair);
    pair->next = nullptr;
    DestroyEntries(pair);
    if (notify != 0) listeners_.NotifyKey(*this, entries_, EVENT_REMOVED, name);
    return 1;
}

std::uint32_t Table::Clear(std::uint32_t notify) {
    if (notify != 0 && !listeners_.NotifyKey(*this, entries_, EVENT_CLEARING, nullptr)) return 1;
    listeners_.AllEntriesEnded();
    DestroyEntries(entries_.TakeAll(nullptr));
    if (notify != 0) listeners_.NotifyKey(*this, entries_, EVENT_CLEARED, nullptr);
    return 1;
}

// ------------------------------------------------------------------------------------------------------- array part

std::uint32_t Table::CreateArray(std::uint32_t item_size) {
    if (!listeners_.NotifyIndex(*this, entries_, EVENT_ARRAY_CREATING, 0)) return 0;
    if (array_ == nullptr) array_ = TableArray::Create();
    if (array_ == nullptr || !array_->Reset(item_size)) return 0;
    listeners_.NotifyIndex(*this, entries_, EVENT_ARRAY_CREATED, 0);
    return 1;
}

std::uint32_t Table::DestroyArray() {
    if (!listeners_.NotifyIndex(*this, entries_, EVENT_ARRAY_DESTROYING, 0)) return 1;
    TableArray::Destroy(array_);
    array_ = nullptr;
    listeners_.NotifyIndex(*this, entries_, EVENT_ARRAY_DESTROYED, 0);
    return 1;
}

void* Table::SetArrayItem(std::uint32_t index, const void* data, std::uint32_t notify) {
    if (array_ == nullptr) return nullptr;
    const std::uint32_t item_size = array_->item_size;
    if (notify != 0 && !listeners_.NotifyIndex(*this, entries_, EVENT_ITEM_SETTING, index)) return nullptr;
    // A listener may have removed the array, or made a new one whose items are larger or smaller than `data`.
    const bool same_array = array_ != nullptr && array_->item_size == item_size;
    const bool stored = same_array && array_->SetItem(index, data) != nullptr;
    if (notify != 0 && !listeners_.NotifyIndex(*this, entries_, EVENT_ITEM_SET, index)) return nullptr;
    return stored ? GetArrayItem(index) : nullptr;
}

void* Table::GetArrayItem(std::uint32_t index) { return array_ == nullptr ? nullptr : array_->Item(index); }

std::uint32_t Table::GetCount() { return array_ == nullptr ? entries_.Count() : array_->Count(); }
std::uint32_t Table::GetElementCount() { return entries_.Count(); }
std::uint32_t Table::GetArrayCount() { return array_ == nullptr ? 0 : array_->Count(); }

std::uint32_t Table::ReservedFirst(void*) { return 0; }
std::uint32_t Table::ReservedSecond(void*) { return 0; }

// ------------------------------------------------------------------------------------------------ walk and listeners

IIterator* Table::First() { return entries_.First(); }

IIterator* Table::Next(IIterator** cursor) {
    return cursor == nullptr || *cursor == nullptr ? nullptr : static_cast<Pair*>(*cursor)->next;
}

IIterator* Table::Find(const char* key) { return FindEntry(key); }

/// Adds a listener of one entry. A key that can't be interned isn't passed on: null would mean the whole table.
Delegate* Table::AddListener(ListenerKind kind, const char* key) {
    cstr name = Interned(key);
    return name == nullptr ? nullptr : listeners_.Add(entries_, kind, name);
}

/// Passes a copy, as `delegate` may be a slot of the vector from which it is removed.
void Table::RemoveListener(ListenerKind kind, const char* key, const Delegate* delegate) {
    cstr name = Interned(key);
    if (name != nullptr && delegate != nullptr) listeners_.Remove(entries_, kind, name, Delegate(*delegate));
}

void Table::RemoveListener(ListenerKind kind, const Delegate* delegate) {
    if (delegate != nullptr) listeners_.Remove(entries_, kind, nullptr, Delegate(*delegate));
}

Delegate* Table::AddRecordListener() { return listeners_.Add(entries_, kRecordListener, nullptr); }
Delegate* Table::AddRecordListener(const char* key) { return AddListener(kRecordListener, key); }
Delegate* Table::AddArgumentListener() { return listeners_.Add(entries_, kArgumentListener, nullptr); }
Delegate* Table::AddArgumentListener(const char* key) { return AddListener(kArgumentListener, key); }
Delegate* Table::AddArrayListener() { return listeners_.Add(entries_, kArrayListener, nullptr); }

void Table::RemoveArrayListener(const Delegate* delegate) { RemoveListener(kArrayListener, delegate); }
void Table::RemoveArgumentListener(const char* key, const Delegate* delegate) {
    RemoveListener(kArgumentListener, key, delegate);
}
void Table::RemoveArgumentListener(const Delegate* delegate) { RemoveListener(kArgumentListener, delegate); }
void Table::RemoveRecordListener(const char* key, const Delegate* delegate) {
    RemoveListener(kRecordListener, key, delegate);
}
void Table::RemoveRecordListener(const Delegate* delegate) { RemoveListener(kRecordListener, delegate); }

// -------------------------------------------------------------------------------------------------------------- end

Pair* Table::Dismantle(Pair* behind) {
    listeners_.Release();
    TableArray::Destroy(array_);
    return entries_.Dissolve(behind);
}

} // namespace Tessarin
