// The block pools: which block is next, when the heap is called, what a failure leaves lost, the size classes. What
// each failure of an allocation leaves undone: tests/faults.

#include "memory/block_pool.h"
#include "memory/poison.h"
#include "tables/table_pools.h"
#include "tests/support/failing_heap.h"
#include "tests/support/library_pools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <set>
#include <utility>

namespace {

using namespace Tessarin;
using TestSupport::FailingHeap;

TEST(RawVector, DoublesFromEightAndReservesTwiceTheNeed) {
    RawVector vector;
    ASSERT_TRUE(vector.Reset(sizeof(int)));
    for (std::uint32_t n = 0; n < 33; ++n) {
        EXPECT_EQ(*static_cast<std::uint32_t*>(vector.Push(&n)), n);
        EXPECT_EQ(vector.capacity, n < 8 ? 8U : n < 16 ? 16U : n < 32 ? 32U : 64U);
    }
    EXPECT_TRUE(vector.Reserve(64));
    EXPECT_EQ(vector.count, 33U) << "within the capacity nothing changes";
    EXPECT_TRUE(vector.Reserve(65));
    {
        const FailingHeap heap(0);
        EXPECT_FALSE(vector.Reserve(131));
    }
    EXPECT_FALSE(vector.Reserve(UINT32_MAX)) << "twice that is no 32-bit number";
    EXPECT_EQ(vector.count, 65U);
    EXPECT_EQ(vector.capacity, 130U);
    for (std::uint32_t n = 0; n < 33; ++n) EXPECT_EQ(*static_cast<std::uint32_t*>(vector.At(n)), n);
    vector.Release();
}

// So a table that is closed twice, or used after its end, is reported.
#if !defined(__has_feature)
#define __has_feature(feature) 0
#endif
#if defined(ASAN_POISON_MEMORY_REGION) && (defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer))
TEST(ObjectPool, FreeBlocksArePoisoned) {
    ObjectPool pool(24, 4);
    auto* block = static_cast<char*>(pool.Alloc());
    EXPECT_EQ(__asan_region_is_poisoned(block, 24), nullptr);
    EXPECT_EQ(__asan_region_is_poisoned(block - 24, 24), block - 24) << "the next one to be handed out";
    pool.Free(block);
    EXPECT_EQ(__asan_region_is_poisoned(block, 24), block);
}
#endif

TEST(ObjectPool, HandsOutDownwardsAndTheLastOneBackFirst) {
    constexpr std::uint32_t kSize = 24;
    ObjectPool pool(kSize, 64);
    const FailingHeap heap;
    auto* first = static_cast<unsigned char*>(pool.Alloc());
    auto* second = static_cast<unsigned char*>(pool.Alloc());
    EXPECT_EQ(first - second, kSize);
    first[7] = 0x5A;
    pool.Free(first);
    pool.Free(nullptr);
    EXPECT_EQ(pool.Alloc(), first);
    EXPECT_EQ(first[7], 0x5A) << "blocks come as they were left";
    for (int n = 2; n < 64; ++n) pool.Alloc();
    EXPECT_EQ(heap.Allocations(), 0U);
    EXPECT_NE(pool.Alloc(), nullptr);
    EXPECT_EQ(heap.Allocations(), 1U) << "the 65th block needs a second chunk";
}

TEST(ObjectPool, AChunkThatIsNotRecordedIsUsedAllTheSame) {
    ObjectPool pool(16, 4);
    for (int n = 0; n < 32; ++n) pool.Alloc(); // eight chunks fill the first list of them
    void* block = nullptr;
    {
        const FailingHeap heap(1);
        block = pool.Alloc();
        EXPECT_TRUE(heap.Failed());
    }
    EXPECT_NE(block, nullptr);
    for (int n = 0; n < 3; ++n) block = pool.Alloc();
    std::free(block); // the chunk's lowest, so its start: the pool doesn't know the chunk
}

TEST(ObjectPool, LosesTheBlockThatItsStackHasNoRoomFor) {
    ObjectPool pool(16, 4);
    std::set<void*> blocks;
    for (int n = 0; n < 12; ++n) blocks.insert(pool.Alloc()); // three chunks, the stack never above its first 8
    ASSERT_EQ(blocks.size(), 12U);
    for (void* block : blocks) {
        const FailingHeap heap(0); // from the ninth on there is no room
        pool.Free(block);
    }
    const FailingHeap heap;
    for (int n = 0; n < 8; ++n) EXPECT_TRUE(blocks.contains(pool.Alloc()));
    EXPECT_EQ(heap.Allocations(), 0U);
    EXPECT_FALSE(blocks.contains(pool.Alloc()));
}

TEST(KeyPools, RoundsUpToItsClasses) {
    KeyPools keys;
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {{0, 4},   {4, 4},   {5, 8},   {8, 8},
                                                             {9, 16},  {16, 16}, {17, 32}, {32, 32},
                                                             {33, 64}, {64, 64}, {65, 65}, {128, 128}};
    for (auto [wanted, expected] : cases) {
        std::uint32_t capacity = 0;
        Pair** entries = keys.Acquire(wanted, capacity);
        ASSERT_NE(entries, nullptr);
        EXPECT_EQ(capacity, expected) << wanted;
        std::fill_n(entries, capacity, nullptr);
        keys.Release(entries, capacity);
        std::uint32_t again = 0;
        Pair** next = keys.Acquire(wanted, again);
        EXPECT_TRUE(next == entries || expected > 64) << "it went back to its own class";
        keys.Release(next, again);
        keys.Release(nullptr, capacity);
    }
    std::uint32_t capacity = 7;
    EXPECT_EQ(keys.Acquire(UINT32_MAX, capacity), nullptr);
}

TEST(TablePools, HoldOneChunkOfEveryPoolAndGiveAllBack) {
    const FailingHeap heap;
    {
        auto state = std::make_unique<TablePools>();
        auto listeners = std::make_unique<ListenerPools>();
        for (const auto& pool : TestSupport::AllPools(*state, *listeners)) {
            const std::size_t before = heap.Allocations();
            for (std::size_t n = 0; n < pool.per_chunk; ++n) EXPECT_NE(pool.take(), nullptr);
            EXPECT_EQ(heap.Allocations(), before) << pool.name << ' ' << pool.per_chunk;
            pool.take();
            EXPECT_GT(heap.Allocations(), before) << pool.name << ' ' << pool.per_chunk;
        }
        // One of the 13 listener pools is used for another: a block given back to one kind stays with it.
        void* block = listeners->delegates[0].Acquire(1);
        listeners->delegates[0].Release(block, 1);
        EXPECT_NE(listeners->delegates[1].Acquire(1), block);
        EXPECT_EQ(listeners->delegates[0].Acquire(1), block);
    }
    EXPECT_EQ(heap.Outstanding(), 0);
}

} // namespace
