/// \file
/// The interfaces of a table and of its entries, the listeners' types, and the kinds and codes that they use. C++ only.

#ifndef TESSARIN_TABLE_INTERFACE_H
#define TESSARIN_TABLE_INTERFACE_H

#include "tessarin/types.h"

#include <cstdint>

namespace Tessarin {

struct ITable;

/// What an entry holds. A table's setters never change the kind of an entry that has one.
enum ValueKind : std::uint32_t {
    VALUE_EMPTY = 0,           ///< no value yet
    VALUE_STRING = 1,          ///< a cstr, which may be null; paths too
    VALUE_TABLE = 2,           ///< a child table, owned: it ends with the entry
    VALUE_EXTERNAL_TABLE = 3,  ///< a borrowed table, never ended by the library
    VALUE_REFERENCE_TABLE = 4, ///< likewise; the difference matters only to the host
    VALUE_INTEGER = 5,         ///< signed, 32 bits
    VALUE_REAL = 6,            ///< 32-bit float
    VALUE_PTR = 7,             ///< a pointer of the host's, never dereferenced
    VALUE_FLOAT2 = 8,          ///< 2 floats
    VALUE_FLOAT3 = 9,          ///< 3 floats
    VALUE_FLOAT4 = 10,         ///< 4 floats
    VALUE_FLOAT4X4 = 11,       ///< 16 floats, in a block that the entry owns
    VALUE_HANDLE = 12          ///< a 32-bit value of the host's
};

/// The change that a listener is notified of. Each change has two codes: the one before it is the one after it plus 9.
enum EventCode : std::uint32_t {
    EVENT_ADDED = 0,             ///< an entry that the setter made has its value
    EVENT_CHANGED = 1,           ///< an entry that was there has its new value
    EVENT_REMOVED = 2,           ///< Remove has ended an entry; with its key
    EVENT_CLEARED = 3,           ///< Clear has ended all entries; without a key
    EVENT_RENAMED = 4,           ///< with the new key
    EVENT_ARRAY_CREATED = 5,     ///< the array part is there, without items; index 0
    EVENT_ARRAY_DESTROYED = 6,   ///< the array part is gone, or there was none; index 0
    EVENT_ITEM_SET = 7,          ///< with the item's index; raised also if the item couldn't be stored
    EVENT_ADDING = 9,            ///< the entry is there, with VALUE_EMPTY
    EVENT_CHANGING = 10,         ///< the entry still has the old value
    EVENT_REMOVING = 11,         ///< the entry is still there
    EVENT_CLEARING = 12,         ///< the entries are still there; without a key
    EVENT_RENAMING = 13,         ///< with the old key; raised even when the new key then proves to be taken
    EVENT_ARRAY_CREATING = 14,   ///< an array part that was there still has its items; index 0
    EVENT_ARRAY_DESTROYING = 15, ///< the array part, if there is one, is still there; index 0
    EVENT_ITEM_SETTING = 16      ///< with the item's index; the array part isn't changed yet
};

} // namespace Tessarin

/// The record that a record listener gets. Borrowed: it ends with the call.
struct TableEvent {
    std::uint32_t code;      ///< an EventCode
    Tessarin::ITable* table; ///< the table in which the change happens
    cstr key;                ///< the key concerned; null for EVENT_CLEARING and EVENT_CLEARED
};

/// A callable in two words. With both null it is empty, and an empty one is never called. Two are equal if both words
/// are. The real type of `function` is one of these, by the kind of the listener:
///   record listener    void (*)(void* object, TableEvent* event)
///   argument listener  void (*)(void* object, std::uint32_t code, Tessarin::ITable* table, cstr key)
///   array listener     void (*)(void* object, std::uint32_t code, Tessarin::ITable* table, std::uint32_t index)
struct Delegate {
    void* object;       ///< the first argument of the call; never owned: remove the listener before the object dies
    void (*function)(); ///< the function that is called; it must not throw: that ends the process
};

