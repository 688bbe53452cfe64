// Any bytes as a configuration text. Both accesses accept or reject it alike and give the same tree, and their saves in
// both forms read back as that tree; both accesses save the same binary form, byte for byte.

#include "fuzz/check.h"
#include "fuzz/configure_tree.h"

namespace {

using namespace Fuzz;

/// Both accesses return the first of several Units with one key.
void CheckFirsts(const Node& tree, Configure::ITable& read, Configure::ITable& edited) {
    for (const Node& unit : tree.units) {
        if (unit.kind != Configure::KIND_STRING || unit.key->empty()) continue;
        const char* key = unit.key->c_str();
        Require(read.GetString(key) == edited.GetString(key), "the accesses find different Units");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    LoadedFile reading;
    LoadedFile editing;
    Configure::ITable* read = reading.Load(text, Configure::ACCESS_READ, Configure::FORMAT_TEXT);
    Configure::ITable* edited = editing.Load(text, Configure::ACCESS_EDIT, Configure::FORMAT_TEXT);
    Require((read == nullptr) == (edited == nullptr), "one access refuses what the other takes");
    if (read == nullptr) return 0;

    const Node tree = TreeOf(*edited, true);
    Require(Spelled(TreeOf(*read, false), Kept::kAll) == Spelled(tree, Kept::kAll), "the accesses see different trees");
    CheckFirsts(tree, *read, *edited);
    CheckDefaults(*read, nullptr);
    CheckDefaults(*edited, nullptr);
    Require(reading.Saved(Configure::FORMAT_BINARY) == editing.Saved(Configure::FORMAT_BINARY),
            "the binary form hangs on the access");
    CheckCompiled(reading, tree);
    CheckWritten(reading, tree);
    CheckWritten(editing, tree);
    return 0;
}
