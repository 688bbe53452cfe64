// Fixed-size pools (omem_): the order of allocation, the count of unfreed blocks, and failing allocations.

#include "containers/fixed_size_pool.h"
#include "tessarin/containers.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <vector>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

std::vector<char*> AllocateBlocks(omem* pool, int number) {
    std::vector<char*> blocks(static_cast<std::size_t>(number));
    for (char*& block : blocks) block = static_cast<char*>(omem_alloc(pool));
    return blocks;
}

TEST(FixedSizePool, AllocatesEachChunkFromTheTop) {
    omem* pool = omem_create(5, 4); // strides aren't rounded
    std::vector<char*> blocks = AllocateBlocks(pool, 8);
    for (const std::size_t chunk : {0U, 4U}) {
        const char* lowest = blocks[chunk + 3];
        for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(blocks[chunk + i], lowest + (3 - i) * 5);
    }
    omem_free(pool, blocks[2]);
    omem_free(pool, blocks[5]);
    omem_free(pool, nullptr);
    EXPECT_EQ(omem_alloc(pool), blocks[5]);
    EXPECT_EQ(omem_alloc(pool), blocks[2]);
    EXPECT_EQ(omem_destroy(pool), 8);
}

TEST(FixedSizePool, CountsUnfreedBlocks) {
    struct Case {
        int allocated;
        std::size_t freed;
        std::int32_t unfreed;
    };
    for (const Case& c : {Case{0, 0, 0}, Case{8, 3, 5}, Case{5, 5, 0}, Case{4, 0, 4}}) {
        omem* pool = omem_create(16, 4);
        std::vector<char*> blocks = AllocateBlocks(pool, c.allocated);
        for (std::size_t i = 0; i < c.freed; ++i) omem_free(pool, blocks[i]);
        EXPECT_EQ(omem_destroy(pool), c.unfreed);
    }
}

TEST(FixedSizePool, ClearingFreesEveryBlockOfEveryChunk) {
    omem* pool = omem_create(16, 4);
    std::vector<char*> blocks = AllocateBlocks(pool, 9); // three chunks
    omem_free(pool, blocks[0]);
    omem_clear(pool);
    EXPECT_EQ(pool->free_list->count, 12U);
    EXPECT_EQ(omem_alloc(pool), blocks[8]);
    std::vector<char*> others = AllocateBlocks(pool, 11);
    EXPECT_EQ(others[10], blocks[3]); // the first chunk's lowest block is allocated last
    EXPECT_EQ(std::set<char*>(others.begin(), others.end()).size(), 11U);
    EXPECT_EQ(omem_destroy(pool), 12);
}

TEST(FixedSizePool, ListsHaveTheirOwnThresholds) {
    omem* pool = omem_create(16, 100);
    EXPECT_EQ(farr_threshold(pool->chunks), 64U);
    EXPECT_EQ(farr_threshold(pool->free_list), 3200U);
    omem_destroy(pool);
    // All are freed, so that the list exceeds the size from which it grows by realloc.
    pool = omem_create(8, 64);
    std::vector<char*> blocks = AllocateBlocks(pool, 40000);
    for (char* block : blocks) omem_free(pool, block);
    std::reverse(blocks.begin(), blocks.end());
    for (char* block : blocks) ASSERT_EQ(omem_alloc(pool), block);
    EXPECT_EQ(omem_destroy(pool), 40000);
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
    AllocateBlocks(pool, 12); // the list of chunks is full
    {
        const FailingHeap heap(1); // the thirteenth chunk is made, its list entry isn't
        EXPECT_NE(omem_alloc(pool), nullptr);
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
    AllocateBlocks(pool, 14);
    EXPECT_EQ(pool->chunks->count, 14U);
    EXPECT_EQ(omem_destroy(pool), 14);
}

} // namespace
