/// A lock that spins for a while before it sleeps: for sections that may reach the heap. Not recursive.

#ifndef TESSARIN_PLATFORM_CRITICAL_SECTION_H
#define TESSARIN_PLATFORM_CRITICAL_SECTION_H

#include "platform/spin_lock.h"

#include <atomic>
#include <cstdint>

namespace Tessarin {

class CriticalSection {
public:
    static constexpr int kSpinCount = 2000;

    void lock() {
        std::uint32_t free = kFree;
        if (!state_.compare_exchange_strong(free, kTaken, std::memory_order_acquire)) Wait();
    }

    void unlock() {
        if (state_.exchange(kFree, std::memory_order_release) == kAwaited) state_.notify_one();
    }

private:
    // kAwaited is kTaken with at least one thread asleep, or about to be: only then has unlock anyone to wake.
    static constexpr std::uint32_t kFree = 0, kTaken = 1, kAwaited = 2;

    void Wait() {
        for (int round = 0; round < kSpinCount; ++round) {
            std::uint32_t free = kFree;
            if (state_.load(std::memory_order_relaxed) == kFree &&
                state_.compare_exchange_strong(free, kTaken, std::memory_order_acquire)) {
                return;
            }
            SpinPause();
        }
        while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree) {
            state_.wait(kAwaited, std::memory_order_relaxed);
        }
    }

    std::atomic<std::uint32_t> state_{kFree};
};

} // namespace Tessarin

#endif
