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
    VALUE_EXTERNAL_TABLE = 3,  ///< a table of somebody else's
    VALUE_REFERENCE_TABLE = 4, ///< likewise; only the host knows the difference
    VALUE_INTEGER = 5,         ///< signed, 32 bits
    VALUE_REAL = 6,            ///< 32-bit float
    VALUE_PTR = 7,             ///< a pointer of the host's, never followed
    VALUE_FLOAT2 = 8,
    VALUE_FLOAT3 = 9,
    VALUE_FLOAT4 = 10,
    VALUE_FLOAT4X4 = 11,
    VALUE_HANDLE = 12 ///< a 32-bit value of the host's
};

/// What a listener is told. Every change has a code for before it, which is the code for after it plus 9.
enum EventCode : std::uint32_t {
    EVENT_ADDED = 0,
    EVENT_CHANGED = 1,
    EVENT_REMOVED = 2,
    EVENT_CLEARED = 3,
    EVENT_RENAMED = 4, ///< with the new key
    EVENT_ARRAY_CREATED = 5,
    EVENT_ARRAY_DESTROYED = 6,
    EVENT_ITEM_SET = 7,
    EVENT_ADDING = 9,    ///< the entry is there, with VALUE_EMPTY
    EVENT_CHANGING = 10, ///< the entry still has the old value
    EVENT_REMOVING = 11,
    EVENT_CLEARING = 12,
    EVENT_RENAMING = 13, ///< with the old key; goes out even when the new key is then found taken
    EVENT_ARRAY_CREATING = 14,
    EVENT_ARRAY_DESTROYING = 15,
    EVENT_ITEM_SETTING = 16
};

} // namespace Tessarin

/// The record that a record listener gets; it ends with the call.
struct TableEvent {
    std::uint32_t code;      ///< an EventCode
    Tessarin::ITable* table; ///< the table in which the change happens
    cstr key;                ///< the key concerned; null for EVENT_CLEARING and EVENT_CLEARED
};

/// A callable in two words; both null is empty, and an empty one is never called. Two are equal if both words are.
/// `function` is really one of these, by the kind of the listener:
///   record listener    void (*)(void* object, TableEvent* event)
///   argument listener  void (*)(void* object, std::uint32_t code, Tessarin::ITable* table, cstr key)
///   array listener     void (*)(void* object, std::uint32_t code, Tessarin::ITable* table, std::uint32_t index)
struct Delegate {
    void* object;       ///< handed to the function first; never owned: remove the listener before the object dies
    void (*function)(); ///< what is called
};

namespace Tessarin {

/// An entry of a table, borrowed: it is valid until the entry is removed, the table cleared or ended. It keeps its
/// address when the table grows, sorts or renames it.
///
/// The setters here go to the value alone: no listener hears of them, nothing is compared, and the kind becomes that of
/// the setter. What the entry owned before (a child table, a matrix) is released first. They answer 1; 0 for a null
/// `value` pointer. Threads: those of the table.
struct IIterator {
    /// The key, as the table has it now.
    virtual cstr GetKey() = 0;
    /// The entry's ValueKind.
    virtual std::uint32_t GetType() = 0;
    /// The value's first 32 bits as they stand, whatever the kind.
    virtual std::int32_t GetInteger() = 0;
    /// The value's first 32 bits read as a float, whatever the kind.
    virtual float GetReal() = 0;
    /// The string; null for any other kind.
    virtual cstr GetString() = 0;
    /// The table of the three kinds that hold one; null for any other kind.
    virtual ITable* GetTable() = 0;
    /// The pointer; null for any other kind.
    virtual void* GetPtr() = 0;
    /// Copies 2 words of the value whatever the kind; words that the kind doesn't use mean nothing. Always 1.
    virtual std::uint32_t GetFloat2(Float2* out) = 0;
    /// Likewise 3 words.
    virtual std::uint32_t GetFloat3(Float3* out) = 0;
    /// Likewise 4 words.
    virtual std::uint32_t GetFloat4(Float4* out) = 0;
    /// Copies the matrix and answers 1; 0, `out` untouched, for any other kind.
    virtual std::uint32_t GetFloat4x4(Float4x4* out) = 0;
    /// The value's first 32 bits as they stand, whatever the kind.
    virtual Handle GetHandle() = 0;

