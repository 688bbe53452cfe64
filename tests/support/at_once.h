// Threads that do the same work at the same time.

#ifndef TESSARIN_TESTS_SUPPORT_AT_ONCE_H
#define TESSARIN_TESTS_SUPPORT_AT_ONCE_H

#include <atomic>
#include <thread>
#include <vector>

namespace TestSupport {

constexpr int kThreads = 4;

/// Runs `work` with the numbers 0 to 3 on four threads that start at once. They wait for each other in a busy loop,
/// because a std::barrier sometimes fails to wake a sleeping thread where the system has no futex.
template <class Work>
void AtOnce(Work work) {
    std::atomic<int> missing = kThreads;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&missing, work, thread] {
            --missing;
            while (missing != 0) std::this_thread::yield();
            work(thread);
        });
    }
}

} // namespace TestSupport

#endif
