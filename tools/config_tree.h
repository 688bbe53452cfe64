/// Configuration trees as the commands need them: opened with a reason where that fails, walked, asked by a way, and
/// compared.

#ifndef TESSARIN_TOOLS_CONFIG_TREE_H
#define TESSARIN_TOOLS_CONFIG_TREE_H

#include "tools/files.h"
#include "tools/key_path.h"
#include "tools/outline.h"

#include <tessarin/configure.h>

#include <functional>
#include <memory>

namespace Command {

struct FileReleaser {
    void operator()(Configure::IFile* file) const { file->Release(); }
};
using ConfigFile = std::unique_ptr<Configure::IFile, FileReleaser>;

/// What stands at one place of a tree: one of the three, or nothing.
struct Place {
    Configure::ITable* table = nullptr;
    Configure::IArray* array = nullptr;
    cstr text = nullptr;

    explicit operator bool() const { return table || array || text; }
};
Place PlaceOf(Configure::IIterator* unit);
/// A file's root.
Place RootOf(const ConfigFile& file);

/// Loads a file in either form; text in the order of the file. Throws Failure.
ConfigFile OpenConfig(const Input& input);
/// Loads a text file for editing. Throws Failure.
ConfigFile EditConfig(const Input& input);

/// What a program gets that asks for a way: where a table has no such key, its `_default` answers.
Place Ask(Place place, const KeyPath& way);
/// What stands at a way in the file itself.
Place Find(Place place, const KeyPath& way);
/// The Unit of a key in a table or of a position in an array, or null. A key is found as it is, and in its path form.
Configure::IIterator* FindUnit(const Place& place, const std::string& piece);

/// key    what the first row is called
/// limit  levels below the first row
Outline OutlineOf(const Place& place, const std::string& key, std::size_t limit);

/// One difference between two trees: what stands at a way in either, null in the one that has nothing there.
struct Difference {
    std::string way;
    const Row* before;
    const Row* after;
};
/// Compares what two trees hold, whatever their order, and tells each difference; a table or an array that only one of
/// them has is one difference. Entries of a table that share a key are compared in their order. An entry without any
/// value counts as an empty text.
void Compare(const Place& before, const Place& after, const std::function<void(const Difference&)>& tell);

} // namespace Command

#endif