    // The entry takes this value, whatever it held.
    virtual std::uint32_t SetHandle(const Handle* value) = 0;
    /// Over a matrix the same block takes the new floats. 0 on an entry that has another kind, or when memory runs out.
    virtual std::uint32_t SetFloat4x4(const Float4x4* value) = 0;
    virtual std::uint32_t SetFloat4(const Float4* value) = 0;
    virtual std::uint32_t SetFloat3(const Float3* value) = 0;
    virtual std::uint32_t SetFloat2(const Float2* value) = 0;
    /// A place without a purpose; does nothing.
    virtual void Unassigned() = 0;
    /// Hands `table` over: it ends with the entry. It must have come from this library, and nobody else may close it.
    virtual std::uint32_t SetTable(ITable* table) = 0;
    /// `text` is a cstr already, or null.
    virtual std::uint32_t SetString(cstr text) = 0;
    virtual std::uint32_t SetReal(float value) = 0;
    virtual std::uint32_t SetInteger(std::int32_t value) = 0;
    /// As SetString: the caller has made the path form.
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

/// A typed, hierarchical store: named values of twelve kinds, nested tables among them, and beside them an optional
/// array of equal items of the host's own making.
///
/// Keys and texts are ordinary NUL-terminated texts; every operation interns them, getters too, so that a key once
/// asked for stays in the table of interned strings. Keys keep their case. Memory running out is answered by 0 or null.
///
/// Order: up to 8 entries stand in the order in which they came; more are sorted by the address of their key, also
/// when later removals bring the number down to 8 again, until the next addition goes to the end. A rename in a
/// table of up to 8 moves the entry to the end.
///
/// Setters: `notify` other than 0 tells the listeners. They answer 1, also when the value is the same as the one
/// stored (nothing is then stored and nobody told); 0 if the entry has another kind, for a null key, for a null pointer
/// to a vector, matrix or handle, for a text that can't be interned, when memory runs out, or if a listener has removed
/// the entry before the value was stored. A setter that fails for want of memory, or on a text, may leave a new entry
/// behind, with VALUE_EMPTY, which every setter accepts.
///
/// Listeners run inside the operation, on its thread, and must not throw. Each change is told twice, before and after:
/// first to the table's listeners, then to the entry's, record listeners before argument listeners. An entry's own
/// listeners hear of EVENT_REMOVING and EVENT_RENAMING, but not of EVENT_REMOVED, EVENT_RENAMED, EVENT_CLEARING and
/// EVENT_CLEARED, which go to the table's alone; array listeners hear of the array part and nothing else.
///
/// A listener may change the table, this entry and others included, and raises notifications within its own by that;
/// when such an inner one ends, requests to add or remove listeners are no longer put off. Where a listener removes or
/// clears the very entry that it is told about, the entry's remaining listeners aren't called, the table's are. Where
/// it gives a new entry a value of another kind, that kind holds and the operation answers 0. Where it ends the table,
/// nobody else is called, and the operation answers 0 or null, or 1 if it had done its work.
///
/// Threads: one at a time; reads of a table that nobody changes may run side by side. Different tables are independent.
///
/// Hosts end a table with CloseTable, never through its destructor.
struct ITable {
    /// The item in place, borrowed until SetArrayItem has to grow the array part, CreateArray or DestroyArray drops it,
    /// or the table ends; null beyond the last or without an array part.
    virtual void* GetArrayItem(std::uint32_t index) = 0;

