// Intervals: texts that read under any rounding, what isn't an interval, the exported private steps, and draws. What
// any text and any fields give is compared with a model in fuzz/interval.cpp.

#include "tessarin/interval.h"

#include "tests/support/at_once.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <utility>

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

/// All fields as a text.
std::string Shown(const Interval& its) {
    return std::to_string(its.lower) + ' ' + std::to_string(its.upper) + ' ' + std::to_string(its.lower_int) + ' ' +
           std::to_string(its.upper_int) + ' ' + std::to_string(its.flags);
}

const char* const kEmpty = "0.000000 0.000000 0 0 0";

TEST(Interval, TextsReadAsBounds) {
    const std::pair<const char*, const char*> cases[] = {
        {"[1,5]", "1.000000 5.000000 1 5 0"},        {"abc[1 ,\t2.5 x)xyz[3,4]", "1.000000 2.500000 1 2 10"},
        {"((1,2)", "0.000000 2.000000 0 2 12"},      // the first bracket opens, and "(1" isn't a number
        {"[.5,-.9]", "-0.900000 0.000000 0 0 1"},    // a point as the first byte doesn't count; reversed
        {"[1,2,3.5]", "1.000000 2.000000 1 2 2"},    // the second bound is everything after the first comma
        {"(5.5,1]", "1.000000 5.500000 1 5 10"},     // reversed bounds are swapped together with their flags
        {"[1,0.9999999]", "1.000000 1.000000 1 0 2"} // not reversed by more than the tolerance
    };
    for (const auto& [text, fields] : cases) EXPECT_EQ(Shown(Of(text)), fields) << text;
}

TEST(Interval, OtherTextsLeaveTheEmptyValue) {
    for (const char* text : {"", "[5]", "5,6", "[]", "[],5]", "[1,2", "1,2]", "(1;2)", "]1,2[", "[12],3]"}) {
        Interval interval = Of("(1.5,2.5)");
        EXPECT_EQ(interval.Load(text), 0) << text;
        EXPECT_EQ(Interval::CanToInterval(text), 0) << text;
        EXPECT_EQ(Shown(interval), kEmpty) << text;
    }
    Interval interval = Of("(1.5,2.5)");
    EXPECT_EQ(interval.Load(nullptr), 0);
    EXPECT_EQ(interval.Load(nullptr, 5), 0);
    EXPECT_EQ(Shown(interval), Shown(Of("(1.5,2.5)")));
    EXPECT_EQ(Interval::CanToInterval(nullptr), 0);
    EXPECT_EQ(Interval::CanToInterval(nullptr, 5), 0);
    EXPECT_EQ(Interval::CanToInterval("[1,2]", 4), 0); // the closing bracket is beyond the length
    Interval other;
    EXPECT_EQ(&(other = interval), &other);
    EXPECT_EQ(Shown(other), Shown(interval));
    other.Reset();
    EXPECT_EQ(Shown(other), kEmpty);
}

/// The private members are exported, so their results are fixed. An explicit instantiation may name them.
auto PrivateMembers();
template <auto... Members>
struct Named {
    friend auto PrivateMembers() { return std::tuple(Members...); }
};
template struct Named<&Interval::_Load, &Interval::_GetInteger, &Interval::_GetFloat, &Interval::_NextPosIsSeparator>;

TEST(Interval, ThePrivateStepsHaveFixedResults) {
    const auto [load, integer, real, separator] = PrivateMembers();
    Interval interval;
    EXPECT_EQ((interval.*load)("[5,1.)", 6), 1);
    EXPECT_EQ(Shown(interval), "5.000000 1.000000 5 1 10") << "not put in order";
    EXPECT_EQ((interval.*load)("[5,1]", 0), 0);
    EXPECT_EQ(Shown(interval), kEmpty);
    for (const std::uint32_t end : {0U, 1U, 2U}) {
        EXPECT_EQ(integer("12", 1, end), end == 2 ? 2 : 0);
        EXPECT_EQ(real("12", 1, end), end == 2 ? 2 : 0);
    }
    EXPECT_EQ(separator("1,2,", 3, 2), 3U);
    EXPECT_EQ(separator("1,2,", 3, 9), 9U);
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
