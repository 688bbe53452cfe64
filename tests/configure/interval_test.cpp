// Intervals: reading from text, hits, clamping and random draws.

#include "tessarin/interval.h"

#include "tests/support/at_once.h"

#include <array>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Configure::Interval;

// Hosts keep intervals by value, so the layout is part of the interface.
static_assert(sizeof(Interval) == 20 && offsetof(Interval, upper) == 4 && offsetof(Interval, lower_int) == 8 &&
              offsetof(Interval, upper_int) == 12 && offsetof(Interval, flags) == 16);

Interval Of(const std::string& text) {
    Interval interval;
    EXPECT_EQ(interval.Load(text.c_str()), 1) << text;
    return interval;
}

TEST(Interval, TextsReadAsBounds) {
    struct Case {
        std::string text;
        float lower, upper;
        std::int32_t lower_int, upper_int;
        std::uint32_t flags;
    };
    const std::string zeros(62, '0');
    const Case cases[] = {
        {"[1,5]", 1, 5, 1, 5, 0},
        {"(1,5)", 1, 5, 1, 5, 12},
        {"[1.5,5)", 1.5F, 5, 1, 5, 9},
        {"abc[1 ,\t2 x]xyz[3,4]", 1, 2, 1, 2, 0},
        {")],[-7,+3]", -7, 3, -7, 3, 0},
        {"((1,2)", 0, 2, 0, 2, 12}, // the first bracket opens, and "(1" isn't a number
        {"[1e3,1.5e3]", 1, 1500, 1, 1500, 2},
        {"[.5,-.9]", -0.9F, 0, 0, 0, 1}, // a point as the first byte doesn't count
        {"[,5]", 0, 5, 0, 5, 0},
        {"[1,2,3.5]", 1, 2, 1, 2, 2}, // the second bound is everything after the first comma
        {"[1 9,2\n.5]", 1, 2, 1, 2, 0},
        {"[1\r9,2]", 1, 2, 1, 2, 0},
        {"[0,9.e9]", 0, 9e9F, 0, INT32_MAX, 2},
        {"[-9.e9,0]", -9e9F, 0, INT32_MIN, 0, 1},
        {"[\v5,\f6\v.5]", 5, 6, 5, 6, 2}, // \v and \f are blanks for a number, but don't separate tokens
        // A bound of 63 bytes counts, one of 64 doesn't.
        {"[" + zeros + "7,8]", 7, 8, 7, 8, 0},
        {"[0" + zeros + "7,8]", 0, 8, 0, 8, 0},
        {"[0,1." + zeros.substr(1) + "]", 0, 1, 0, 1, 2},
        {"[0,1." + zeros + "]", 0, 0, 0, 0, 2},
        // Reversed bounds are swapped together with their flags.
        {"(5.5,1]", 1, 5.5F, 1, 5, 2 + 8},
        {"[5,1.)", 1, 5, 1, 5, 1 + 4},
        {"[1,0.9999999]", 1, 0.9999999F, 1, 0, 2}, // not reversed by more than the tolerance
    };
    for (const Case& its : cases) {
        const Interval interval = Of(its.text);
        EXPECT_EQ(interval.lower, its.lower) << its.text;
        EXPECT_EQ(interval.upper, its.upper) << its.text;
        EXPECT_EQ(interval.lower_int, its.lower_int) << its.text;
        EXPECT_EQ(interval.upper_int, its.upper_int) << its.text;
        EXPECT_EQ(interval.flags, its.flags) << its.text;
        EXPECT_EQ(Interval::CanToInterval(its.text.c_str()), 1) << its.text;
    }
}

TEST(Interval, TextsReadAlikeUnderAnyRounding) {
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        ASSERT_EQ(std::fesetround(mode), 0);
        const Interval interval = Of("[-0.1,16777219]");
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(interval.lower, -0.1F);
        EXPECT_EQ(interval.upper, 16777220.0F);
    }
}

TEST(Interval, OtherTextsLeaveTheEmptyValue) {
    for (const char* text : {"", "[5]", "5,6", "[]", "[],5]", "[1,2", "1,2]", "(1;2)", "]1,2[", "[12],3]"}) {
        Interval interval = Of("(1.5,2.5)");
        EXPECT_EQ(interval.Load(text), 0) << text;
        EXPECT_EQ(Interval::CanToInterval(text), 0) << text;
        EXPECT_TRUE(interval.lower == 0 && interval.upper == 0 && interval.lower_int == 0 && interval.upper_int == 0 &&
                    interval.flags == 0)
            << text;
    }
    Interval interval = Of("(1.5,2.5)");
    EXPECT_EQ(interval.Load(nullptr), 0);
    EXPECT_EQ(interval.Load(nullptr, 5), 0);
    EXPECT_EQ(interval.flags, 15U);
    EXPECT_EQ(Interval::CanToInterval(nullptr) + Interval::CanToInterval(nullptr, 5), 0);
    EXPECT_EQ(interval.Load("[1,2]", 4), 0); // the closing bracket is beyond the length
    EXPECT_EQ(Interval::CanToInterval("[1,2]", 4), 0);
    EXPECT_EQ(interval.Load("\0[1,2.5]", 8), 1); // with a length, all of its bytes are read
    EXPECT_EQ(interval.upper, 2.5F);
    Interval other;
    EXPECT_EQ(&(other = interval), &other);
    EXPECT_TRUE(other.upper == 2.5F && other.upper_int == 2 && other.lower_int == 1 && other.flags == 2);
    const Interval& same = other;
    EXPECT_EQ((other = same).upper, 2.5F);
    other.Reset();
    EXPECT_TRUE(other.upper == 0 && other.upper_int == 0 && other.lower_int == 0 && other.flags == 0);
}