    // Getters with a fallback answer it for a missing entry only. A present one answers its first 32 bits (for strings:
    // its first pointer) as they stand, whatever its kind: ask Find and GetType where the kind isn't known.
    virtual std::int32_t GetInteger(const char* key, std::int32_t fallback) = 0;
    virtual float GetReal(const char* key, float fallback) = 0;
    virtual cstr GetString(const char* key, cstr fallback) = 0;
    /// The table of an entry that holds one, borrowed; null for a missing entry or any other kind.
    virtual ITable* GetTable(const char* key) = 0;
    /// The same as GetTable.
    virtual ITable* FindTable(const char* key) = 0;
    /// As with a fallback of 0.
    virtual std::int32_t GetInteger(const char* key) = 0;
    /// As with a fallback of 0, but an integer entry is converted.
    virtual float GetReal(const char* key) = 0;
    /// As with a fallback of null.
    virtual cstr GetString(const char* key) = 0;
    /// The pointer; null for a missing entry or any other kind.
    virtual void* GetPtr(const char* key) = 0;
    /// Copies 2, 3 or 4 words of the value whatever its kind and answers 1; 0, `out` untouched, for a missing entry.
    virtual std::uint32_t GetFloat2(const char* key, Float2* out) = 0;
    virtual std::uint32_t GetFloat3(const char* key, Float3* out) = 0;
    virtual std::uint32_t GetFloat4(const char* key, Float4* out) = 0;
    /// Copies the matrix and answers 1; 0, `out` untouched, for a missing entry or any other kind.
    virtual std::uint32_t GetFloat4x4(const char* key, Float4x4* out) = 0;
    /// As GetInteger.
    virtual Handle GetHandle(const char* key) = 0;

    /// Copies an item in, making the array part longer if need be; items in between are unset. `data` may be an item of
    /// this array, and must stay what it is while listeners run.
    /// returns  the stored item; null without an array part (nobody is told), and, after both events, for a null
    ///          `data`, without memory, or if a listener has removed the array part or made it anew for another size
    virtual void* SetArrayItem(std::uint32_t index, const void* data, std::uint32_t notify) = 0;