namespace Tessarin {

/// An entry of a table, borrowed: it is valid until the entry is removed, the table cleared or ended. It keeps its
/// address when the table grows, sorts or renames it.
///
/// The setters here change only the value: no listener is notified, nothing is compared, and the kind becomes that of
/// the setter. What the entry owned before (a child table, a matrix) is released first. They return 1; 0 for a null
/// `value` pointer.
///
/// Threads: those of the table.
struct IIterator {
    /// The key, as the table has it now.
    virtual cstr GetKey() = 0;
    /// The entry's ValueKind.
    virtual std::uint32_t GetType() = 0;
    /// The value's first 32 bits as they are, whatever the kind.
    virtual std::int32_t GetInteger() = 0;
    /// The value's first 32 bits read as a float, whatever the kind.
    virtual float GetReal() = 0;
    /// The string; null for any other kind.
    virtual cstr GetString() = 0;
    /// The table of the three kinds that hold one; null for any other kind.
    virtual ITable* GetTable() = 0;
    /// The pointer; null for any other kind.
    virtual void* GetPtr() = 0;
    /// Copies 2 words of 32 bits of the value whatever the kind; words that the kind doesn't use have no meaning.
    /// Always 1; a null `out` is ignored.
    virtual std::uint32_t GetFloat2(Float2* out) = 0;
    /// As GetFloat2, with 3 words.
    virtual std::uint32_t GetFloat3(Float3* out) = 0;
    /// As GetFloat2, with 4 words.
    virtual std::uint32_t GetFloat4(Float4* out) = 0;
    /// Copies the matrix and returns 1; 0, `out` unchanged, for any other kind and for a null `out`.
    virtual std::uint32_t GetFloat4x4(Float4x4* out) = 0;
    /// The value's first 32 bits as they are, whatever the kind.
    virtual Handle GetHandle() = 0;

    // The entry takes this value, whatever its old one was. A vector, matrix or handle is copied; a pointer or table
    // isn't.
    virtual std::uint32_t SetHandle(const Handle* value) = 0;
    /// Over a matrix the same block takes the new floats. 0 on an entry that has another kind, or when memory runs out;
    /// the entry is then unchanged.
    virtual std::uint32_t SetFloat4x4(const Float4x4* value) = 0;
    virtual std::uint32_t SetFloat4(const Float4* value) = 0;
    virtual std::uint32_t SetFloat3(const Float3* value) = 0;
    virtual std::uint32_t SetFloat2(const Float2* value) = 0;
    /// A reserved place in the order of operations; does nothing.
    virtual void Unassigned() = 0;
    /// The entry takes ownership of `table`, which ends with it.
    /// REQUIRES: `table` is null or came from this library, and nobody else closes it
    virtual std::uint32_t SetTable(ITable* table) = 0;
    /// REQUIRES: `text` is a cstr or null
    virtual std::uint32_t SetString(cstr text) = 0;
    virtual std::uint32_t SetReal(float value) = 0;
    virtual std::uint32_t SetInteger(std::int32_t value) = 0;
    /// As SetString. REQUIRES: `text` is in path form
    virtual std::uint32_t SetPath(cstr text) = 0;
    virtual std::uint32_t SetPtr(void* value) = 0;
    virtual std::uint32_t SetExternalTable(ITable* table) = 0;
    virtual std::uint32_t SetReferenceTable(ITable* table) = 0;

protected:
    virtual ~IIterator() = default;

public:
    /// As SetTable.
    virtual std::uint32_t Set(ITable* table) = 0;
};

/// A typed, hierarchical store: named values of twelve kinds, nested tables among them, and in addition an optional
/// array part: items of one size whose layout the host defines.
///
/// Keys and texts are ordinary NUL-terminated texts. Every operation interns them, getters too, so a key that was asked
/// for once stays in the table of interned strings. Keys keep their case. When memory runs out, the result is 0 or
/// null.
///
/// Order: up to 8 entries stay in the order in which they were added. More are sorted by the address of their key, and
/// stay sorted when later removals bring the number down to 8 again, until the next addition is put at the end. A
/// rename in a table of up to 8 moves the entry to the end.
///
/// Setters: a `notify` other than 0 notifies the listeners. They return 1, also when the value equals the stored one
/// (nothing is then stored and nobody notified). They return 0 if the entry has another kind, for a null key, for a
/// null pointer to a vector, matrix or handle, for a text that can't be interned, when memory runs out, or if a
/// listener has removed the entry before the value was stored. A setter that fails for lack of memory, or on a text,
/// may leave a new entry with VALUE_EMPTY, which every setter accepts.
///
/// Listeners run inside the operation, on its thread. They must neither throw nor leave by longjmp: an exception out of
/// a listener ends the process, and what a longjmp leaves is undefined. Each change notifies twice, before and after
/// it: first the table's listeners, then the entry's; of each, record listeners before argument listeners. An entry's
/// own listeners get EVENT_REMOVING and EVENT_RENAMING, but not EVENT_REMOVED, EVENT_RENAMED, EVENT_CLEARING and
/// EVENT_CLEARED, which only the table's listeners get. Array listeners get only the events of the array part. A
/// listener can't prevent a change.
///
/// A listener may change the table, this entry and others included. That raises notifications nested in its own; when
/// a nested one ends, requests to add or remove listeners are no longer deferred. If a listener removes or clears the
/// very entry that it is notified of, the entry's remaining listeners aren't called, the table's are. If it gives a new
/// entry a value of another kind, that kind stays and the operation returns 0. If it ends the table, no further
/// listener is called, and the operation returns 0 or null, or 1 if its work was done.
///
/// Threads: one at a time; reads of a table that nobody changes may run at the same time. Different tables are
/// independent.
///
/// Hosts end a table with CloseTable, never through its destructor.
struct ITable {
    /// The item in place, borrowed until SetArrayItem has to grow the array part, CreateArray or DestroyArray drops it,
    /// or the table ends; null beyond the last item or without an array part.
    virtual void* GetArrayItem(std::uint32_t index) = 0;

