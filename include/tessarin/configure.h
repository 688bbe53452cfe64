/// Configuration files: trees of tables and arrays whose leaves are texts, in a readable text form and a compiled
/// binary form. C++ only.
///
/// The text form. The file is the body of the root table: entries `key = value`, separated by a line end, a comma or a
/// blank. A value is a quoted string, bare text to the end of its line (less what the next key takes), or a block in
/// braces: a table if an `=` stands directly in it or if it is empty, otherwise an array of strings, bare words and
/// blocks, separated by blanks, commas or both. Comments run from `--` to the line's end or from `--[[` to `]]`, inside
/// quotes too. There are no escapes. Keys don't care for case; pieces joined by `:` make one key. Behind a bare or
/// quoted value a key begins behind the last blank or comma, so `c = 1` and a line `foo bar = 2` have the key `bar`;
/// elsewhere it may have blanks inside. A key with `/` or `\` in it is cut at 255 bytes. Hardly anything is an error:
/// open braces and quotes close at the end. A byte 0xFF ends the text, a NUL the key or value that it stands in. Not
/// taken are an `=` without a key, a key of 1024 bytes or more, a string too long to be interned, and a file of 2^28
/// bytes or more.
///
/// The binary form begins with "NIBx", is read only, and finds keys without interning them. It is checked whole when it
/// is loaded: bytes that don't make a tree don't load, and whatever loads is safe to walk.

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
    ACCESS_READ = 1,
    ACCESS_EDIT = 2 ///< the tree can be changed; text form only
};

/// The stored form of a file.
enum FileFormat : std::uint32_t {
    FORMAT_AUTO = 1, ///< binary if there are at least 28 bytes that begin with "NIBx", else text; for Load alone
    FORMAT_BINARY = 2,
    FORMAT_TEXT = 3
};

/// One configuration file: loads it, owns what it loaded, and writes it out again in either form.
///
/// Whatever the tree hands out (tables, arrays, Units) ends with the next Load, with Reset and with Release. Texts are
/// interned and stay.
///
/// Threads: one at a time per object; several objects may load and save at once. Once loaded for reading, a tree may be
/// read by any number of threads, with every kind of key, until its file is loaded, reset or released; an edited tree
/// is one thread's at a time, readers included.
struct IFile {
    /// Ends the object with all that it owns; a file service that came from the host is left alone.
    virtual void Release() = 0;

    /// Drops the content, then loads a file. The old content is gone even when the load fails, a null path's too.
    /// path     goes to the file service as it is
    /// access   a FileAccess; format  a FileFormat. Other numbers fail, as does editing the binary form
    /// returns  the root, borrowed; null if the file can't be read whole or isn't what `format` says, or when memory
    ///          runs out: the object is then empty. A file that isn't there fails for editing too.
    ///          After a path that can't be interned, too long or for want of memory, GetRoot answers null and a save
    ///          false all the same.
    virtual ITable* Load(const char* path, std::uint32_t access, std::uint32_t format) = 0;

    /// Drops the content. Always true.
    virtual bool Reset() = 0;

    /// The root, borrowed; null if nothing is loaded.
    virtual ITable* GetRoot() = 0;

    /// Writes an edited file back in text form, to the path of its load, as it was given there.
    /// returns  as SaveAs; false, the file untouched, if the content isn't open for editing
    virtual bool Save() = 0;

    /// Writes the content, however it was loaded, in either form; the object stays as it is. The target is truncated
    /// first and stays as far as it was written if something fails.
    ///
    /// FORMAT_TEXT writes an entry a line, every scalar in quotes, with CR LF; comments aren't kept. Keys and values
    /// are written as they are, so what the form can't say doesn't read back: a `"`, a `--` or a 0xFF in either, in a
    /// key also a blank, a line end, `=`, `,`, `/`, a brace, two `\` together or a `:` at its start, and an empty key.
    /// An empty array reads back as an empty table. A null text is written as an empty one. A line of 1024 bytes or
    /// more fails, its line end counted, and so does nesting whose indent, to which the keys on the way add their
    /// lengths, passes 1024 columns. What the file service's Write answers isn't looked at.
    ///
    /// FORMAT_BINARY depends on the content alone, not on how it was loaded. Of several scalars under one key it keeps
    /// the last one in the file; a table in which arrays or tables share a key with another entry fails, as does a form
    /// of 2 GiB or more, and a short Write. A null text becomes an empty one.
    ///
    /// returns  false for a null or empty path and for any other format (no file is then opened), if there is no
    ///          content, if the file can't be opened, and when memory runs out
    virtual bool SaveAs(const char* path, std::uint32_t format) = 0;

    /// What the file service answers.
    virtual bool Exists(const char* path) = 0;

protected:
    virtual ~IFile() = default;
};

} // namespace Configure

extern "C" {

/// Makes an object for one configuration file, empty.
/// io       the file service to go through, borrowed: it must outlive the object; null for the library's own
/// returns  the caller's object, ended with Release; null when memory runs out
TESSARIN_API Configure::IFile* CreateRLFile(IFileIO* io);

} // extern "C"

#endif