    // The setters, as told above.
    virtual std::uint32_t SetHandle(const char* key, const Handle* value, std::uint32_t notify) = 0;
    /// Never counts as the same: stores and tells each time.
    virtual std::uint32_t SetFloat4x4(const char* key, const Float4x4* value, std::uint32_t notify) = 0;
    // Vectors count as the same if every component differs by less than 2^-23, absolute.
    virtual std::uint32_t SetFloat4(const char* key, const Float4* value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetFloat3(const char* key, const Float3* value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetFloat2(const char* key, const Float2* value, std::uint32_t notify) = 0;
    /// Hands `table` over on success: it ends with the entry and the host must not close it any more. It must have
    /// come from a factory of this library or be null. 0 if the entry has a value of any kind.
    virtual std::uint32_t SetTable(const char* key, ITable* table, std::uint32_t notify) = 0;
    /// A null `text` stores a null string.
    virtual std::uint32_t SetString(const char* key, const char* text, std::uint32_t notify) = 0;
    /// The same if equal as floats: a NaN never is, 0.0 and -0.0 are.
    virtual std::uint32_t SetReal(const char* key, float value, std::uint32_t notify) = 0;
    virtual std::uint32_t SetInteger(const char* key, std::int32_t value, std::uint32_t notify) = 0;
    /// Makes a new child table under `key`.
    /// returns  the child, owned by this table; null if the entry has a value of any kind (GetTable fetches it), when
    ///          memory runs out (a new entry then stays, empty), or if a listener has removed the entry
    virtual ITable* Set(const char* key, std::uint32_t notify) = 0;
    /// Stores the path form of `path` as a string; null as SetString does.
    virtual std::uint32_t SetPath(const char* key, const char* path, std::uint32_t notify) = 0;
    virtual std::uint32_t SetPtr(const char* key, void* value, std::uint32_t notify) = 0;

    /// Gives the entry another key; its address, value and listeners stay.
    /// returns  1; 0 if `old_key` is absent or `new_key` present, itself included
    virtual std::uint32_t Rename(const char* old_key, const char* new_key, std::uint32_t notify) = 0;

    /// Makes the array part, or empties the one that is there, for items of `item_size` bytes. Always notifies.
    /// An `item_size` of 0 is taken: items then have no bytes.
    /// returns  1; 0 when memory runs out, the items that were there gone and only EVENT_ARRAY_CREATING told
    virtual std::uint32_t CreateArray(std::uint32_t item_size) = 0;
    /// Removes the array part if there is one. Always notifies, always answers 1.
    virtual std::uint32_t DestroyArray() = 0;

    /// The number of items if there is an array part, else the number of entries.
    virtual std::uint32_t GetCount() = 0;
    /// The number of entries.
    virtual std::uint32_t GetElementCount() = 0;
    /// The number of items in the array part, 0 without one.
    virtual std::uint32_t GetArrayCount() = 0;

    // Store a borrowed table, which may be replaced by another; a save writes it out in full.
    virtual std::uint32_t SetExternalTable(const char* key, ITable* table, std::uint32_t notify) = 0;
    virtual std::uint32_t SetReferenceTable(const char* key, ITable* table, std::uint32_t notify) = 0;

    /// Removes an entry with all it owns. 0 if there is none.
    virtual std::uint32_t Remove(const char* key, std::uint32_t notify) = 0;
    /// Removes all entries with their listeners; array part, the table's own listeners and room stay. Always 1.
    virtual std::uint32_t Clear(std::uint32_t notify) = 0;

    // Places without a purpose; answer 0.
    virtual std::uint32_t ReservedFirst(void* unused) = 0;
    virtual std::uint32_t ReservedSecond(void* unused) = 0;

    /// Writes the entries as a JSON document, compact, in the order of the walk. Pointers, handles and empty entries
    /// are left out, so are the array part and the listeners; external and reference tables are written in full; a
    /// null table and a real that isn't finite are `null`; a null string is an empty one.
    /// returns  1; 0 for a null or empty path, a file that can't be written whole, a table that contains itself, a text
    ///          of 4 GiB or more, or when memory runs out
    virtual std::uint32_t SaveFile(const char* path) = 0;
    /// The same into memory.
    /// data     takes a block from malloc, without a NUL at the end, which the caller frees; null on failure
    /// size     takes its length in bytes
    virtual std::uint32_t SaveBuffer(void** data, std::uint32_t* size) = 0;

    /// The first entry, or null.
    virtual IIterator* First() = 0;
    /// The entry behind the one that `cursor` holds, or null; `cursor` itself isn't changed. A null `cursor` answers
    /// null.
    virtual IIterator* Next(IIterator** cursor) = 0;
    /// The entry of `key`, or null.
    virtual IIterator* Find(const char* key) = 0;

    // Adding a listener answers an empty delegate for the caller to fill in at once, before any other call on the
    // table; null for a key without an entry, or without memory. A listener of an entry lives as long as the entry.
    // Requests that come while listeners are being told wait until that is over (and answer a delegate for any key).
    virtual Delegate* AddRecordListener() = 0;
    virtual Delegate* AddRecordListener(const char* key) = 0;
    virtual Delegate* AddArgumentListener() = 0;
    virtual Delegate* AddArgumentListener(const char* key) = 0;
    virtual Delegate* AddArrayListener() = 0;

    // Removing takes out every equal delegate of that kind; the order of the rest may change.
    virtual void RemoveArrayListener(const Delegate* delegate) = 0;
    virtual void RemoveArgumentListener(const char* key, const Delegate* delegate) = 0;
    virtual void RemoveArgumentListener(const Delegate* delegate) = 0;
    virtual void RemoveRecordListener(const char* key, const Delegate* delegate) = 0;
    virtual void RemoveRecordListener(const Delegate* delegate) = 0;

protected:
    virtual ~ITable() = default;
};

} // namespace Tessarin

/// What a delegate made from a member function calls.
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

/// A delegate that calls `(object->*Method)(TableEvent*)`.
template <auto Method, class T>
Delegate RecordDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Record<Method, T>)};
}

/// A delegate that calls `(object->*Method)(code, table, key)`.
template <auto Method, class T>
Delegate ArgumentDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Argument<Method, T>)};
}

/// A delegate that calls `(object->*Method)(code, table, index)`.
template <auto Method, class T>
Delegate ArrayDelegate(T* object) {
    return {object, reinterpret_cast<void (*)()>(&Tessarin::Calls::Array<Method, T>)};
}

#endif
