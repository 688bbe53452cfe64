// A configuration tree as plain data, how it is read through the interfaces, and what must hold for every tree.

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

    bool operator==(const Node&) const = default;
};

/// The tree of a table, from a complete walk. Requires on the way that walk, count, names, tests, getters and searches
/// agree, and that what is found is the first Unit of its key.
Node TreeOf(Configure::ITable& table);

/// A key in lower case, and a path key.
std::string LowerCase(std::string text);
std::string PathForm(const std::string& text);

/// One file object over a file service of its own.
class LoadedFile {
public:
    ~LoadedFile();
    LoadedFile() = default;
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    Configure::ITable* Load(std::string_view bytes, std::uint32_t access, std::uint32_t format);
    Configure::ITable* Root() { return file_->GetRoot(); }

    /// What SaveAs writes; nothing if it returns false.
    std::optional<std::string> Saved(std::uint32_t format);

private:
    struct Releaser {
        void operator()(Configure::IFile* file) const { file->Release(); }
    };

    TestSupport::MemoryFiles files_;
    std::unique_ptr<Configure::IFile, Releaser> file_{CreateRLFile(&files_)};
};

/// Loads a text with both accesses; requires that each gives the tree of the model, or that both refuse the text.
void CheckText(std::string_view text, LoadedFile& reading, LoadedFile& editing);

/// Saves what is loaded in both forms, and loads those: each must be what the model makes of the tree.
void CheckSaves(LoadedFile& file);

} // namespace Fuzz

#endif
