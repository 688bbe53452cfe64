// Any bytes as a configuration text. Both accesses load the tree of the model, their saves in both forms are those of
// the model, and both save the same binary form, byte for byte.

#include "fuzz/check.h"
#include "fuzz/configure_tree.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::LoadedFile reading, editing;
    Fuzz::CheckText({reinterpret_cast<const char*>(data), size}, reading, editing);
    if (reading.Root() == nullptr) return 0;
    Fuzz::CheckSaves(reading);
    Fuzz::CheckSaves(editing);
    Fuzz::Require(reading.Saved(Configure::FORMAT_BINARY) == editing.Saved(Configure::FORMAT_BINARY),
                  "the binary form hangs on the access");
    return 0;
}
