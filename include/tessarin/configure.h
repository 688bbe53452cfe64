/// \file
/// Configuration files: trees of tables and arrays whose leaves are texts, in a readable text form and a compiled
/// binary form. C++ only.
///
/// The text form. The file is the content of the root table: entries `key = value`, separated by a line end, a comma or
/// a blank. A value is a quoted string, bare text to the end of its line (except what belongs to the next key), or a
/// block in braces. A block is a table if it has an `=` directly in it or is empty, otherwise an array of strings, bare
/// words and blocks, separated by blanks, commas or both. Comments run from `--` to the end of the line or from `--[[`
/// to `]]`, inside quotes too. There are no escapes. Keys ignore case; pieces joined by `:` make one key. After a bare
/// or quoted value a key begins after the last blank or comma, so `c = 1` and a line `foo bar = 2` have the key `bar`;
/// elsewhere it may contain blanks. A key with `/` or `\` in it is cut at 255 bytes. Hardly anything is an error: open
/// braces and quotes close at the end. A byte 0xFF ends the text, a NUL the key or value that it is in. Rejected are an
/// `=` without a key, a key of 1024 bytes or more, a string too long to be interned, and a file of 2^28 bytes or more.
///
/// The binary form begins with "NIBx", is read only, and finds keys without interning them. A load checks all of it:
/// bytes that don't form a tree don't load, and whatever loads is safe to walk.

#ifndef TESSARIN_CONFIGURE_H
#define TESSARIN_CONFIGURE_H

#include "tessarin/configure_interface.h"
#include "tessarin/documents.h"
#include "tessarin/interval.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

/// How a file is loaded.
enum FileAccess : std::uint32_t {
    ACCESS_READ = 1, ///< the tree is read only
    ACCESS_EDIT = 2  ///< the tree can be changed; text form only
};

/// The stored form of a file.
enum FileFormat : std::uint32_t {
    FORMAT_AUTO = 1,   ///< binary if there are at least 28 bytes that begin with "NIBx", else text; only for Load
    FORMAT_BINARY = 2, ///< the compiled form
    FORMAT_TEXT = 3    ///< the readable form
};

/// One configuration file: loads it, owns what it loaded, and writes it out again in either form.
///
/// The tables, arrays and Units of the tree are borrowed: they end with the next Load, with Reset and with Release.
/// Texts are interned and stay.
///
/// Threads: one at a time per object; several objects may load and save at once. Once loaded for reading, a tree may be
/// read by any number of threads, with every kind of key, until its file is loaded, reset or released. An edited tree
/// belongs to one thread at a time, readers included.
struct IFile {
    /// Ends the object with all that it owns, but not a file service that came from the host.
    virtual void Release() = 0;

    /// Drops the content, then loads a file. The old content is gone even when the load fails, also for a null path.
    /// path     passed to the file service as it is
    /// access   a FileAccess
    /// format   a FileFormat. Other numbers fail, here and in `access`, as does editing the binary form
    /// returns  the root, borrowed; null if the file can't be read whole or isn't in that format, or when memory runs
    ///          out: the object is then empty. A missing file fails for editing too. If the path can't be interned,
    ///          because it is too long or memory runs out, the load can succeed, but GetRoot then returns null and a
    ///          save false.
    virtual ITable* Load(const char* path, std::uint32_t access, std::uint32_t format) = 0;

    /// Drops the content. Always true.
    virtual bool Reset() = 0;

    /// The root, borrowed; null if nothing is loaded.
    virtual ITable* GetRoot() = 0;

    /// Writes an edited file back in text form, to the path of its load, as it was given there.
    /// returns  as SaveAs; false, the file unchanged, if the content wasn't loaded for editing
    virtual bool Save() = 0;

    /// Writes the content, however it was loaded, in either form; the object stays as it is. The target is truncated
    /// first; if something fails, it keeps what was written until then.
    ///
    /// FORMAT_TEXT writes one entry per line, every scalar in quotes, lines ended by CR LF; comments aren't kept. Keys
    /// and values are written as they are, so what the form can't express doesn't read back: a `"`, a `--` or a 0xFF in
    /// either, in a key also a blank, a line end, `=`, `,`, `/`, a brace, two `\` together or a `:` at its start, and
    /// an empty key. An empty array reads back as an empty table. A null text is written as an empty one. The save
    /// fails for a line of 1024 bytes or more, its line end counted, and for nesting whose indent, to which the keys of
    /// the enclosing blocks add their lengths, passes 1024 columns. The result of the file service's Write is ignored.
    ///
    /// FORMAT_BINARY depends only on the content, not on how it was loaded. Of several scalars under one key it keeps
    /// the last one in the file. The save fails for a table in which an array or a table shares its key with another
    /// entry, for a form of 2 GiB or more, and for a short Write. A null text becomes an empty one.
    ///
    /// path     passed to the file service as it is
    /// returns  false for a null or empty path and for any other format (no file is then opened), if there is no
    ///          content, if the file can't be opened, and when memory runs out
    virtual bool SaveAs(const char* path, std::uint32_t format) = 0;

    /// What the file service's Exists returns for the path.
    virtual bool Exists(const char* path) = 0;

protected:
    virtual ~IFile() = default;
};

} // namespace Configure

extern "C" {

/// Makes an empty object for one configuration file.
/// io       the file service to use, borrowed: it must outlive the object; null for the library's own
/// returns  an object that the caller owns and ends with Release; null when memory runs out
/// Threads: any, at once
TESSARIN_API Configure::IFile* CreateRLFile(IFileIO* io);

} // extern "C"

#endif
