// A configuration tree as plain data, and how much of it each form can express.

#ifndef TESSARIN_FUZZ_CONFIGURE_TREE_H
#define TESSARIN_FUZZ_CONFIGURE_TREE_H

#include "tessarin/configure.h"
#include "tests/support/memory_files.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Fuzz {

/// A Unit with everything below it; a table without a key is a root or an element.
struct Node {
    std::uint32_t kind = Configure::KIND_TABLE;
    std::optional<std::string> key;
    std::optional<std::string> text; // of a scalar; nothing if it has no text
    std::vector<Node> units;         // of a table or an array
};

/// The tree of a table, from a complete walk. Requires on the way that walk, count, names, tests, getters and searches
/// agree: every key is found, and if `in_file_order`, what is found is the first Unit of that key.
Node TreeOf(Configure::ITable& table, bool in_file_order);

/// Requires that getters find in a table's default table what the table itself doesn't have; a default table is one
/// named `_default`.
/// fallback  the default of `table`; null for a root
/// REQUIRES: the tree is as it was loaded
void CheckDefaults(Configure::ITable& table, Configure::ITable* fallback);

/// What a form keeps of a tree. Neither form has null texts; of several scalars with one key, the binary form keeps
/// only the last in the file.
enum class Kept { kAll, kWritten, kCompiled };

/// Everything that a form keeps of a tree, as one text that doesn't depend on the order of a table's Units.
/// REQUIRES: for kCompiled, the tree is in the order of its file
std::string Spelled(const Node& tree, Kept kept);

/// Whether a table or an array shares its key with another entry, which the binary form can't express.
bool SharesKeyOfContainer(const Node& tree);

/// Whether the text form can express the tree, so that its save reads back as the same tree.
bool IsSayable(const Node& tree);

/// An upper bound of the bytes in a line of the tree's text form, and of the columns of an indent.
std::size_t LongestLine(const Node& tree);

/// One file object over a file service of its own.
class LoadedFile {
public:
    ~LoadedFile();
    LoadedFile() = default;
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    Configure::ITable* Load(std::string_view bytes, std::uint32_t access, std::uint32_t format);

    /// What SaveAs writes; nothing if it returns false.
    std::optional<std::string> Saved(std::uint32_t format);

private:
    struct Releaser {
        void operator()(Configure::IFile* file) const { file->Release(); }
    };

    TestSupport::MemoryFiles files_;
    std::unique_ptr<Configure::IFile, Releaser> file_{CreateRLFile(&files_)};
};

/// Saves a tree in the binary form, loads that, and requires the same tree, as far as the form keeps it.
/// tree  the tree of `file`, in the order of the file that it was loaded from
void CheckCompiled(LoadedFile& file, const Node& tree);

/// Saves a tree in the text form and loads that with both accesses; requires the same tree if the form can express it.
void CheckWritten(LoadedFile& file, const Node& tree);

} // namespace Fuzz

#endif
