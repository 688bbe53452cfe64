// The lock that spins: exclusion under contention.

#include "platform/spin_lock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace {

// The counters are plain: without exclusion, additions get lost or the counters are seen with different values, and a
// sanitizer finds a race.
TEST(SpinLock, LetsOneThreadInAtATime) {
    constexpr int kThreads = 4, kRounds = 200000;
    Tessarin::SpinLock lock;
    long first = 0, second = 0, seen_apart = 0;
    std::vector<std::jthread> threads;
    threads.reserve(kThreads);
    for (int n = 0; n < kThreads; ++n) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const std::lock_guard guard(lock);
                if (first != second) ++seen_apart;
                ++first;
                ++second;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(first, kThreads * kRounds);
    EXPECT_EQ(second, kThreads * kRounds);
    EXPECT_EQ(seen_apart, 0);
}

} // namespace
