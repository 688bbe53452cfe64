// Changes to a configuration tree, and saving it as text without losing anything of it.

#ifndef TESSARIN_TOOLS_CONFIG_EDIT_H
#define TESSARIN_TOOLS_CONFIG_EDIT_H

#include "tools/config_file.h"
#include "tools/key_path.h"

#include <string>

namespace Command {

/// The entry to change, and how messages call it and its file.
struct EditTarget {
    const ConfigFile& file;
    const std::string& file_name;
    const std::string& path_text;
    KeyPath path; // not empty
};

enum class NewEntry { Text, Table, Array };

/// Changes a plain value. Throws Failure if there is none.
void SetEntry(const EditTarget& target, const std::string& text);
/// Removes an entry with everything below it. Throws Failure if there is none.
void RemoveEntry(const EditTarget& target);
/// Adds an entry under a new key, or at the end of an array, where the key is the array's length or `-`. Throws
/// Failure.
/// text             the text of a NewEntry::Text; tables and arrays are added empty
/// creates_parents  whether missing tables of the path are added, too
void AddEntry(const EditTarget& target, NewEntry kind, const std::string& text, bool creates_parents);

/// Writes a tree as text to an output and commits it. If the text form would lose something, throws Failure and leaves
/// the file as it was.
/// changed  the path of the changed entry, for messages; empty if nothing was changed
void SaveAsText(const ConfigFile& file, AtomicOutputFile& output, const std::string& changed);

} // namespace Command

#endif
