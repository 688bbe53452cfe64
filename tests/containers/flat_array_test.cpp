// Flat arrays: capacities after growth, large buffers, elements of size zero, and refusals. The fuzzer compares them
// with a vector, but only up to some hundred kilobytes.

#include "containers/growth.h"
#include "tessarin/containers.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <utility>

namespace {

int CompareIntegers(const void* left, const void* right) {
    const int a = *static_cast<const int*>(left), b = *static_cast<const int*>(right);
    return (a > b) - (a < b);
}

TEST(FlatArray, Creation) {
    farr* arr = farr_create(4);
    EXPECT_EQ(farr_capacity(arr), 48U);
    farr_destroy(arr);
    farr* wide = farr_create_capacity(0x800001, 1); // a threshold is never below one element
    EXPECT_EQ(farr_threshold(wide), 0x800001U);
    farr_destroy(wide);
    EXPECT_EQ(farr_create(0), nullptr);
    // Some sizes would be small in 32 bits: twelve of the first element are 4 GiB and 8 bytes.
    for (const auto& [size, elements] : {std::pair{0x15555556U, 12U}, {0U, 3U}, {3U, 0U}, {0x10000U, 0x10001U}}) {
        EXPECT_EQ(elements == 12 ? farr_create(size) : farr_create_capacity(size, elements), nullptr) << size;
    }
}

TEST(FlatArray, GrowsByItsRule) {
    struct {
        std::uint32_t elements, threshold, capacity; // bytes
    } const cases[] = {
        {65533, 0x800000, 131068}, // the last need that doubles
        {65534, 0x800000, 98302},        {0x7FFFFF, 0x800000, 0xC00000},
        {0x800000, 0x800000, 0x1000001}, {0x1000000, 0x2000000, 25165824}, // no 32-bit float equals the need
    };
    for (const auto& [elements, threshold, capacity] : cases) {
        farr* arr = farr_create_capacity(1, elements);
        farr_reset_threshold(arr, threshold);
        farr_resize(arr, elements, 0); // full
        EXPECT_NE(farr_push(arr), nullptr);
        EXPECT_EQ(farr_capacity(arr), capacity);
        farr_destroy(arr);
    }
}

TEST(FlatArray, CapacitiesNeverExceed32Bits) {
    using Tessarin::ProportionalCapacity;
    using Tessarin::ThresholdCapacity;
    EXPECT_EQ(ThresholdCapacity(0xFFFFFF00, 0x800000, 0xFFFF), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(0xC0000000, 0xFFFF), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(0x80000000, UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(11184813, 0xFFFF), 16777220U); // 16777219.5 has no 32-bit float either
}

/// A buffer of this size grows by realloc, but is replaced to become smaller: realloc to no bytes would free it.
TEST(FlatArray, LargeBuffersGrowAndShrink) {
    constexpr std::uint32_t kElements = 20000;
    farr* arr = farr_create_capacity(16, kElements);
    farr_resize(arr, kElements, 1);
    std::memset(farr_at(arr, kElements - 1), 0x5A, 16);
    void* pushed = farr_push_element(arr, farr_at(arr, kElements - 1)); // an element of its own
    EXPECT_EQ(pushed, farr_at(arr, kElements));
    EXPECT_EQ(std::memcmp(pushed, farr_at(arr, kElements - 1), 16), 0);
    EXPECT_EQ(static_cast<unsigned char*>(pushed)[15], 0x5A);
    farr_clear(arr);
    farr_adapt(arr);
    EXPECT_EQ(farr_capacity(arr), 0U);
    farr* copy = farr_copy(arr);
    for (farr* each : {arr, copy}) {
        EXPECT_NE(farr_push(each), nullptr);
        EXPECT_EQ(farr_capacity(each), 32U);
        farr_destroy(each);
    }
}

TEST(FlatArray, ClearingKeepsTheBytes) {
    farr* arr = farr_create(4);
    const int seven = 7;
    farr_push_element(arr, &seven);
    farr_clear(arr);
    farr* copy = farr_copy(arr);
    EXPECT_EQ(*static_cast<int*>(farr_push(copy)), 7);
    farr_destroy(copy);
    farr_destroy(arr);
}

TEST(FlatArray, ElementsOfSizeZero) {
    farr* arr = farr_create(4);
    farr_reset(arr, 0);
    void* first = farr_push(arr);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(farr_push(arr), first);
    farr_resize(arr, UINT32_MAX, 1);
    EXPECT_EQ(farr_count(arr), UINT32_MAX);
    EXPECT_EQ(farr_push(arr), nullptr); // the count can't grow
    EXPECT_EQ(farr_count(arr), UINT32_MAX);
    farr_destroy(arr);
}

TEST(FlatArray, RefusesBadHandlesAndArguments) {
    std::array<std::uint32_t, 8> foreign = {20, 1, 2, 3, 4, 5, 6, 7};
    const auto before = foreign;
    int item = 1;
    for (farr* bad : {static_cast<farr*>(nullptr), reinterpret_cast<farr*>(foreign.data())}) {
        EXPECT_EQ(farr_count(bad) + farr_capacity(bad) + farr_threshold(bad), 0U);
        EXPECT_EQ(farr_empty(bad), 1U);
        for (void* element : {farr_at(bad, 0), farr_push(bad), farr_push_element(bad, &item), farr_begin(bad),
                              farr_end(bad), farr_next(bad, &item)}) {
            EXPECT_EQ(element, nullptr);
        }
        EXPECT_EQ(farr_copy(bad), nullptr);
        farr_reset_threshold(bad, 1);
        farr_reset(bad, 1);
        farr_clear(bad);
        farr_resize(bad, 1, 1);
        farr_erase(bad, 0);
        farr_fast_erase(bad, 0);
        farr_popback(bad);
        farr_adapt(bad);
        farr_sort(bad, CompareIntegers);
        farr_sort_particular(bad, 0, 1, CompareIntegers);
        farr_destroy(bad);
    }
    EXPECT_EQ(foreign, before);
    farr* arr = farr_create(4);
    EXPECT_EQ(farr_push_element(arr, nullptr), nullptr);
    EXPECT_EQ(farr_next(arr, nullptr), nullptr);
    for (item = 3; item != 0; --item) farr_push_element(arr, &item);
    farr_sort(arr, nullptr);
    farr_sort_particular(arr, 0, 3, nullptr);
    farr_resize(arr, 0x40000001, 1); // 4 GiB and 4 bytes
    EXPECT_EQ(farr_count(arr), 3U);
    EXPECT_EQ(farr_capacity(arr), 48U);
    EXPECT_EQ(*static_cast<int*>(farr_begin(arr)), 3);
    farr_destroy(arr);
}

} // namespace
