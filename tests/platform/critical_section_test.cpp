// The lock that sleeps: it excludes under contention, and waiting costs no processor time.

#include "platform/critical_section.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

TEST(CriticalSection, LetsOneThreadInAtATime) {
    constexpr int kThreads = 4, kRounds = 200000;
    Tessarin::CriticalSection section;
    long counter = 0;
    std::vector<std::jthread> threads;
    threads.reserve(kThreads);
    for (int n = 0; n < kThreads; ++n) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const std::lock_guard guard(section);
                const long before = counter;
                // Sometimes held across a change of threads, so that the others stop spinning and sleep.
                if (round % 1000 == 0) std::this_thread::yield();
                counter = before + 1;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(counter, kThreads * kRounds);
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Several threads wait while the holder sleeps for far longer than they spin. Each must get the lock in the end, or the
// test never finishes; and waiting must not take processor time.
TEST(CriticalSection, PutsThoseToSleepWhoWaitForLong) {
    constexpr int kThreads = 3, kRounds = 3;
    for (int round = 0; round < kRounds; ++round) {
        Tessarin::CriticalSection section;
        std::atomic<int> arrived = 0;
        int entered = 0;
        double busy_seconds = 0;
        std::vector<std::jthread> threads;

        section.lock();
        threads.reserve(kThreads);
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
}

} // namespace
