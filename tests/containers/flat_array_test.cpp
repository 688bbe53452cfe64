// Flat arrays: capacities after growth, random operations against a vector, and refusals.

#include "containers/growth.h"
#include "tessarin/containers.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

namespace {

int CompareIntegers(const void* left, const void* right) {
    const int a = *static_cast<const int*>(left), b = *static_cast<const int*>(right);
    return (a > b) - (a < b);
}

farr* ArrayOf(const std::vector<int>& items) {
    farr* arr = farr_create(sizeof(int));
    for (int item : items) farr_push_element(arr, &item);
    return arr;
}

std::vector<int> ItemsOf(farr* arr) {
    std::vector<int> items;
    for (void* item = farr_begin(arr); item != farr_end(arr); item = farr_next(arr, item)) {
        items.push_back(*static_cast<int*>(item));
    }
    return items;
}

TEST(FlatArray, Creation) {
    farr* arr = farr_create(4);
    EXPECT_EQ(farr_capacity(arr), 48U);
    EXPECT_EQ(farr_threshold(arr), 8388608U);
    EXPECT_EQ(farr_count(arr), 0U);
    EXPECT_EQ(farr_empty(arr), 1U);
    EXPECT_EQ(farr_begin(arr), nullptr);
    EXPECT_EQ(farr_at(arr, 0), nullptr);
    farr_destroy(arr);

    farr* filled = farr_create(4);
    farr_push(filled);
    EXPECT_EQ(farr_empty(filled), 0U);
    farr_destroy(filled);

    farr* wide = farr_create_capacity(0x800001, 1); // a threshold is never below one element
    EXPECT_EQ(farr_threshold(wide), 0x800001U);
    farr_destroy(wide);

    EXPECT_EQ(farr_create(0), nullptr);
    EXPECT_EQ(farr_create_capacity(0, 3), nullptr);
    EXPECT_EQ(farr_create_capacity(3, 0), nullptr);
    EXPECT_EQ(farr_create(0x15555556), nullptr); // twelve of them are 4 GiB and 8 bytes, not 8 bytes
    EXPECT_EQ(farr_create_capacity(0x10000, 0x10001), nullptr);
}

TEST(FlatArray, GrowsByItsRule) {
    struct Case {
        std::uint32_t element_size, elements, threshold, pushes, capacity;
    };
    constexpr std::uint32_t kDefault = 0x800000;
    const Case cases[] = {
        {4, 12, kDefault, 12, 48},
        {4, 12, kDefault, 13, 104},
        {1, 65533, kDefault, 65534, 131068}, // the last need that doubles
        {1, 65534, kDefault, 65535, 98302},
        {4, 12, 64, 13, 104}, // 52 is not above the threshold
        {4, 12, 64, 27, 172}, // 108 is: 108 + 64
        {4, 12, 64, 44, 240},
        {16, 2, 0, 3, 64}, // a threshold of 0 is one element
        {1, 0x7FFFFF, kDefault, 0x800000, 0xC00000},
        {1, 0x800000, kDefault, 0x800001, 0x1000001},
        {1, 0x1000000, 0x2000000, 0x1000001, 25165824}, // no 32-bit float equals the need
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.capacity);
        farr* arr = farr_create_capacity(c.element_size, c.elements);
        farr_reset_threshold(arr, c.threshold);
        farr_resize(arr, c.elements, 0); // full
        while (farr_count(arr) < c.pushes) ASSERT_NE(farr_push(arr), nullptr);
        EXPECT_EQ(farr_capacity(arr), c.capacity);
        farr_destroy(arr);
    }
}

TEST(FlatArray, CapacitiesNeverExceed32Bits) {
    using Tessarin::ProportionalCapacity;
    using Tessarin::ThresholdCapacity;
    EXPECT_EQ(ThresholdCapacity(0xFFFFFF00, 0x800000, 0xFFFF), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(0xC0000000, 0xFFFF), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(0x80000000, UINT32_MAX), UINT32_MAX);
    EXPECT_EQ(ProportionalCapacity(0xFFFF, 0x10000), 131070U); // another container's limit
    EXPECT_EQ(ProportionalCapacity(0x10000, 0x10000), 98304U);
    EXPECT_EQ(ProportionalCapacity(11184813, 0xFFFF), 16777220U); // 16777219.5 has no 32-bit float either
}

