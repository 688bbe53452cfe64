// The heap as RapidJSON needs it. The library writes to what its allocator returns without a look; so this one throws
// where memory runs out, and the one function around each use of RapidJSON turns that into a failure.

#ifndef TESSARIN_DOCUMENTS_THROWING_ALLOCATOR_H
#define TESSARIN_DOCUMENTS_THROWING_ALLOCATOR_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace Tessarin {

/// An allocator by RapidJSON's concept: Malloc and Realloc return null for a size of 0 alone.
struct ThrowingAllocator {
    static const bool kNeedFree = true;

    static void* Malloc(std::size_t size) { return size == 0 ? nullptr : Checked(std::malloc(size)); }

    static void* Realloc(void* block, std::size_t, std::size_t size) {
        if (size != 0) return Checked(std::realloc(block, size));
        std::free(block);
        return nullptr;
    }

    static void Free(void* block) { std::free(block); }

private:
    static void* Checked(void* block) {
        if (block == nullptr) throw std::bad_alloc();
        return block;
    }
};

} // namespace Tessarin

#endif
