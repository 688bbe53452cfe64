// Incremental pools (imem_): refusals, and failing allocations. The fuzzer checks where allocations lie.

#include "containers/incremental_pool.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

TEST(IncrementalPool, RefusesBadSizesAndHandles) {
    EXPECT_EQ(imem_create(0), nullptr);
    imem* pool = imem_create(100);
    EXPECT_EQ(imem_alloc(pool, UINT32_MAX), nullptr);
    EXPECT_NE(imem_alloc(pool, 100), nullptr);
    EXPECT_EQ(imem_alloc(pool, 0), nullptr); // also of a full chunk
    EXPECT_EQ(pool->current->next, nullptr);
    imem_destroy(pool);

    std::array<std::uint32_t, 6> foreign = {20, 1, 2, 3, 4, 5};
    for (imem* bad : {static_cast<imem*>(nullptr), reinterpret_cast<imem*>(foreign.data())}) {
        EXPECT_EQ(imem_alloc(bad, 1), nullptr);
        imem_destroy(bad);
    }
}

TEST(IncrementalPool, EveryAllocationMayFail) {
    const std::size_t failures = FailEachAllocation([](FailingHeap& heap) {
        imem* pool = imem_create(10);
        auto* first = static_cast<char*>(imem_alloc(pool, 6));
        auto* second = static_cast<char*>(imem_alloc(pool, 6));
        EXPECT_EQ(second == nullptr, heap.Failed());
        // Without a second chunk, the first one still has room for less.
        if (pool != nullptr) {
            EXPECT_EQ(imem_alloc(pool, 4), (second == nullptr ? first : second) + 6);
        }
        imem_destroy(pool);
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_EQ(failures, 3U);
}

} // namespace