/// An array and a vector of elements, to which the same operations are applied.
struct ArrayAndVector {
    using Element = std::vector<unsigned char>;

    explicit ArrayAndVector(std::uint32_t element_size) : size(element_size), arr(farr_create(element_size)) {}

    void Step(std::mt19937& random) {
        const auto index = static_cast<std::uint32_t>(random() % (items.size() + 2));
        switch (random() % 14) {
        case 0:
            return Remove(index, farr_erase);
        case 1:
            if (index < items.size()) std::swap(items[index], items.back());
            return Remove(index, farr_fast_erase);
        case 2:
            return Resize(index * 2);
        case 3:
            return farr_adapt(arr);
        case 4:
            farr_popback(arr);
            return items.empty() ? void() : items.pop_back();
        case 5:
            farr_destroy(std::exchange(arr, farr_copy(arr)));
            return;
        case 6:
            return PushOwn(index);
        default:
            return Push(Element(size, static_cast<unsigned char>(random())), random() % 2 == 0);
        }
    }

    void Push(const Element& item, bool by_copy) {
        if (by_copy) {
            farr_push_element(arr, item.data());
        } else {
            std::memcpy(farr_push(arr), item.data(), size);
        }
        items.push_back(item);
    }

    void PushOwn(std::uint32_t index) {
        void* own = farr_at(arr, index);
        EXPECT_EQ(farr_push_element(arr, own) == nullptr, index >= items.size());
        if (own != nullptr) items.push_back(Element(items[index]));
    }

    /// For the fast erase the vector's element was swapped to the end before, as the array moves its last element.
    void Remove(std::uint32_t index, void (*erase)(farr*, std::uint32_t)) {
        erase(arr, index);
        if (index >= items.size()) return;
        items.erase(erase == farr_erase ? items.begin() + static_cast<std::ptrdiff_t>(index) : items.end() - 1);
    }

    void Resize(std::uint32_t count) {
        farr_resize(arr, count, 1);
        if (count != 0) items.resize(count, Element(size));
    }

    void Compare() const {
        ASSERT_EQ(farr_count(arr), items.size());
        ASSERT_LE(std::uint64_t{size} * items.size(), farr_capacity(arr));
        void* place = farr_begin(arr);
        for (std::uint32_t i = 0; i < items.size(); ++i, place = farr_next(arr, place)) {
            ASSERT_EQ(place, farr_at(arr, i));
            ASSERT_EQ(std::memcmp(place, items[i].data(), size), 0);
        }
        ASSERT_EQ(place, nullptr);
    }

    std::uint32_t size;
    farr* arr;
    std::vector<Element> items;
};

TEST(FlatArray, AgreesWithAVector) {
    for (const std::uint32_t element_size : {1U, 3U, 4U, 8U, 16U, 40U}) {
        SCOPED_TRACE(element_size);
        std::mt19937 random(element_size);
        ArrayAndVector both(element_size);
        for (int step = 0; step < 1500; ++step) {
            both.Step(random);
            ASSERT_NO_FATAL_FAILURE(both.Compare());
        }
        farr_destroy(both.arr);
    }
}

TEST(FlatArray, PushesAnElementOfItsOwnWhileItGrows) {
    for (const std::uint32_t elements : {12U, 20000U}) { // a buffer that is copied, and one that grows by realloc
        farr* arr = farr_create_capacity(16, elements);
        farr_resize(arr, elements, 1);
        std::memset(farr_at(arr, elements - 1), 0x5A, 16);
        void* pushed = farr_push_element(arr, farr_at(arr, elements - 1));
        EXPECT_EQ(std::memcmp(pushed, farr_at(arr, elements - 1), 16), 0);
        EXPECT_EQ(static_cast<unsigned char*>(pushed)[15], 0x5A);
        EXPECT_EQ(pushed, farr_at(arr, elements));
        farr_destroy(arr);
    }
}

