// Empties the library's pools and its arena of strings, so that an operation allocates from the heap, where its
// allocation can fail.

#ifndef TESSARIN_TESTS_FAULTS_DRAINED_POOLS_H
#define TESSARIN_TESTS_FAULTS_DRAINED_POOLS_H

#include "tests/support/failing_heap.h"
#include "tests/support/library_pools.h"

#include "tessarin/tables.h"

#include <bit>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// Takes every free block out of the library's pools, and keeps it.
class DrainedPools {
public:
    /// Whether every pool's blocks make up whole chunks, as they do when nobody holds one.
    bool Drain() {
        bool whole = true;
        for (Taken& each : pools_) {
            TakeFree(each);
            whole = whole && each.blocks % each.pool.per_chunk == 0;
            // A pool's list of chunks grows at 8, 16 and so on, and a chunk that it has no room for is never released.
            // So it grows here, until two more chunks find their room.
            while (std::has_single_bit(each.Chunks()) || std::has_single_bit(each.Chunks() + 1)) {
                if (each.pool.take() == nullptr) break;
                ++each.blocks;
                TakeFree(each);
            }
        }
        return whole;
    }

private:
    // What has been taken from a pool.
    struct Taken {
        AnyPool pool;
        std::size_t blocks = 0;

        [[nodiscard]] std::size_t Chunks() const { return (blocks + pool.per_chunk - 1) / pool.per_chunk; }
    };

    static std::vector<Taken> Pools() {
        std::vector<Taken> pools;
        for (AnyPool& pool : AllPools(*Tessarin::table_pools, *Tessarin::listener_pools)) {
            pools.push_back({std::move(pool)});
        }
        return pools;
    }

    static void TakeFree(Taken& each) {
        for (;;) {
            const FailingHeap heap(0);
            if (each.pool.take() == nullptr) return;
            ++each.blocks;
        }
    }

    std::vector<Taken> pools_ = Pools();
};

/// A text that isn't interned, longer than what FillArena leaves.
inline std::string FreshText() {
    static int number = 0;
    return "fresh" + std::to_string(1000000 + ++number) + std::string(64, '_');
}

/// Interns until the arena has no room for a text like FreshText's.
inline void FillArena() {
    static int number = 0;
    for (std::size_t size = 0x80000; size >= 32; size /= 2) {
        for (int failures = 0; failures < 3;) { // in a row, as a text may also lack a place in the table's index
            std::string text = std::to_string(++number);
            text.resize(size, '-');
            const FailingHeap heap(0);
            failures = cstr_string(text.c_str()) != nullptr ? 0 : failures + 1;
        }
    }
}

} // namespace TestSupport

#endif
