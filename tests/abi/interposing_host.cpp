// A host that has functions of its own under every name that the library exports, each of which ends the program. The
// library must never call one of them: interposing_host LIBRARY DOCUMENT

#include "tests/abi/loaded_library.h"

int main(int count, char** arguments) {
    Require(count == 3, "two arguments");
    // The host's symbols must be where the loader looks first, or this test would show nothing.
    void* own = dlsym(RTLD_DEFAULT, "Clear");
    const LoadedLibrary library(arguments[1]);
    Require(own != nullptr && own == dlsym(RTLD_DEFAULT, "Clear"), "the host's own Clear comes first");
    Require(own != reinterpret_cast<void*>(library.Get<std::uint32_t(Tessarin::ITable*)>(nullptr, "Clear")),
            "the library has another one");
    UseLibrary(library, arguments[2]);
    return 0;
}
