/// \file
/// The interfaces to a loaded configuration: a table, an array, and one entry of either. C++ only.

#ifndef TESSARIN_CONFIGURE_INTERFACE_H
#define TESSARIN_CONFIGURE_INTERFACE_H

#include "tessarin/interval.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

struct IArray;
struct ITable;

/// What a Unit holds. Every scalar is text, which each getter converts anew to a number, truth value or interval.
enum UnitKind : std::uint32_t { KIND_NONE = 0, KIND_STRING = 1, KIND_ARRAY = 2, KIND_TABLE = 3 };

/// A Unit: one entry of a table, or one element of an array. It isn't a moving cursor: Next of its table or array
/// returns the one after it. Borrowed: it ends with the file's content, and in an edited file when it is removed.
///
/// The tests and getters work on the text of a Unit of KIND_STRING:
///   integer   white space, a sign, decimal digits up to the first byte that isn't one; 0 without digits. Out of range
///             it is the low 32 bits of the value, which is limited to 64 bits
///   float     likewise, with a fraction and an exponent, rounded to single precision; also hexadecimal after `0x`,
///             `inf` and `nan`
///   bool      false for `0` and for `false` in any case; true for any other text, the empty one included
///   interval  as Interval::Load reads it; the empty value for a text without one
/// Numbers read the same in every locale. An entry at the end of its file without any value has a null text: it reads
/// as 0, 0.0, false, null and the empty interval.
///
/// Threads: those of the tree, see IFile.
struct IIterator {
    /// The UnitKind.
    virtual std::uint32_t GetType() = 0;
    /// The key; null for an element of an array. It outlives the tree.
    virtual cstr GetKey() = 0;
    // IsInteger, IsFloat, IsString and IsBool all return whether the kind is KIND_STRING, not whether the text reads as
    // their name says; IsArray and IsTable, whether it is that kind.
    virtual bool IsInteger() = 0;
    virtual bool IsFloat() = 0;
    virtual bool IsString() = 0;
    virtual bool IsBool() = 0;
    virtual bool IsArray() = 0;
    virtual bool IsTable() = 0;
    /// Whether there is a text with an interval in it.
    virtual bool IsInterval() = 0;

    // The value, as above; for another kind 0, 0.0, null, false and the empty interval. An array or table is borrowed.
    virtual std::int32_t GetInteger() = 0;
    virtual float GetFloat() = 0;
    /// The text with its case as written. It outlives the tree.
    virtual cstr GetString() = 0;
    virtual bool GetBool() = 0;
    virtual IArray* GetArray() = 0;
    virtual ITable* GetTable() = 0;
    virtual Interval GetInterval() = 0;

    // Changes, for an edited file only; otherwise they do nothing and return false. They also return false, the Unit
    // unchanged, when memory runs out and for a text too long to be interned. Texts are copied.
    /// Gives an entry of a table another key, in lower case. It isn't checked whether the table has that key already,
    /// and a child keeps its old name. False for null and for an element of an array.
    virtual bool SetKey(const char* key) = 0;
    // The value setters are for KIND_STRING; on a Unit that holds an array or a table they return false.
    virtual bool SetInteger(std::int32_t value) = 0;
    /// Stores the number with six decimals, in every locale with a point.
    virtual bool SetFloat(float value) = 0;
    /// False for null.
    virtual bool SetString(const char* value) = 0;

protected:
    ~IIterator() = default;
};

/// Entries found by key. Borrowed: it ends with the file's content.
///
/// Keys are in lower case; keys that a file writes with `/` or `\` are in path form (each run of either is one `\`). A
/// lookup takes one of four forms:
///   text       in any case; null and the empty text find nothing. Separators count as they are: `a/b` doesn't find
///              the key `a\b`
///   u32        the number's decimal digits
///   path       the path form of a text
///   composite  `format` is a sequence of letters, each of which takes an argument and gives a piece that ends with a
///              `:`: `i` an std::int32_t, `s` a text, `p` a text in path form. In a file of text form the last `:` is
///              part of the key (`is` with 7 and `x` looks up `7:x:`), in one of binary form it isn't (`7:x`). Any
///              other letter, a null text, and a key of 1024 bytes or more, all its `:` counted, find nothing; an empty
///              format looks up the empty key. REQUIRES: the arguments are those that the letters name
///
/// In a file of text form, a key that isn't found is interned and stays: looking up many different keys fills memory.
/// In one of binary form only `path` and `p` intern. Of several Units with one key, a lookup finds the first in the
/// file.
///
/// A table `_default` is the default of its siblings: when a table's entry `_default` is a table, all tables among its
/// entries get it as their default, `_default` itself too. A table without that entry passes on what it finds under
/// `_default` in its own default. Tables in an array and the root have no default.
///
/// A getter looks the key up in its table and, if it is absent there, in the default, but not in the default's own. The
/// Unit found is then tested with the Unit's test of that name. If the test fails, if nothing was found or if the
/// lookup itself can't be made, the result is the fallback (null, false or the empty interval where the caller gives
/// none). A text that isn't a number isn't a failure: it reads as 0. Find, iteration and GetCount never look at
/// defaults.
///
/// Threads: those of the tree, see IFile.
struct ITable {
    /// The number of the table's own Units.
    virtual std::uint32_t GetCount() = 0;
    /// The key under which the table was loaded or added; null for the root and for an element of an array.
    virtual cstr GetName() = 0;

