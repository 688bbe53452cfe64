// A row of block pools with ascending block sizes; a growing array moves from one to the next.
//
//    bytes wanted      0 .. a     a+1 .. b    b+1 .. c      more
//                        |           |           |           |
//                    +-------+   +-------+   +-------+   +--------+
//                    | pool  |   | pool  |   | pool  |   | malloc |
//                    | of a  |   | of b  |   | of c  |   |        |
//                    +-------+   +-------+   +-------+   +--------+
//
// A block has no header: only its size says where it came from, so the owner must remember the size. The sizes are
// beside the layouts that have them: kEntryArrayClasses in tables/entry_array.h, kDelegateClasses in
// tables/listener_set.h.

#ifndef TESSARIN_MEMORY_SIZE_CLASS_POOLS_H
#define TESSARIN_MEMORY_SIZE_CLASS_POOLS_H

#include "memory/block_pool.h"
#include "memory/sizes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>

namespace Tessarin {

struct SizeClass {
    std::uint32_t block_size; // bytes
    std::uint32_t blocks_per_chunk;
};

/// kClasses  an array of SizeClass, ascending by block size
/// Safe from any thread.
template <const auto& kClasses>
class SizeClassPools {
public:
    /// Each pool makes its first chunk now, or, if memory runs out, tries again at its first block.
    SizeClassPools() { // GCOVR_EXCL_LINE: the way out of an exception, which nothing throws
        for (std::size_t i = 0; i < std::size(kClasses); ++i) {
            pools_[i].Init(kClasses[i].block_size, OrSmall(kClasses[i].blocks_per_chunk, 1U));
        }
    }

    /// A block of at least that many bytes, uninitialised; null if memory ran out or they don't fit in it.
    void* Acquire(std::uint64_t bytes) {
        if (ObjectPool* pool = PoolFor(bytes)) return pool->Alloc();
        return bytes > std::uint64_t{PTRDIFF_MAX} ? nullptr : std::malloc(static_cast<std::size_t>(bytes));
    }

    /// Frees a block; null is ignored. REQUIRES: `bytes` is the number that it was acquired with
    void Release(void* block, std::uint64_t bytes) {
        if (ObjectPool* pool = PoolFor(bytes)) {
            pool->Free(block);
        } else {
            std::free(block);
        }
    }

private:
    /// The pool of the smallest class that can hold `bytes`; null if none can.
    ObjectPool* PoolFor(std::uint64_t bytes) {
        for (std::size_t i = 0; i < std::size(kClasses); ++i) {
            if (bytes <= kClasses[i].block_size) return &pools_[i];
        }
        return nullptr;
    }

    ObjectPool pools_[std::size(kClasses)];
};

} // namespace Tessarin

#endif
