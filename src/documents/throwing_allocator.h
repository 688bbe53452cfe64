// The heap as an allocator for RapidJSON. RapidJSON doesn't check what its allocator returns, so this one throws if
// memory runs out, and the function that calls RapidJSON turns the exception into a failure.

#ifndef TESSARIN_DOCUMENTS_THROWING_ALLOCATOR_H
#define TESSARIN_DOCUMENTS_THROWING_ALLOCATOR_H

#include <cstddef>
#include <cstdlib>
#include <new>

namespace Tessarin {

/// A model of RapidJSON's allocator concept: Malloc and Realloc return null only for a size of 0.
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
