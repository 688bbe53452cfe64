// Hash maps: content and order of iteration against a model of the same rules, refusals, and failing allocations.

#include "containers/hash_map.h"
#include "tessarin/containers.h"
#include "tests/support/failing_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using TestSupport::FailEachAllocation;
using TestSupport::FailingHeap;

using Keys = std::vector<std::uintptr_t>;

Keys KeysInOrder(hm* map) {
    Keys keys;
    for (hm_node* node = i32hm_begin(map); node != nullptr; node = i32hm_next(map, node)) keys.push_back(node->key);
    return keys;
}

std::uint32_t Set(hm* map, std::uintptr_t key, std::uint32_t value) { return i32hm_set(map, key, &value); }

/// Keys that differ in bits that the hash doesn't ignore.
std::uintptr_t KeyOf(std::uint32_t number) { return std::uintptr_t{number} * 8; }

std::uint32_t ValueAt(const void* place) {
    std::uint32_t value = 0;
    std::memcpy(&value, place, sizeof(value));
    return value;
}

/// Buckets and chains by the same rules, without any of the map's code.
class MapModel {
public:
    explicit MapModel(std::uint32_t bucket_count) : chains_(bucket_count) {}

    void Set(std::uint32_t key, std::uint32_t value) {
        if (values_.size() > chains_.size()) Double();
        if (values_.count(key) == 0) Chain(key).push_front(key);
        values_[key] = value;
    }

    void Erase(std::uint32_t key) {
        if (values_.erase(key) == 0) return;
        std::deque<std::uint32_t>& chain = Chain(key);
        chain.erase(std::find(chain.begin(), chain.end(), key));
    }

    void Clear() {
        values_.clear();
        for (auto& chain : chains_) chain.clear();
    }

    [[nodiscard]] Keys InOrder() const {
        Keys keys;
        for (const auto& chain : chains_) keys.insert(keys.end(), chain.begin(), chain.end());
        return keys;
    }

    [[nodiscard]] const std::unordered_map<std::uint32_t, std::uint32_t>& Values() const { return values_; }

private:
    std::deque<std::uint32_t>& Chain(std::uint32_t key) {
        const std::uint32_t hash = (key >> 3) * 0x9E3779B1U;
        return chains_[hash % chains_.size()];
    }

    void Double() {
        const auto old = std::move(chains_);
        chains_.assign(old.size() * 2, {});
        for (const auto& chain : old) {
            for (const std::uint32_t key : chain) Chain(key).push_front(key);
        }
    }

    std::vector<std::deque<std::uint32_t>> chains_;
    std::unordered_map<std::uint32_t, std::uint32_t> values_;
};

void ExpectAlike(hm* map, const MapModel& model) {
    ASSERT_EQ(KeysInOrder(map), model.InOrder());
    ASSERT_EQ(i32hm_empty(map), model.Values().empty() ? 1U : 0U);
    for (const auto& [key, value] : model.Values()) {
        ASSERT_NE(i32hm_get(map, key), nullptr);
        ASSERT_EQ(ValueAt(i32hm_get(map, key)), value);
        ASSERT_EQ(i32hm_ptr2value(i32hm_find(map, key)), i32hm_get(map, key));
    }
}

TEST(HashMap, AgreesWithAModelInContentAndOrder) {
    for (const std::uint32_t bucket_count : {1U, 3U, 20U, 64U, 99991U}) {
        for (const std::uint32_t key_mask : {0x7FU, 0x3FFU, 0xFFFFFFFFU}) {
            SCOPED_TRACE(bucket_count);
            SCOPED_TRACE(key_mask);
            std::mt19937 random(bucket_count + key_mask);
            hm* map = i32hm_create(bucket_count, 4);
            MapModel model(bucket_count);
            for (std::uint32_t step = 0; step < 3000; ++step) {
                const auto key = static_cast<std::uint32_t>(random()) & key_mask;
                if (random() % 3 == 0) {
                    i32hm_erase_key(map, key);
                    model.Erase(key);
                } else {
                    EXPECT_EQ(Set(map, key, step), 1U);
                    model.Set(key, step);
                }
                EXPECT_EQ(i32hm_find(map, key ^ 1) != nullptr, model.Values().count(key ^ 1) != 0);
                if (step % 250 == 0) {
                    ASSERT_NO_FATAL_FAILURE(ExpectAlike(map, model));
                }
                if (step == 2000) {
                    i32hm_clear(map);
                    model.Clear();
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAlike(map, model));
            i32hm_destroy(map);
        }
    }
}

TEST(HashMap, NodesStayWhereTheyAre) {
    hm* map = i32hm_create(2, 4);
    hm_node* nodes[1000];
    for (std::uint32_t i = 0; i < 1000; ++i) {
        Set(map, KeyOf(i), i);
        nodes[i] = i32hm_find(map, KeyOf(i));
    }
    for (std::uint32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(i32hm_find(map, KeyOf(i)), nodes[i]);
        ASSERT_EQ(ValueAt(i32hm_ptr2value(nodes[i])), i);
        Set(map, KeyOf(i), i + 1);
        ASSERT_EQ(ValueAt(i32hm_ptr2value(nodes[i])), i + 1);
    }
    EXPECT_EQ(map->count, 1000U);
    hm_node copy = *nodes[7]; // the entry is found by the key, not by the address
    i32hm_erase_ptr(map, &copy);
    EXPECT_EQ(i32hm_find(map, KeyOf(7)), nullptr);
    EXPECT_EQ(map->count, 999U);
    Set(map, 1, 1); // the block freed last is allocated next
    EXPECT_EQ(i32hm_find(map, 1), nodes[7]);
    i32hm_destroy(map);
}

TEST(HashMap, ValuesOfAnySizeAreSeparateAndAligned) {
    for (const std::uint32_t size : {1U, 2U, 4U, 5U, 8U, 12U, 16U, 100U}) {
        SCOPED_TRACE(size);
        hm* map = i32hm_create(4, size);
        std::vector<unsigned char> value(size);
        for (std::uint32_t key = 0; key < 50; ++key) {
            std::fill(value.begin(), value.end(), static_cast<unsigned char>(key));
            EXPECT_EQ(i32hm_set(map, KeyOf(key), value.data()), 1U);
        }
        for (std::uint32_t key = 0; key < 50; ++key) {
            std::fill(value.begin(), value.end(), static_cast<unsigned char>(key));
            void* place = i32hm_get(map, KeyOf(key));
            ASSERT_NE(place, nullptr);
            EXPECT_EQ(std::memcmp(place, value.data(), size), 0);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % alignof(void*), 0U);
            EXPECT_EQ(place, i32hm_find(map, KeyOf(key)) + 1); // directly after the fields
        }
        i32hm_destroy(map);
    }
}

