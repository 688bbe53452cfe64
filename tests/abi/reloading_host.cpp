// Loads, uses and unloads the library a hundred times: it is gone each time, and nothing of it stays on the heap.
// reloading_host LIBRARY DOCUMENT

#include "tests/abi/loaded_library.h"

#include <malloc.h>

namespace {

std::size_t HeapInUse() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

} // namespace

int main(int count, char** arguments) {
    Require(count == 3, "two arguments");
    constexpr int kRounds = 100, kWarm = 3; // the loader and the C library keep a little of their own at first
    std::size_t warm = 0;
    for (int round = 0; round < kRounds; ++round) {
        {
            const LoadedLibrary library(arguments[1]);
            UseLibrary(library, arguments[2]);
        }
        Require(dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD) == nullptr, "the library is unloaded");
        if (round == kWarm) warm = HeapInUse();
    }
    const std::size_t at_end = HeapInUse(); // before printf takes a buffer of its own
    std::printf("heap in use: %zu bytes after %d rounds, %zu after %d\n", warm, kWarm + 1, at_end, kRounds);
    Require(at_end <= warm, "nothing stays behind");
    return 0;
}
