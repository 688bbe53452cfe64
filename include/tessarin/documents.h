/// File objects, the file service that a host may replace, and the factories that load a table from a document.

#ifndef TESSARIN_DOCUMENTS_H
#define TESSARIN_DOCUMENTS_H

#include "tessarin/tables.h"

#include <cstdint>

namespace Tessarin {

/// A file that is open for reading. Threads: one at a time.
struct IRead {
    /// Closes the file and ends the object. Always 1.
    virtual std::uint32_t Release() = 0;

    /// The file's size in bytes. Goes back to the start of the file: the next Read begins there.
    /// returns  -1 for what can't seek and for a size that 31 bits can't hold
    virtual std::int32_t GetSize() = 0;

    /// Reads up to `count` bytes from where the last Read ended.
    /// buffer_size  room in `buffer` in bytes; less than `count`, or a null buffer, reads nothing
    /// returns      the bytes read, fewer than `count` at the end of the file or on a failure
    virtual std::uint32_t Read(void* buffer, std::uint32_t buffer_size, std::uint32_t count) = 0;

protected:
    virtual ~IRead() = default;
};

/// A file that is open for writing. Threads: one at a time.
struct IWrite {
    /// Closes the file and ends the object. Always 1.
    virtual std::uint32_t Release() = 0;

    /// Writes `size` bytes.
    /// returns  the bytes written; 0 for a null buffer
    virtual std::uint32_t Write(const void* buffer, std::uint32_t size) = 0;

protected:
    virtual ~IWrite() = default;
};

} // namespace Tessarin

/// The file service behind configuration and tab files, which a host may implement. It has no state of its own; what
/// Open answers is opaque to the library, which hands it back and ends it with Close, also after a failure.
///
/// The library's own service takes a path as it is given. Where opening to read, or Exists, fails on a path that holds
/// a `\`, and the host's separator is `/`, the path is tried once more with each `\` turned into `/` and each name
/// matched without regard to the case of ASCII letters if no name matches exactly (of several, the first in byte
/// order). Opening to write takes the path as it is.
/// Threads: one instance serves threads that work on different handles.
struct IFileIO {
    /// mode     0 opens for reading, 1 creates or truncates for writing, both binary; any other answers null
    /// returns  a handle; null for a null or empty path, or when the file can't be opened
    virtual void* Open(const char* path, std::int32_t mode) = 0;

    /// Ends a handle; null is ignored.
    virtual void Close(void* handle) = 0;

    /// The file's size in bytes; leaves the position at the start. 0 for a null handle, otherwise as IRead::GetSize.
    virtual std::int32_t GetSize(void* handle) = 0;

    /// Reads up to `count` bytes; `buffer_size` is the room in `buffer`. Returns the bytes read, 0 for a null handle.
    virtual std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) = 0;

    /// Writes `size` bytes. Returns the bytes written, 0 for a null handle.
    virtual std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) = 0;

    /// Whether the path can be opened for reading.
    virtual bool Exists(const char* path) = 0;

    virtual ~IFileIO() = default;
};

extern "C" {

/// Opens a file for reading; the path goes to the runtime library as it is.
/// returns  the caller's object, ended with Release; null for a null path, or when the file can't be opened
TESSARIN_API Tessarin::IRead* CreateReadFile(const char* path);

/// Creates a file, or truncates the one that is there, for writing. As CreateReadFile.
TESSARIN_API Tessarin::IWrite* CreateWriteFile(const char* path);

/// Loads a document in the readable text form.
/// Keys, `=` or none, and values: quoted or bare text, integers, reals (a `.` makes one), `[x,y,z]`, `(x,y,z,w)` and
/// nested `{ ... }`; comments run from `--` to the line's end or from `--[[` to the next `--`. Vector components that
/// are missing are 0. Numbers out of range: an integer keeps the low 32 bits of its value held to 64 bits, a real
/// goes to infinity or zero. Nested tables are unknown to ValidateTable. A text longer than an interned string may
/// be is not stored: a new entry stays empty, an old one what it was. Depth is limited by memory alone.
/// returns  a root table, the caller's, ended with CloseTable; null if the file can't be read, a key has no value, a
///          quote is open, a block stands under a key that has a value already, or memory runs out for the text or for
///          a block. A value for which memory runs out is missing from the table.
TESSARIN_API Tessarin::ITable* OpenTableReadableFile(const char* path);

/// Loads a JSON document from a file; an empty file is an empty table. Otherwise as OpenTableBuffer.
/// returns  a root table, the caller's, ended with CloseTable; null for a null or empty path, a file that can't be
///          read whole, or when memory runs out
TESSARIN_API Tessarin::ITable* OpenTableFile(const char* path);

/// Loads a JSON document from memory. `data` is copied; a NUL in it ends the text.
///
/// `null`, `false` and `true` become the integers 0, 0 and 1; integers up to 64 bits keep their low 32 bits; any other
/// number is a real; arrays of 2, 3, 4 and 16 are vectors and matrices (what is no number in them reads as 0, `true`
/// as 1), other arrays are dropped; objects become child tables. Comments are allowed. Strings have no escapes: a
/// backslash is a byte like any other, and the first `"` ends the string. Members with an empty key are dropped. Of
/// members that share a key, strings, `null`, `true` and `false` store their own value; a number stores that of the
/// key's first member, if that one is a number or one of those three; arrays and objects count only if they are first.
/// A member whose kind differs from the entry's is dropped.
///
/// A text that is not valid, or whose root is no object, is an empty table, with success. Depth is limited by memory
/// alone.
/// size     bytes of `data`; 0 answers null, as a null `data` does
/// returns  a root table, the caller's, ended with CloseTable; null when memory runs out for the text or the parser. A
///          member for which memory runs out is missing from the table; a string too long to be interned leaves a new
///          entry empty.
TESSARIN_API Tessarin::ITable* OpenTableBuffer(const void* data, std::uint32_t size);

} // extern "C"

#endif
