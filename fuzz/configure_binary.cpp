// Any bytes as the binary form. What loads is a tree that can be walked completely, and saves in both forms read back
// as the same tree; an edited copy of it can be saved, too.

#include "fuzz/check.h"
#include "fuzz/configure_tree.h"

namespace {

using namespace Fuzz;

/// Edits a copy that was loaded from the text form: every second entry of the root is removed, and one is added.
void CheckEditedCopy(LoadedFile& file) {
    const std::optional<std::string> text = file.Saved(Configure::FORMAT_TEXT);
    if (!text) return;
    LoadedFile copy;
    Configure::ITable* root = copy.Load(*text, Configure::ACCESS_EDIT, Configure::FORMAT_TEXT);
    if (root == nullptr) return; // the text form can't express every tree
    Configure::IIterator* unit = root->Begin();
    while (unit != root->End() && unit != nullptr) {
        unit = root->Remove(unit);
        if (unit != nullptr) unit = root->Next(unit);
    }
    Configure::IIterator* added = root->AddTable("added");
    if (added != nullptr) Require(added->GetTable()->AddString("key", "[1,2]") != nullptr, "an empty table has a key");
    const Node tree = TreeOf(*root, true);
    CheckCompiled(copy, tree);
    CheckWritten(copy, tree);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    LoadedFile file;
    Configure::ITable* root = file.Load(bytes, Configure::ACCESS_READ, Configure::FORMAT_BINARY);
    if (root == nullptr) return 0;
    const Node tree = TreeOf(*root, true);
    CheckCompiled(file, tree);
    CheckWritten(file, tree);
    CheckEditedCopy(file);
    return 0;
}
