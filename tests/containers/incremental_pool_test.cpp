// Incremental pools (imem_): where allocations lie, refusals, and failing allocations.

#include "containers/incremental_pool.h"
#include "tessarin/containers.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

char* Allocate(imem* pool, std::uint32_t size) {
    auto* bytes = static_cast<char*>(imem_alloc(pool, size));
    if (bytes != nullptr) std::memset(bytes, 0xEE, size);
    return bytes;
}

TEST(IncrementalPool, AllocatesBackToBack) {
    imem* pool = imem_create(100);
    const Tessarin::IncrementalChunk* chunk = pool->current;
    EXPECT_EQ(static_cast<const void*>(chunk->data), static_cast<const void*>(chunk + 1));
    char* first = Allocate(pool, 60);
    EXPECT_EQ(static_cast<void*>(first), static_cast<void*>(chunk->data));
    char* second = Allocate(pool, 60);
    EXPECT_EQ(pool->current->next, chunk);
    char* third = Allocate(pool, 1);
    EXPECT_EQ(third, second + 60); // not after the first, where it would fit too
    EXPECT_EQ(Allocate(pool, 39), third + 1);
    EXPECT_EQ(pool->current->next, chunk);
    char* full = Allocate(pool, 100);
    EXPECT_EQ(static_cast<void*>(full), static_cast<void*>(pool->current->data));
    imem_destroy(pool);
}

TEST(IncrementalPool, RefusesBadSizesAndHandles) {
    EXPECT_EQ(imem_create(0), nullptr);
    imem* pool = imem_create(100);
    for (const std::uint32_t size : {0U, 101U, UINT32_MAX}) {
        EXPECT_EQ(imem_alloc(pool, size), nullptr);
        EXPECT_EQ(pool->current->used, 0U);
    }
    Allocate(pool, 100);
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
        if (pool != nullptr) {
            char* first = Allocate(pool, 6);
            char* second = Allocate(pool, 6);
            EXPECT_EQ(second == nullptr, heap.Failed());
            EXPECT_EQ(Allocate(pool, 4), second == nullptr ? first + 6 : second + 6);
        }
        imem_destroy(pool);
        EXPECT_TRUE(pool != nullptr || heap.Failed());
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_EQ(failures, 3U);
}

} // namespace
