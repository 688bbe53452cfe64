// Hash maps: wide keys, many buckets, refusals, and failing allocations. The fuzzer compares content and order with a
// model of the same rules.

#include "containers/hash_map.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

std::uint32_t Set(hm* map, std::uintptr_t key, std::uint32_t value) { return i32hm_set(map, key, &value); }

/// Whether the value of a key is there, and is this one.
bool Has(hm* map, std::uintptr_t key, std::uint32_t value) {
    const void* place = i32hm_get(map, key);
    return place != nullptr && std::memcmp(place, &value, sizeof value) == 0;
}

/// Keys that differ in bits that the hash doesn't ignore.
std::uintptr_t KeyOf(std::uint32_t number) { return std::uintptr_t{number} * 8; }

TEST(HashMap, WideKeysGetDifferentBuckets) {
    if constexpr (sizeof(std::uintptr_t) > 4) {
        for (const std::uint32_t bucket_count : {16U, 128U, 1024U, 99991U}) {
            hm* map = i32hm_create(bucket_count, 4);
            const auto key_of = [](std::uint64_t number) {
                return static_cast<std::uintptr_t>(0x7F0012345670U + (number << 32));
            };
            for (std::uint32_t i = 0; i < 4; ++i) Set(map, key_of(i), i);
            for (std::uint32_t i = 0; i < 4; ++i) {
                EXPECT_TRUE(Has(map, key_of(i), i));
                EXPECT_EQ(i32hm_find(map, key_of(i))->next, nullptr); // alone in its bucket
            }
            EXPECT_EQ(i32hm_find(map, 0x12345670U), nullptr);
            i32hm_destroy(map);
        }
    }
}

TEST(HashMap, ChunksDependOnTheBuckets) {
    for (const auto& [buckets, blocks] : {std::pair{20U, 16U}, {40U, 21U}, {99991U, 128U}}) {
        hm* map = i32hm_create(buckets, 4);
        EXPECT_EQ(map->pool->blocks_per_chunk, blocks);
        i32hm_destroy(map);
    }
}

TEST(HashMap, RefusesBadSizesAndHandles) {
    for (const auto& [buckets, value_size] :
         {std::pair{0U, 4U}, {4U, 0U}, {UINT32_MAX, 4U}, {4U, UINT32_MAX}, {4U, 0x10000000U}}) {
        EXPECT_EQ(i32hm_create(buckets, value_size), nullptr) << buckets << ", " << value_size;
    }
    std::array<std::uint32_t, 14> foreign = {20, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    const auto before = foreign;
    hm* map = i32hm_create(4, 4);
    Set(map, 1, 1);
    hm_node* node = i32hm_find(map, 1);
    for (hm* bad : {static_cast<hm*>(nullptr), reinterpret_cast<hm*>(foreign.data())}) {
        EXPECT_EQ(i32hm_empty(bad), 1U);
        EXPECT_EQ(Set(bad, 1, 1), 0U);
        EXPECT_EQ(i32hm_get(bad, 1), nullptr);
        for (hm_node* none : {i32hm_find(bad, 1), i32hm_begin(bad), i32hm_next(bad, node)}) EXPECT_EQ(none, nullptr);
        i32hm_erase_key(bad, 1);
        i32hm_erase_ptr(bad, node);
        i32hm_clear(bad);
        i32hm_destroy(bad);
    }
    EXPECT_EQ(foreign, before);
    EXPECT_EQ(i32hm_set(map, 2, nullptr), 0U);
    EXPECT_EQ(i32hm_ptr2value(nullptr), nullptr);
    EXPECT_EQ(i32hm_next(map, nullptr), nullptr);
    i32hm_erase_ptr(map, nullptr);
    EXPECT_EQ(map->count, 1U);
    EXPECT_TRUE(Has(map, 1, 1));
    i32hm_destroy(map);
}

TEST(HashMap, BothPrefixesNameTheSameFunctions) {
    // Through volatile pointers: a compiler takes differently named functions to be different without looking.
    using Function = void (*volatile)();
    auto same = [](auto* integer_name, auto* pointer_name) {
        Function left = reinterpret_cast<void (*)()>(integer_name);
        Function right = reinterpret_cast<void (*)()>(pointer_name);
        return left == right;
    };
    EXPECT_TRUE(same(i32hm_create, ptrhm_create) && same(i32hm_destroy, ptrhm_destroy));
    EXPECT_TRUE(same(i32hm_empty, ptrhm_empty) && same(i32hm_clear, ptrhm_clear));
    EXPECT_TRUE(same(i32hm_get, ptrhm_get) && same(i32hm_find, ptrhm_find));
    EXPECT_TRUE(same(i32hm_ptr2value, ptrhm_ptr2value) && same(i32hm_set, ptrhm_set));
    EXPECT_TRUE(same(i32hm_erase_key, ptrhm_erase_key) && same(i32hm_erase_ptr, ptrhm_erase_ptr));
    EXPECT_TRUE(same(i32hm_begin, ptrhm_begin) && same(i32hm_next, ptrhm_next));
    EXPECT_FALSE(same(i32hm_get, ptrhm_find));
}

TEST(HashMap, EveryAllocationMayFail) {
    constexpr std::uint32_t kKeys = 100;
    const std::size_t failures = FailEachAllocation([](FailingHeap& heap) {
        hm* map = i32hm_create(2, 4);
        EXPECT_TRUE(map != nullptr || heap.Failed());
        std::uint32_t set = 0;
        for (std::uint32_t key = 0; key < kKeys; ++key) {
            const bool is_set = Set(map, KeyOf(key), key) == 1;
            EXPECT_TRUE(is_set || heap.Failed());
            EXPECT_EQ(Has(map, KeyOf(key), key), is_set);
            set += is_set ? 1 : 0;
        }
        EXPECT_TRUE(map == nullptr || (map->count == set && set >= kKeys - 1));
        // The pool's list of free blocks may not grow.
        for (std::uint32_t key = 0; key < kKeys; ++key) i32hm_erase_key(map, KeyOf(key));
        EXPECT_EQ(i32hm_empty(map), 1U);
        i32hm_destroy(map);
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GE(failures, 17U); // record, buckets, pool of five and its growing lists, doublings, chunks
}

} // namespace
