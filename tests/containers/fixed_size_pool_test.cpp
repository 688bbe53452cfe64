// Fixed-size pools (omem_): refusals, and lists of chunks and blocks that can't grow. The fuzzer predicts each block.

#include "containers/fixed_size_pool.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

TEST(FixedSizePool, ListsHaveTheirOwnThresholds) {
    omem* pool = omem_create(16, 100);
    EXPECT_EQ(farr_threshold(pool->chunks), 64U);
    EXPECT_EQ(farr_threshold(pool->free_list), 3200U);
    omem_destroy(pool);
}

TEST(FixedSizePool, RefusesBadSizesAndHandles) {
    EXPECT_EQ(omem_create(0, 8), nullptr);
    EXPECT_EQ(omem_create(8, 0), nullptr);
    EXPECT_EQ(omem_create(0x10000, 0x10000), nullptr); // 4 GiB, which would be 0 in 32 bits
    EXPECT_EQ(omem_create(0x10001, 0x10000), nullptr);
    std::array<std::uint32_t, 10> foreign = {24, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    const auto before = foreign;
    for (omem* bad : {static_cast<omem*>(nullptr), reinterpret_cast<omem*>(foreign.data())}) {
        EXPECT_EQ(omem_alloc(bad), nullptr);
        omem_free(bad, foreign.data());
        omem_clear(bad);
        EXPECT_EQ(omem_destroy(bad), 0);
    }
    EXPECT_EQ(foreign, before);
    omem* pool = omem_create(8, 4);
    omem_free(pool, nullptr);
    EXPECT_EQ(omem_destroy(pool), 0);
}

TEST(FixedSizePool, EveryAllocationMayFail) {
    constexpr std::uint32_t kBlocks = 3;
    constexpr int kAllocated = 90; // enough for the list of chunks to grow, and for the list of free blocks
    const std::size_t failures = FailEachAllocation([](FailingHeap& heap) {
        omem* pool = omem_create(8, kBlocks);
        void* blocks[kAllocated] = {};
        for (void*& block : blocks) block = omem_alloc(pool);
        EXPECT_LE(std::count(std::begin(blocks), std::end(blocks), nullptr), pool == nullptr ? kAllocated : 1);
        for (void* block : blocks) omem_free(pool, block);
        omem_clear(pool); // blocks that the list had no room for are free again
        EXPECT_TRUE(pool == nullptr || pool->free_list->count >= kAllocated - kBlocks);
        EXPECT_EQ(omem_destroy(pool), 0);
        EXPECT_TRUE(pool != nullptr || heap.Failed());
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GT(failures, 6U + kAllocated / kBlocks);
}

TEST(FixedSizePool, ListsAChunkLaterIfItsListIsFull) {
    omem* pool = omem_create(8, 1);
    const auto allocate = [&pool](int number) {
        for (; number != 0; --number) EXPECT_NE(omem_alloc(pool), nullptr);
    };
    allocate(12); // the list of chunks is full
    {
        const FailingHeap heap(1); // the thirteenth chunk is made, its list entry isn't
        allocate(1);
        EXPECT_TRUE(heap.Failed());
    }
    EXPECT_EQ(pool->chunks->count, 12U);
    {
        const FailingHeap heap(0); // while one waits, no other is allocated
        EXPECT_EQ(omem_alloc(pool), nullptr);
        EXPECT_EQ(heap.Allocations(), 1U);
    }
    omem_clear(pool);
    EXPECT_EQ(pool->free_list->count, 13U);
    allocate(14);
    EXPECT_EQ(pool->chunks->count, 14U);
    EXPECT_EQ(omem_destroy(pool), 14);
}

} // namespace
