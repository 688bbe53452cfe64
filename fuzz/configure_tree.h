/// A configuration tree as plain data, and what a form can say of it.

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

/// A Unit with all that is below it; a table without a key is a root or an element.
struct Node {
    std::uint32_t kind = Configure::KIND_TABLE;
    std::optional<std::string> key;
    std::optional<std::string> text; ///< of a scalar, which may have none
    std::vector<Node> units;         ///< of a table or an array
};

/// The tree of a table, walked whole. That walk, count, names, tests, getters and searches agree is required on the
/// way: every key is found, and what is found is the first Unit of that key if `in_file_order`.
Node TreeOf(Configure::ITable& table, bool in_file_order);

/// Getters find in a table's default what the table itself doesn't have, as the tables named `_default` say.
/// its_default  that of `table`; null for a root
/// REQUIRES: the tree is as it was loaded
void CheckDefaults(Configure::ITable& table, Configure::ITable* its_default);

/// What a form keeps of a tree. The text form has no null texts; the binary form neither, and of several scalars under
/// one key the last in the file.
enum class Kept { kAll, kWritten, kCompiled };

/// All that a form keeps of a tree, as one text that doesn't hang on the order of a table's Units.
/// REQUIRES: for what the binary form keeps, the tree is in the order of its file
std::string Spelled(const Node& tree, Kept kept);

/// Whether a table or an array shares its key with another entry, which no binary form holds.
bool SharesKeyOfContainer(const Node& tree);

/// Whether the text form can say the tree, so that its save reads back.
bool IsSayable(const Node& tree);

/// More than any line of the tree's text form has bytes, and more than any indent has columns.
std::size_t LongestLine(const Node& tree);

/// One file object over a file service of its own.
class LoadedFile {
public:
    ~LoadedFile();
    LoadedFile() = default;
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    Configure::ITable* Load(std::string_view bytes, std::uint32_t access, std::uint32_t format);

    /// What SaveAs writes; nothing if it answers false.
    std::optional<std::string> Saved(std::uint32_t format);

private:
    struct Releaser {
        void operator()(Configure::IFile* file) const { file->Release(); }
    };

    TestSupport::MemoryFiles files_;
    std::unique_ptr<Configure::IFile, Releaser> file_{CreateRLFile(&files_)};
};

/// Saves a tree in the binary form and loads that: what comes back is the tree, as far as the form keeps it.
/// tree  that of `file`, in the order of the file that it was loaded from
void CheckCompiled(LoadedFile& file, const Node& tree);

/// The same for the text form, as far as it can say the tree, with both accesses.
void CheckWritten(LoadedFile& file, const Node& tree);

} // namespace Fuzz

#endif
