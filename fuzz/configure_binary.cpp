// Any bytes as the binary form. What loads is a tree that can be walked completely, and its saves are those of the
// model.

#include "fuzz/configure_tree.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::LoadedFile file;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (file.Load(bytes, Configure::ACCESS_READ, Configure::FORMAT_BINARY) != nullptr) Fuzz::CheckSaves(file);
    return 0;
}
