// A lock that spins until it is free: for sections of a few dozen instructions. Not recursive.

#ifndef TESSARIN_PLATFORM_SPIN_LOCK_H
#define TESSARIN_PLATFORM_SPIN_LOCK_H

#include <atomic>
#include <cstdint>

namespace Tessarin {

/// A hint to the processor that this loop waits for another thread.
inline void SpinPause() {
#if defined(__i386__) || defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
    asm volatile("yield");
#endif
}

class SpinLock {
public:
    void lock() {
        while (taken_.exchange(1, std::memory_order_acquire) != 0) {
            while (taken_.load(std::memory_order_relaxed) != 0) SpinPause();
        }
    }

    void unlock() { taken_.store(0, std::memory_order_release); }

private:
    std::atomic<std::uint32_t> taken_{0};
};

} // namespace Tessarin

#endif