    // for (auto* unit = table->Begin(); unit != table->End(); unit = table->Next(unit))
    // The order is that of the file in an edited one, by length and then by bytes of the key in a binary one, and
    // unspecified in a text that is only read.
    /// The first Unit, borrowed; End if there is none.
    virtual IIterator* Begin() = 0;
    /// The mark after the last Unit: only to be compared with, never read.
    virtual IIterator* End() = 0;
    /// The Unit after `unit`, or End.
    /// REQUIRES: `unit` is one of this table's and not End
    virtual IIterator* Next(IIterator* unit) = 0;

    /// The table's own Unit of a key, borrowed, or null.
    virtual IIterator* Find(const char* key) = 0;
    virtual IIterator* Find(std::uint32_t key) = 0;
    /// The table's own Unit of a path's path form, borrowed, or null.
    virtual IIterator* FindPath(const char* path) = 0;

    // What the getter of that name returns for the Unit of a key, or for the default's; the fallback, null, false or
    // the empty interval as described above.
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

    // The same with a composite key.
    virtual IIterator* FindFormat(const char* format, ...) = 0;
    virtual std::int32_t GetIntegerFormat(std::int32_t fallback, const char* format, ...) = 0;
    virtual float GetFloatFormat(float fallback, const char* format, ...) = 0;
    virtual cstr GetStringFormat(const char* format, ...) = 0;
    virtual bool GetBoolFormat(const char* format, ...) = 0;
    virtual IArray* GetArrayFormat(const char* format, ...) = 0;
    virtual ITable* GetTableFormat(const char* format, ...) = 0;

    // Changes, for an edited file only; otherwise they do nothing and return null, as they do when memory runs out.
    /// Ends a Unit. What it held lives as long as the content, but can't be reached through the table any more: a
    /// removed `_default` remains the default of the tables that have it.
    /// returns  the Unit that has taken its place; null if it was the last, or if it isn't one of this table's
    virtual IIterator* Remove(IIterator* unit) = 0;
    // Adding appends a Unit and returns it, borrowed. The key is stored in lower case, but never in path form. Null if
    // the table has that key, or if a text is too long to be interned. Adding, changing or removing a `_default` takes
    // effect with the next load.
    /// Null for a null or empty key and for a null value. The value is copied.
    virtual IIterator* AddString(const char* key, const char* value) = 0;
    /// Null for a null or empty key. The new Unit's GetArray gives the array, which is empty.
    virtual IIterator* AddArray(const char* key) = 0;
    /// Null for a null key; an empty one is accepted. The new Unit's GetTable gives the table, which is empty.
    virtual IIterator* AddTable(const char* key) = 0;

protected:
    /// The file ends its tables.
    virtual ~ITable() = default;
};

/// Units found by position, in the order of the file. Borrowed: it ends with the file's content.
/// Getters return the fallback (null or false where the caller gives none) at or beyond the count, and where the Unit's
/// test of that name fails.
///
/// Threads: those of the tree, see IFile.
struct IArray {
    /// The number of the array's own Units.
    virtual std::uint32_t GetCount() = 0;
    /// The key under which the array was loaded or added; null for an element of an array.
    virtual cstr GetName() = 0;
    /// The Unit at a position, counted from 0, borrowed; null at or beyond the count.
    virtual IIterator* At(std::uint32_t position) = 0;
    // The walk is that of ITable, in the order of the file.
    virtual IIterator* Begin() = 0;
    virtual IIterator* End() = 0;
    virtual IIterator* Next(IIterator* unit) = 0;

    // What the getter of that name returns for the Unit at a position, or the fallback.
    virtual std::int32_t GetInteger(std::uint32_t position, std::int32_t fallback) = 0;
    virtual float GetFloat(std::uint32_t position, float fallback) = 0;
    virtual cstr GetString(std::uint32_t position) = 0;
    virtual bool GetBool(std::uint32_t position) = 0;
    virtual IArray* GetArray(std::uint32_t position) = 0;
    virtual ITable* GetTable(std::uint32_t position) = 0;

    // Changes, as in ITable, without keys. Elements are added at the end; `reserved` is never read.
    virtual IIterator* Remove(IIterator* unit) = 0;
    virtual IIterator* AddString(std::uint32_t reserved, const char* value) = 0;
    virtual IIterator* AddArray(std::uint32_t reserved) = 0;
    virtual IIterator* AddTable(std::uint32_t reserved) = 0;

protected:
    ~IArray() = default;
};

} // namespace Configure

#endif