TEST(HashMap, WideKeysGetDifferentBuckets) {
    if constexpr (sizeof(std::uintptr_t) > 4) {
        for (const std::uint32_t bucket_count : {16U, 128U, 1024U, 99991U}) {
            hm* map = i32hm_create(bucket_count, 4);
            for (std::uint32_t i = 0; i < 4; ++i) Set(map, 0x7F0012345670U + (std::uintptr_t{i} << 32), i);
            for (std::uint32_t i = 0; i < 4; ++i) {
                hm_node* node = i32hm_find(map, 0x7F0012345670U + (std::uintptr_t{i} << 32));
                ASSERT_NE(node, nullptr);
                EXPECT_EQ(ValueAt(node->value), i);
                EXPECT_EQ(node->next, nullptr); // alone in its bucket
            }
            EXPECT_EQ(i32hm_find(map, 0x12345670U), nullptr);
            i32hm_destroy(map);
        }
    }
}

TEST(HashMap, RefusesBadSizesAndHandles) {
    EXPECT_EQ(i32hm_create(0, 4), nullptr);
    EXPECT_EQ(i32hm_create(4, 0), nullptr);
    EXPECT_EQ(i32hm_create(UINT32_MAX, 4), nullptr);
    EXPECT_EQ(i32hm_create(4, UINT32_MAX), nullptr);
    EXPECT_EQ(i32hm_create(4, 0x10000000), nullptr); // sixteen nodes to a chunk
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
    EXPECT_EQ(KeysInOrder(map), Keys{1});
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
        bool set[kKeys] = {};
        for (std::uint32_t key = 0; map != nullptr && key < kKeys; ++key) set[key] = Set(map, KeyOf(key), key) == 1;
        for (std::uint32_t key = 0; map != nullptr && key < kKeys; ++key) {
            const void* place = i32hm_get(map, KeyOf(key));
            EXPECT_TRUE(set[key] ? place != nullptr && ValueAt(place) == key : place == nullptr && heap.Failed());
        }
        EXPECT_TRUE(map == nullptr || map->count >= kKeys - 1);
        for (std::uint32_t key = 0; key < kKeys; ++key)
            i32hm_erase_key(map, KeyOf(key)); // the pool's list of free blocks may not grow
        EXPECT_EQ(i32hm_empty(map), 1U);
        i32hm_destroy(map);
        EXPECT_TRUE(map != nullptr || heap.Failed());
        EXPECT_EQ(heap.Outstanding(), 0);
    });
    EXPECT_GE(failures, 17U); // record, buckets, pool of five and its growing lists, doublings, chunks

    hm* map = i32hm_create(40, 4); // 21 nodes to a chunk
    for (std::uint32_t key = 0; key < 21; ++key) Set(map, KeyOf(key), key);
    {
        const FailingHeap heap(0);
        EXPECT_EQ(Set(map, 1000, 1), 0U);
        EXPECT_TRUE(heap.Failed());
        EXPECT_EQ(Set(map, 8, 77), 1U); // needs no node
    }
    EXPECT_EQ(map->count, 21U);
    EXPECT_EQ(ValueAt(i32hm_get(map, 8)), 77U);
    EXPECT_EQ(Set(map, 1000, 1), 1U);
    i32hm_destroy(map);
}

} // namespace