    // Getters with a fallback return it for a missing entry only. For a present one they return its first 32 bits (for
    // strings: its first pointer) as they are, whatever its kind: use Find and GetType where the kind isn't known.
    virtual std::int32_t GetInteger(const char* key, std::int32_t fallback) = 0;
    virtual float GetReal(const char* key, float fallback) = 0;
    virtual cstr GetString(const char* key, cstr fallback) = 0;
    /// The table of an entry that holds one, borrowed; null for a missing entry or any other kind.
    virtual ITable* GetTable(const char* key) = 0;
    /// The same as GetTable.
    virtual ITable* FindTable(const char* key) = 0;
    /// As with a fallback of 0.
    virtual std::int32_t GetInteger(const char* key) = 0;
    /// As with a fallback of 0, but an integer entry is converted to a float.
    virtual float GetReal(const char* key) = 0;
    /// As with a fallback of null.
    virtual cstr GetString(const char* key) = 0;
    /// The pointer; null for a missing entry or any other kind.
    virtual void* GetPtr(const char* key) = 0;
    /// Copies 2, 3 or 4 words of 32 bits of the value whatever its kind and returns 1; words that the kind doesn't use
    /// have no meaning. 0, `out` unchanged, for a missing entry. A null `out` is ignored.
    virtual std::uint32_t GetFloat2(const char* key, Float2* out) = 0;
    virtual std::uint32_t GetFloat3(const char* key, Float3* out) = 0;
    virtual std::uint32_t GetFloat4(const char* key, Float4* out) = 0;
    /// Copies the matrix and returns 1; 0, `out` unchanged, for a missing entry, any other kind or a null `out`.
    virtual std::uint32_t GetFloat4x4(const char* key, Float4x4* out) = 0;
    /// As GetInteger: the first 32 bits whatever the kind, 0 for a missing entry.
    virtual Handle GetHandle(const char* key) = 0;

    /// Copies an item into the array part, which becomes longer if need be; items in between are unset.
    /// data     the bytes of one item, also an item of this array. REQUIRES: they don't change while listeners run
    /// returns  the stored item, borrowed as from GetArrayItem; null without an array part (nobody is notified), and,
    ///          after both events, for a null `data`, when memory runs out, or if a listener has removed the array part
    ///          or made a new one with another item size
    virtual void* SetArrayItem(std::uint32_t index, const void* data, std::uint32_t notify) = 0;