TEST(FlatArray, ResizesExactly) {
    farr* arr = ArrayOf({1, 2, 3});
    farr_resize(arr, 0, 1);
    EXPECT_EQ(farr_count(arr), 3U);
    void* first = farr_begin(arr);
    farr_resize(arr, 12, 0);
    EXPECT_EQ(farr_begin(arr), first);
    farr_resize(arr, 13, 0);
    EXPECT_EQ(farr_capacity(arr), 52U);
    farr_push(arr);
    EXPECT_EQ(farr_capacity(arr), 112U);
    farr_resize(arr, 2, 1);
    farr_resize(arr, 4, 1);
    EXPECT_EQ(ItemsOf(arr), (std::vector<int>{1, 2, 0, 0}));
    farr_resize(arr, 0x40000001, 1); // 4 GiB and 4 bytes
    EXPECT_EQ(farr_count(arr), 4U);
    EXPECT_EQ(farr_capacity(arr), 112U);
    farr_destroy(arr);
}

TEST(FlatArray, ClearingKeepsTheBytes) {
    farr* arr = ArrayOf({7, 8});
    farr_clear(arr);
    farr_reset_threshold(arr, 100);
    farr* copy = farr_copy(arr);
    EXPECT_EQ(farr_count(copy), 0U);
    EXPECT_EQ(farr_capacity(copy), 48U);
    EXPECT_EQ(farr_threshold(copy), 100U);
    EXPECT_EQ(*static_cast<int*>(farr_push(copy)), 7);
    farr_reset(copy, 8);
    EXPECT_EQ(farr_count(copy), 0U);
    for (int i = 0; i < 6; ++i) farr_push(copy);
    EXPECT_EQ(farr_capacity(copy), 48U); // six of eight bytes fill it
    farr_push(copy);
    EXPECT_EQ(farr_capacity(copy), 112U);
    farr_destroy(copy);
    farr_destroy(arr);
}

TEST(FlatArray, SortsARange) {
    struct Case {
        std::uint32_t first, last;
        std::vector<int> sorted;
    };
    const std::vector<int> items = {4, 3, 2, 1, 0};
    const Case cases[] = {{0, 5, {0, 1, 2, 3, 4}}, {1, 4, {4, 1, 2, 3, 0}}, {3, 5, {4, 3, 2, 0, 1}},
                          {2, 2, items},           {3, 1, items},           {0, 6, items}};
    for (const Case& c : cases) {
        farr* arr = ArrayOf(items);
        farr_sort_particular(arr, c.first, c.last, nullptr);
        farr_sort_particular(arr, c.first, c.last, CompareIntegers);
        EXPECT_EQ(ItemsOf(arr), c.sorted);
        farr_sort(arr, nullptr);
        farr_sort(arr, CompareIntegers);
        EXPECT_EQ(ItemsOf(arr), (std::vector<int>{0, 1, 2, 3, 4}));
        farr_destroy(arr);
    }
}

TEST(FlatArray, AdaptShrinksALargeBuffer) {
    farr* arr = farr_create(4);
    farr_resize(arr, 100000, 1);
    const int value = 7;
    std::memcpy(farr_at(arr, 9), &value, sizeof value);
    farr_resize(arr, 10, 0);
    farr_adapt(arr);
    EXPECT_EQ(farr_capacity(arr), 40U);
    EXPECT_EQ(ItemsOf(arr).back(), 7);
    farr_destroy(arr);
}

TEST(FlatArray, EmptyBuffersAndElementsOfSizeZero) {
    farr* arr = farr_create(4);
    farr_adapt(arr);
    EXPECT_EQ(farr_capacity(arr), 0U);
    farr* copy = farr_copy(arr);
    EXPECT_NE(farr_push(copy), nullptr);
    EXPECT_EQ(farr_capacity(copy), 8U);
    farr_destroy(copy);
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

TEST(FlatArray, IgnoresBadHandlesAndNullElements) {
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
    farr_popback(arr);
    EXPECT_EQ(farr_count(arr), 0U);
    farr_destroy(arr);
}

} // namespace