TEST(Interval, WhatIsInside) {
    struct Case {
        const char* text;
        std::vector<std::int32_t> in, out;
        std::vector<float> real_in, real_out;
    };
    const float kEpsilon = 1.1920929e-7F;
    const Case cases[] = {
        {"[1,5]", {1, 3, 5}, {0, 6}, {1.0F, 4.9999F}, {0.99F, 1.0F - kEpsilon, 5.0F}},
        {"(1,5)", {2, 4}, {1, 5}, {1.001F}, {1.0F, 5.0F}},
        {"[1.5,5)", {2, 4}, {1, 5}, {1.5F, 1.6F}, {1.49F, 5.0F}},
        {"(0.5,1.5]", {1}, {0, 2}, {1.5F}, {0.5F}},
        {"[1,2]", {1, 2}, {}, {2.0F}, {}},
        {"[2,5]", {2, 5}, {}, {}, {2.0F}}, // above 2 the tolerance is lost on one side, but not on the other
        {"[16777217,16777219]", {16777217, 16777219}, {16777216, 16777220}, {}, {}},
        {"[16777217.,16777219]", {16777216, 16777217}, {16777215}, {}, {}}, // a real bound is rounded to a float
    };
    for (const Case& its : cases) {
        const Interval interval = Of(its.text);
        for (const std::int32_t value : its.in) EXPECT_EQ(interval.Hit(value), 1) << its.text << value;
        for (const std::int32_t value : its.out) EXPECT_EQ(interval.Hit(value), 0) << its.text << value;
        for (const float value : its.real_in) EXPECT_EQ(interval.Hit(value), 1) << its.text << value;
        for (const float value : its.real_out) EXPECT_EQ(interval.Hit(value), 0) << its.text << value;
    }
    Interval odd = Of("[1,5]");
    odd.flags = 16;
    EXPECT_EQ(odd.Hit(3), 0);
    EXPECT_EQ(odd.Hit(3.0F), 0);
    EXPECT_EQ(Of("[1,5]").Hit(std::nanf("")), 0);
}

TEST(Interval, NumbersAreBroughtInsideAndBoundsHandedOut) {
    const Interval open = Of("(1.5,2.5)");
    EXPECT_EQ(open.Clamp(0), 1);
    EXPECT_EQ(open.Clamp(9), 2);
    EXPECT_EQ(open.Clamp(0.0F), 1.5F);
    EXPECT_EQ(open.Clamp(2.0F), 2.0F);
    EXPECT_EQ(open.Clamp(9.0F), 2.5F);

    std::int32_t lower = 0, upper = 0;
    EXPECT_EQ(Of("[16777217,16777219]").To(lower, upper), 1);
    EXPECT_EQ(lower, 16777216);
    EXPECT_EQ(upper, 16777220);
    EXPECT_EQ(Of("[-2147483648,2147483647]").To(lower, upper), 1);
    EXPECT_EQ(lower, INT32_MIN);
    EXPECT_EQ(upper, INT32_MAX); // as a float it is one more than the largest integer
    float real_lower = 0, real_upper = 0;
    EXPECT_EQ(Of("[1.5,5)").To(real_lower, real_upper), 1);
    EXPECT_EQ(real_lower, 1.5F);
    EXPECT_EQ(real_upper, 5.0F);
    Interval nameless = Of("[1,5.5]");
    nameless.upper = std::nanf("");
    EXPECT_EQ(nameless.To(real_lower, real_upper) + nameless.To(lower, upper), 2);
    EXPECT_TRUE(real_lower == 1.0F && std::isnan(real_upper) && lower == 1 && upper == 0);
}

/// Which of the hundred values was drawn.
int Step(const Interval& hundred) { return static_cast<int>(std::lround(hundred.Random())); }

TEST(Interval, DrawsAreHundredthsBelowTheUpperBound) {
    const Interval interval = Of("[2,4]");
    std::set<float> possible, seen;
    for (int i = 0; i < 100; ++i) possible.insert(static_cast<float>(i) * 0.01F * 2.0F + 2.0F);
    for (int i = 0; i < 5000; ++i) seen.insert(interval.Random());
    for (const float drawn : seen) EXPECT_EQ(possible.count(drawn), 1U) << drawn;
    EXPECT_GT(seen.size(), 90U);
    EXPECT_EQ(Of("[5,5]").Random(), 5.0F);
    EXPECT_EQ(Interval().Random(), 0.0F);
}

// Whatever the seed is, each draw adds 3 to its two lowest bits, and the hundred steps keep these bits.
TEST(Interval, DrawsFollowTheGenerator) {
    const Interval hundred = Of("[0,100]");
    for (int last = Step(hundred), draw = 0; draw < 1000; ++draw) {
        const int next = Step(hundred);
        ASSERT_EQ(next % 4, (last + 3) % 4);
        last = next;
    }
}

// If two threads drew the same number at once, one of the four remainders would occur too rarely.
TEST(Interval, ThreadsDrawNumbersOfTheirOwn) {
    constexpr int kDraws = 400000;
    const Interval hundred = Of("[0,100]");
    std::array<std::array<int, 4>, TestSupport::kThreads> counts{};
    TestSupport::AtOnce([&](int thread) {
        auto& its = counts[static_cast<std::size_t>(thread)];
        for (int draw = 0; draw < kDraws; ++draw) ++its[static_cast<std::size_t>(Step(hundred)) % 4];
    });
    for (std::size_t rest = 0; rest < 4; ++rest) {
        int sum = 0;
        for (const auto& its : counts) sum += its[rest];
        EXPECT_EQ(sum, kDraws);
    }
}

} // namespace
