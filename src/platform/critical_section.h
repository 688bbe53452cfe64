// A lock that spins for a while before it sleeps: for sections that may reach the heap. Not recursive.

#ifndef TESSARIN_PLATFORM_CRITICAL_SECTION_H
#define TESSARIN_PLATFORM_CRITICAL_SECTION_H

#include "platform/spin_lock.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace Tessarin {

/// The sections that it guards are short, except when a chunk is allocated. So a thread that has spun without success
/// sleeps for a moment and tries again. No thread has to be woken, so leaving is one plain store, and nearly every use
/// costs no more.
class CriticalSection {
public:
    static constexpr int kSpinCount = 2000;

    void lock() {
        if (!TryLock()) Wait();
    }

    void unlock() { taken_.store(0, std::memory_order_release); }

private:
    // Each nap is twice as long as the one before: waking costs time too, and on a host that sleeps in whole
    // milliseconds a shorter nap returns at once.
    static constexpr std::chrono::microseconds kFirstNap{50}, kLongestNap{1600};

    bool TryLock() {
        return taken_.load(std::memory_order_relaxed) == 0 && taken_.exchange(1, std::memory_order_acquire) == 0;
    }

    [[gnu::noinline, gnu::cold]] void Wait() {
        std::chrono::microseconds nap = kFirstNap;
        for (int round = 0; !TryLock(); ++round) {
            if (round < kSpinCount) {
                SpinPause();
            } else {
                std::this_thread::sleep_for(nap);
                nap = std::min(nap * 2, kLongestNap);
            }
        }
    }

    std::atomic<std::uint32_t> taken_{0};
};

} // namespace Tessarin

#endif
