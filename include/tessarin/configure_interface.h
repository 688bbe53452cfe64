/// The interfaces to a loaded configuration: a table, an array, and one entry of either. C++ only.

#ifndef TESSARIN_CONFIGURE_INTERFACE_H
#define TESSARIN_CONFIGURE_INTERFACE_H

#include "tessarin/interval.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

struct IArray;
struct ITable;

/// What a Unit holds. Every scalar is text; what number, truth value or interval it is, is found out at each reading.
enum UnitKind : std::uint32_t { KIND_NONE = 0, KIND_STRING = 1, KIND_ARRAY = 2, KIND_TABLE = 3 };

/// A Unit: one entry of a table, or one element of an array. It is no moving cursor; Next of its table or array leads
/// on from it. Borrowed: it ends with the file's content, and in an edited file when it is removed.
///
/// The tests and getters work on the text of a Unit of KIND_STRING:
///   integer   white space, a sign, decimal digits up to the first byte that is none; without digits 0. Out of range
///             it is the low 32 bits of the value held to 64 bits
///   float     likewise, with a fraction and an exponent, rounded to single precision; hexadecimal behind `0x`, `inf`
///             and `nan` too
///   bool      false for `0` and for `false` in any case; true for any other text, the empty one included
///   interval  as Interval::Load reads it; the empty value for a text without one
/// Numbers read alike in every locale. An entry that a file ends without any value has a null text: it reads as 0, 0.0,
/// false, null and the empty interval.
///
/// Threads: those of the tree, see IFile.
struct IIterator {
    /// The UnitKind.
    virtual std::uint32_t GetType() = 0;
    /// The key; null for an element of an array. It outlives the tree.
    virtual cstr GetKey() = 0;
    // The first four answer alike: whether there is text, not whether it reads as what they are called.
    virtual bool IsInteger() = 0;
    virtual bool IsFloat() = 0;
    virtual bool IsString() = 0;
    virtual bool IsBool() = 0;
    virtual bool IsArray() = 0;
    virtual bool IsTable() = 0;
    /// Whether there is a text with an interval in it.
    virtual bool IsInterval() = 0;

    // For another kind they answer 0, 0.0, null, false and the empty interval.
    virtual std::int32_t GetInteger() = 0;
    virtual float GetFloat() = 0;
    /// The text with its case as written. It outlives the tree.
    virtual cstr GetString() = 0;
    virtual bool GetBool() = 0;
    virtual IArray* GetArray() = 0;
    virtual ITable* GetTable() = 0;
    virtual Interval GetInterval() = 0;

    // Changes, of an edited file only; elsewhere they do nothing and answer false, as they do when memory runs out and
    // for a text too long to be interned.
    /// Gives an entry of a table another key, in lower case. Whether the table has that key already isn't asked, and a
    /// child keeps its old name. False for null and for an element of an array.
    virtual bool SetKey(const char* key) = 0;
    // The value setters are for KIND_STRING; on a Unit that holds an array or a table they answer false.
    virtual bool SetInteger(std::int32_t value) = 0;
    /// With six decimals, in every locale with a point.
    virtual bool SetFloat(float value) = 0;
    /// False for null.
    virtual bool SetString(const char* value) = 0;

protected:
    ~IIterator() = default;
};

/// Entries found by key. Borrowed: it ends with the file's content.
///
/// Keys are in lower case, and keys that a file writes with `/` or `\` in path form (each run of either one `\`). A
/// lookup comes in four forms:
///   text       in any case; null and the empty text find nothing. Separators count as they are: `a/b` doesn't find
///              the key `a\b`
///   u32        the number's decimal digits
///   path       the path form of a text
///   composite  `format` is a row of letters, each of which takes an argument and gives a piece with a `:` behind it:
///              `i` an std::int32_t, `s` a text, `p` a text in path form. In a file of text form the last `:` belongs
///              to the key (`is` with 7 and `x` asks for `7:x:`), in one of binary form it doesn't (`7:x`). Any other
///              letter, a null text, and a key of 1024 bytes or more, all its `:` counted, find nothing; an empty
///              format asks for the empty key.
///
/// In a file of text form, a key that isn't found is interned for good: asking for ever new keys fills memory. In one
/// of binary form only `path` and `p` intern. Of several Units with one key, a lookup finds the first in the file.
///
/// A table `_default` serves as the default of its siblings: when a table's entry `_default` is a table, all tables
/// among its entries get it, `_default` itself too. A table without one hands on what it finds under `_default` in its
/// own default. Tables in an array get none, and the root has none. A getter asks its table for the key, and if it is
/// absent there the default, but not the default's own. What is found is then tested with the Unit's test of that name;
/// if it fails, if nothing was found or if the lookup itself can't be made, the answer is the fallback (null, false or
/// the empty interval where the caller gives none). A text that is no number isn't a failure: it reads as 0. Find,
/// iteration and GetCount never look at defaults.
///
/// Threads: those of the tree, see IFile.
struct ITable {
    /// The number of the table's own Units.
    virtual std::uint32_t GetCount() = 0;
    /// The key under which the table was loaded or added; null for the root and for an element of an array.
    virtual cstr GetName() = 0;

