// The draws of intervals from the first one of the process on. The clock decides the first, so a static object takes
// them before any test draws.

#include "tessarin/interval.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <ctime>

#include <gtest/gtest.h>

namespace {

struct FirstDraws {
    std::time_t before = std::time(nullptr);
    std::array<std::uint32_t, 64> draws{};
    std::time_t after = 0;

    FirstDraws() {
        Configure::Interval hundred;
        hundred.Load("[0,100]");
        for (std::uint32_t& draw : draws) draw = static_cast<std::uint32_t>(std::lround(hundred.Random()));
        after = std::time(nullptr);
    }
};
const FirstDraws first;

bool Follow(std::uint32_t seed) {
    for (const std::uint32_t draw : first.draws) {
        seed = seed * 214013U + 2531011U;
        if (draw != seed % 100) return false;
    }
    return true;
}

TEST(Interval, TheFirstDrawsFollowFromTheClock) {
    bool follow = false;
    for (std::time_t time = first.before; time <= first.after; ++time) {
        follow = follow || Follow(static_cast<std::uint32_t>(time));
    }
    EXPECT_TRUE(follow);
}

} // namespace
