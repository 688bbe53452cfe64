// Both locks exclude under contention; the one that sleeps costs no processor time while it waits.

#include "platform/critical_section.h"
#include "platform/spin_lock.h"

#include "tests/support/at_once.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

template <class Lock>
struct Locks : testing::Test {};
using BothLocks = testing::Types<Tessarin::CriticalSection, Tessarin::SpinLock>;
TYPED_TEST_SUITE(Locks, BothLocks);

// The counters are plain: without exclusion, additions get lost or the counters are seen with different values, and a
// sanitizer finds a race.
TYPED_TEST(Locks, LetOneThreadInAtATime) {
    constexpr int kRounds = 200000;
    TypeParam lock;
    long first = 0, second = 0, seen_apart = 0;
    TestSupport::AtOnce([&](int) {
        for (int round = 0; round < kRounds; ++round) {
            const std::lock_guard guard(lock);
            if (first != second) ++seen_apart;
            ++first;
            // Sometimes held across a change of threads, so that the others stop spinning, and sleep if they can.
            if (round % 1000 == 0) std::this_thread::yield();
            ++second;
        }
    });
    EXPECT_EQ(first, TestSupport::kThreads * kRounds);
    EXPECT_EQ(second, first);
    EXPECT_EQ(seen_apart, 0);
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Several threads wait while the holder sleeps for far longer than they spin. Each must get the lock in the end, or the
// test never finishes; and waiting must not take processor time.
TEST(CriticalSection, PutsThoseToSleepWhoWaitForLong) {
    constexpr int kThreads = 3;
    Tessarin::CriticalSection section;
    std::atomic<int> arrived = 0;
    int entered = 0;
    double busy_seconds = 0;
    std::vector<std::jthread> threads;

    section.lock();
    for (int n = 0; n < kThreads; ++n) {
        threads.emplace_back([&] {
            ++arrived;
            const double before = ThreadSeconds();
            const std::lock_guard guard(section);
            busy_seconds += ThreadSeconds() - before;
            ++entered;
        });
    }
    while (arrived != kThreads) std::this_thread::yield();
    std::this_thread::sleep_for(150ms);
    EXPECT_EQ(entered, 0);
    section.unlock();
    threads.clear();

    EXPECT_EQ(entered, kThreads);
    EXPECT_LT(busy_seconds, 0.075) << "those who waited were busy all the while";
}

} // namespace