    // for (auto* unit = table->Begin(); unit != table->End(); unit = table->Next(unit))
    // The order is that of the file in an edited one, by length and then by bytes of the key in a binary one, and none
    // in particular in a text that is only read.
    virtual IIterator* Begin() = 0;
    /// Behind the last Unit; not to be read, only compared with.
    virtual IIterator* End() = 0;
    /// REQUIRES: `unit` is one of this table's and not End
    virtual IIterator* Next(IIterator* unit) = 0;

    /// The Unit of a key, or null.
    virtual IIterator* Find(const char* key) = 0;
    virtual IIterator* Find(std::uint32_t key) = 0;
    /// The Unit of a path's form, or null.
    virtual IIterator* FindPath(const char* path) = 0;

    // What the Unit of a key, or that of the default, answers to the getter of that name.
    virtual std::int32_t GetInteger(const char* key, std::int32_t fallback) = 0;
    virtual std::int32_t GetInteger(std::uint32_t key, std::int32_t fallback) = 0;
    virtual float GetFloat(const char* key, float fallback) = 0;
    virtual float GetFloat(std::uint32_t key, float fallback) = 0;
    virtual cstr GetString(const char* key) = 0;
    virtual cstr GetString(std::uint32_t key) = 0;
    virtual bool GetBool(const char* key) = 0;
    virtual bool GetBool(std::uint32_t key) = 0;
    virtual IArray* GetArray(const char* key) = 0;
    virtual IArray* GetArray(std::uint32_t key) = 0;
    virtual ITable* GetTable(const char* key) = 0;
    virtual ITable* GetTable(std::uint32_t key) = 0;
    virtual Interval GetInterval(const char* key) = 0;
    virtual Interval GetInterval(std::uint32_t key) = 0;

    // With a composite key.
    virtual IIterator* FindFormat(const char* format, ...) = 0;
    virtual std::int32_t GetIntegerFormat(std::int32_t fallback, const char* format, ...) = 0;
    virtual float GetFloatFormat(float fallback, const char* format, ...) = 0;
    virtual cstr GetStringFormat(const char* format, ...) = 0;
    virtual bool GetBoolFormat(const char* format, ...) = 0;
    virtual IArray* GetArrayFormat(const char* format, ...) = 0;
    virtual ITable* GetTableFormat(const char* format, ...) = 0;

    // Changes, of an edited file only; elsewhere they do nothing and answer null, as they do when memory runs out.
    /// Ends a Unit. What it held stays alive as long as the content, out of reach: a removed `_default` goes on serving
    /// the tables that it serves.
    /// returns  the Unit that has taken its place; null if it was the last, or if it isn't one of this table's
    virtual IIterator* Remove(IIterator* unit) = 0;
    // Adding appends a Unit. The key is taken in lower case, but never in path form. Null if the table has that key.
    // A `_default` that is added, changed or removed counts from the next load on.
    /// Null for a null or empty key and for a null value.
    virtual IIterator* AddString(const char* key, const char* value) = 0;
    /// Null for a null or empty key. The new Unit's GetArray gives the array, which is empty.
    virtual IIterator* AddArray(const char* key) = 0;
    /// Null for a null key; an empty one is taken. The new Unit's GetTable gives the table, which is empty.
    virtual IIterator* AddTable(const char* key) = 0;

protected:
    /// The file ends its tables.
    virtual ~ITable() = default;
};

/// Units found by position, in the order of the file. Borrowed: it ends with the file's content.
/// Getters answer the fallback at or beyond the count, and where the Unit's test of that name fails.
/// Threads: those of the tree, see IFile.
struct IArray {
    /// The number of the array's own Units.
    virtual std::uint32_t GetCount() = 0;
    /// As ITable::GetName.
    virtual cstr GetName() = 0;
    /// Null at or beyond the count.
    virtual IIterator* At(std::uint32_t position) = 0;
    // As in ITable.
    virtual IIterator* Begin() = 0;
    virtual IIterator* End() = 0;
    virtual IIterator* Next(IIterator* unit) = 0;

    // What the Unit at a position answers to the getter of that name.
    virtual std::int32_t GetInteger(std::uint32_t position, std::int32_t fallback) = 0;
    virtual float GetFloat(std::uint32_t position, float fallback) = 0;
    virtual cstr GetString(std::uint32_t position) = 0;
    virtual bool GetBool(std::uint32_t position) = 0;
    virtual IArray* GetArray(std::uint32_t position) = 0;
    virtual ITable* GetTable(std::uint32_t position) = 0;

    // Changes, as in ITable. Elements are added at the end; `reserved` is never read.
    virtual IIterator* Remove(IIterator* unit) = 0;
    virtual IIterator* AddString(std::uint32_t reserved, const char* value) = 0;
    virtual IIterator* AddArray(std::uint32_t reserved) = 0;
    virtual IIterator* AddTable(std::uint32_t reserved) = 0;

protected:
    ~IArray() = default;
};

} // namespace Configure

#endif