    // The setters: the contract is at the top.
    virtual std::uint32_t SetHandle(const char* key, const Handle* value, std::uint32_t notify) = 0;
    /// Never counts as the same: stores and notifies each time. The matrix is copied.
    virtual std::uint32_t SetFloat4x4(const char* key, const Float4x4* value, std::uint32_t notify) = 0;
    // Vectors count as the same if every component differs by less than 2^-23, absolute; a NaN never is. They are
    // copied.
    virtual std::uint32_t SetFloat4(const char* key, const Float4* value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetFloat3(const char* key, const Float3* value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetFloat2(const char* key, const Float2* value, std::uint32_t notify) = 0;
    /// On success this table takes ownership of `table`: it ends with the entry, and the host must not close it any
    /// more. 0 if the entry has a value of any kind.
    /// REQUIRES: `table` came from a factory of this library or is null
    virtual std::uint32_t SetTable(const char* key, ITable* table, std::uint32_t notify) = 0;
    /// Interns `text`, case and all. A null `text` stores a null string.
    virtual std::uint32_t SetString(const char* key, const char* text, std::uint32_t notify) = 0;
    /// Counts as the same if equal as floats: a NaN never is, 0.0 and -0.0 are.
    virtual std::uint32_t SetReal(const char* key, float value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetInteger(const char* key, std::int32_t value, std::uint32_t notify) = 0;
    /// Makes a new child table under `key`.
    /// returns  the child, owned by this table; null if the entry has a value of any kind (GetTable returns it), when
    ///          memory runs out (a new entry then stays, empty), or if a listener has removed the entry or stored
    ///          another value in it
    virtual ITable* Set(const char* key, std::uint32_t notify) = 0;
    /// Stores the path form of `path` as a string (see cstr_path); null as in SetString.
    virtual std::uint32_t SetPath(const char* key, const char* path, std::uint32_t notify) = 0;
    virtual std::uint32_t SetPtr(const char* key, void* value, std::uint32_t notify) = 0;

    /// Gives the entry another key; its address, value and listeners stay.
    /// returns  1; 0 if `old_key` is absent, if `new_key` is present (the same key included), for a null key, or if a
    ///          listener has ended the table
    virtual std::uint32_t Rename(const char* old_key, const char* new_key, std::uint32_t notify) = 0;

    /// Makes the array part, or empties the one that is there, for items of `item_size` bytes. Always notifies.
    /// An `item_size` of 0 is accepted: items then have no bytes.
    /// returns  1; 0 when memory runs out, the items that were there gone and only EVENT_ARRAY_CREATING raised
    virtual std::uint32_t CreateArray(std::uint32_t item_size) = 0;
    /// Removes the array part if there is one. Always notifies, always returns 1.
    virtual std::uint32_t DestroyArray() = 0;

    /// The number of items if there is an array part, else the number of entries.
    virtual std::uint32_t GetCount() = 0;
    /// The number of entries.
    virtual std::uint32_t GetElementCount() = 0;
    /// The number of items in the array part, 0 without one.
    virtual std::uint32_t GetArrayCount() = 0;

    // Store a borrowed table, which another call may replace by another; a save writes it in full. The library never
    // ends it: the host removes the entry, or ends this table, before that table ends. Null is accepted.
    virtual std::uint32_t SetExternalTable(const char* key, ITable* table, std::uint32_t notify) = 0;
    virtual std::uint32_t SetReferenceTable(const char* key, ITable* table, std::uint32_t notify) = 0;

    /// Removes an entry with all that it owns: child table, matrix, listeners.
    /// returns  1; 0 if there is none, or if a listener has removed it or ended the table
    virtual std::uint32_t Remove(const char* key, std::uint32_t notify) = 0;
    /// Removes all entries with what they own, their listeners included; the array part, the table's own listeners and
    /// the capacity stay. Always 1.
    virtual std::uint32_t Clear(std::uint32_t notify) = 0;

    // Reserved places in the order of operations; they return 0.
    virtual std::uint32_t ReservedFirst(void* unused) = 0;
    virtual std::uint32_t ReservedSecond(void* unused) = 0;

    /// Writes the entries as a JSON document, compact, in the order of the walk. Pointers, handles and empty entries
    /// are left out, so are the array part and the listeners; external and reference tables are written in full; a
    /// null table and a real that isn't finite are `null`; a null string is an empty one.
    ///
    /// A `"` in a string or a key loses data when the document is loaded again: the load ends the string there, and the
    /// table is empty, or without later members if what follows happens to be valid. `x"}//` as a player's name drops
    /// every later member. Refuse `"` in texts that others choose, or keep such texts elsewhere.
    /// returns  1; 0 for a null or empty path, a file that can't be written whole, a table that contains itself, a text
    ///          of 4 GiB or more, or when memory runs out
    virtual std::uint32_t SaveFile(const char* path) = 0;
    /// As SaveFile, but into memory.
    /// data     receives a block from malloc, without a NUL at the end, which the caller frees; null on failure
    /// size     receives its length in bytes
    /// returns  1; 0 for a null argument, a table that contains itself, a text of 4 GiB or more, or when memory
    ///          runs out
    virtual std::uint32_t SaveBuffer(void** data, std::uint32_t* size) = 0;

    /// The first entry, borrowed, or null. A walk begins here and calls Next until that returns null.
    virtual IIterator* First() = 0;
    /// The entry after the one that `cursor` holds, or null at the end. `cursor` itself isn't changed: the caller
    /// assigns the result. For a null `cursor`, or one that holds null, the result is null.
    /// REQUIRES: the entry is still in the table. An addition, rename or removal during a walk may change the order
    virtual IIterator* Next(IIterator** cursor) = 0;
    /// The entry of `key`, borrowed, or null.
    virtual IIterator* Find(const char* key) = 0;

    // Adding a listener returns an empty delegate, which the caller fills in at once, before any other call on the
    // table; null for a key without an entry, or when memory runs out. Without a key the listener is the table's. An
    // entry's listener lives as long as the entry, also after a rename. A request during a notification of listeners is
    // deferred until the notification ends: it returns a delegate for any key, and is then dropped if there is no such
    // entry or no memory.
    virtual Delegate* AddRecordListener() = 0;
    virtual Delegate* AddRecordListener(const char* key) = 0;
    virtual Delegate* AddArgumentListener() = 0;
    virtual Delegate* AddArgumentListener(const char* key) = 0;
    virtual Delegate* AddArrayListener() = 0;

    // Removing takes out every equal delegate of that kind, of the table or of the entry of `key`; the order of the
    // rest may change. Without an equal delegate, or for null, nothing happens. During a notification the request is
    // deferred until it ends, and the listener may still be called until then; if memory runs out the request is
    // dropped.
    virtual void RemoveArrayListener(const Delegate* delegate) = 0;
    virtual void RemoveArgumentListener(const char* key, const Delegate* delegate) = 0;
    virtual void RemoveArgumentListener(const Delegate* delegate) = 0;
    virtual void RemoveRecordListener(const char* key, const Delegate* delegate) = 0;
    virtual void RemoveRecordListener(const Delegate* delegate) = 0;

protected:
    virtual ~ITable() = default;
};

} // namespace Tessarin

/// The functions that a delegate made from a member function calls.
namespace Tessarin::Calls {

/// Calls the method of a record listener.
template <auto Method, class T>
void Record(void* object, TableEvent* event) {
    (static_cast<T*>(object)->*Method)(event);
}

/// Calls the method of an argument listener.
template <auto Method, class T>
void Argument(void* object, std::uint32_t code, ITable* table, cstr key) {
    (static_cast<T*>(object)->*Method)(code, table, key);
}

/// Calls the method of an array listener.
template <auto Method, class T>
void Array(void* object, std::uint32_t code, ITable* table, std::uint32_t index) {
    (static_cast<T*>(object)->*Method)(code, table, index);
}

} // namespace Tessarin::Calls

/// A delegate that calls `(object->*Method)(TableEvent*)`. `object` is borrowed, see Delegate.
template <auto Method, class T>
Delegate RecordDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Record<Method, T>)};
}

/// A delegate that calls `(object->*Method)(code, table, key)`. `object` is borrowed, see Delegate.
template <auto Method, class T>
Delegate ArgumentDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Argument<Method, T>)};
}

/// A delegate that calls `(object->*Method)(code, table, index)`. `object` is borrowed, see Delegate.
template <auto Method, class T>
Delegate ArrayDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Array<Method, T>)};
}

#endif
