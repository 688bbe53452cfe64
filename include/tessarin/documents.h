/// \file
/// File objects, the file service that a host may replace, and the factories that load a table from a document.

#ifndef TESSARIN_DOCUMENTS_H
#define TESSARIN_DOCUMENTS_H

#include "tessarin/tables.h"

#include <cstdint>

namespace Tessarin {

/// A file that is open for reading.
/// Threads: one at a time
struct IRead {
    /// Closes the file and ends the object. Always 1.
    virtual std::uint32_t Release() = 0;

    /// The file's size in bytes. Moves back to the start of the file: the next Read begins there.
    /// returns  -1 if the file can't seek or its size needs more than 31 bits
    virtual std::int32_t GetSize() = 0;

    /// Reads up to `count` bytes from where the last Read ended.
    /// buffer_size  room in `buffer` in bytes; nothing is read if it is less than `count` or if `buffer` is null
    /// returns      the bytes read, fewer than `count` at the end of the file or on a failure
    virtual std::uint32_t Read(void* buffer, std::uint32_t buffer_size, std::uint32_t count) = 0;

protected:
    virtual ~IRead() = default;
};

/// A file that is open for writing.
/// Threads: one at a time
struct IWrite {
    /// Closes the file and ends the object. Always 1.
    virtual std::uint32_t Release() = 0;

    /// Writes `size` bytes after what was written before.
    /// returns  the bytes written, fewer than `size` on a failure; 0 for a null buffer
    virtual std::uint32_t Write(const void* buffer, std::uint32_t size) = 0;

protected:
    virtual ~IWrite() = default;
};

} // namespace Tessarin

/// The file service that configuration and tab files use; a host may implement it. It has no state of its own. The
/// handle that Open returns is opaque to the library, which passes it back and ends it with Close, even after a
/// failure. A load calls Open with mode 0, then GetSize, then Read once for the whole file, with `buffer_size` at least
/// `count`; a save calls Open with mode 1 and then Write as often as it needs.
/// REQUIRES: no operation of a host's own service throws
///
/// The library's own service takes a path as it is given. If opening for reading, or Exists, fails on a path that
/// contains a `\`, and the host's separator is `/`, the path is tried once more with each `\` changed to `/` and each
/// name matched without regard to the case of ASCII letters if no name matches exactly (of several, the first in byte
/// order). Opening for writing takes the path as it is.
///
/// Threads: one instance may be used by threads that work on different handles.
struct IFileIO {
    /// Opens a file.
    /// mode     0 opens for reading, 1 creates or truncates for writing, both binary
    /// returns  a handle, ended with Close; null for a null or empty path, for any other mode, or when the file can't
    ///          be opened
    virtual void* Open(const char* path, std::int32_t mode) = 0;

    /// Closes the file and ends its handle; null is ignored.
    virtual void Close(void* handle) = 0;

    /// The file's size in bytes; moves back to the start. 0 for a null handle, otherwise as IRead::GetSize.
    virtual std::int32_t GetSize(void* handle) = 0;

    /// Reads up to `count` bytes from where the last Read ended.
    /// buffer_size  room in `buffer` in bytes
    /// returns      the bytes read, fewer than `count` at the end of the file or on a failure; 0 for a null handle
    virtual std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) = 0;

    /// Writes `size` bytes.
    /// returns  the bytes written, fewer than `size` on a failure; 0 for a null handle
    virtual std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) = 0;

    /// Whether the path can be opened for reading; false for a null or empty one.
    virtual bool Exists(const char* path) = 0;

    virtual ~IFileIO() = default;
};

extern "C" {

/// Opens a file for reading; the path is passed to the runtime library as it is.
/// returns  an object that the caller owns and ends with Release; null for a null path, when the file can't be opened,
///          or when memory runs out
/// Threads: any, at once, here and in the functions below
TESSARIN_API Tessarin::IRead* CreateReadFile(const char* path);

/// Creates a file, or truncates the one that is there, for writing. Otherwise as CreateReadFile.
TESSARIN_API Tessarin::IWrite* CreateWriteFile(const char* path);

/// Loads a document in the readable text form.
///
/// A document has keys, an optional `=` after each, and values: quoted or bare text, integers, reals (with a `.`),
/// `[x,y,z]`, `(x,y,z,w)` and nested `{ ... }`. Comments run from `--` to the end of the line or from `--[[` to the
/// next `--`. Missing components of a vector are 0. An integer out of range keeps the low 32 bits of its value, which
/// is limited to 64 bits; a real out of range becomes infinity or zero. Nested tables are unknown to ValidateTable. A
/// text that is too long to be interned isn't stored: a new entry stays empty, an old one keeps its value. Only memory
/// limits the depth.
/// returns  a root table, owned by the caller and ended with CloseTable; null if the file can't be read, a key has no
///          value, a quote is open, a block is under a key that has a value already, or memory runs out for the text or
///          for a block. A value for which memory runs out is missing from the table.
TESSARIN_API Tessarin::ITable* OpenTableReadableFile(const char* path);

/// Loads a JSON document from a file; an empty file is an empty table. Otherwise as OpenTableBuffer.
/// returns  a root table, owned by the caller and ended with CloseTable; null for a null or empty path, a file that
///          can't be read whole, or when memory runs out
TESSARIN_API Tessarin::ITable* OpenTableFile(const char* path);

/// Loads a JSON document from memory.
///
/// `null`, `false` and `true` become the integers 0, 0 and 1; integers up to 64 bits keep their low 32 bits; any other
/// number is a real; arrays of 2, 3, 4 and 16 are vectors and matrices (an element that isn't a number reads as 0,
/// `true` as 1), other arrays are dropped; objects become child tables. Comments are allowed. Strings have no escapes:
/// a backslash is a byte like any other, and the first `"` ends the string, so a saved text with a quote doesn't load
/// again: see ITable::SaveFile. Members with an empty key are dropped. If
/// members share a key, then strings, `null`, `true` and `false` store their own value; a number stores the value of
/// the key's first member, if that is a number or one of those three words; arrays and objects count only if they are
/// first. A member whose kind differs from the entry's is dropped.
///
/// A text that isn't valid, or whose root isn't an object, gives an empty table, which isn't a failure. Only memory
/// limits the depth.
/// data     the text, copied; a NUL in it ends it
/// size     bytes of `data`
/// returns  a root table, owned by the caller and ended with CloseTable; null for a null `data`, a `size` of 0, or when
///          memory runs out for the text or the parser. A member for which memory runs out is missing from the table; a
///          string too long to be interned leaves a new entry empty.
TESSARIN_API Tessarin::ITable* OpenTableBuffer(const void* data, std::uint32_t size);

} // extern "C"

#endif
