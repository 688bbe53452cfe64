// A heap that fails at the n-th allocation, and that counts the outstanding ones.
//
// The test programs are linked with --wrap for malloc, calloc, realloc, free and operator new, so that every call of
// the library's objects passes through here. Only calls of the thread that has armed the heap are counted.

#ifndef TESSARIN_TESTS_SUPPORT_FAILING_HEAP_H
#define TESSARIN_TESTS_SUPPORT_FAILING_HEAP_H

#include <cstddef>

namespace TestSupport {

/// While the object lives, this thread's allocations are counted, and the one with the number `fail_at` (from 0) fails.
class FailingHeap {
public:
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    explicit FailingHeap(std::size_t fail_at = kNever);
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    /// The number of allocations since the heap was armed, including the failed one.
    [[nodiscard]] std::size_t Allocations() const;

    /// Whether the selected allocation was reached and failed.
    [[nodiscard]] bool Failed() const;

    /// This thread's allocations minus its frees since the heap was armed: 0 when everything was freed.
    [[nodiscard]] long Outstanding() const;
};

/// Lets each allocation of `attempt` fail once, in turn, then runs it without a failure. `attempt` gets the heap, does
/// the work, undoes it, and checks what must hold; it is called until no allocation is left to fail.
/// Returns how many allocations have been made to fail.
template <class Attempt>
std::size_t FailEachAllocation(Attempt attempt) {
    for (std::size_t n = 0;; ++n) {
        // NOLINTNEXTLINE(misc-const-correctness): `attempt` may take a reference that isn't const
        FailingHeap heap(n);
        attempt(heap);
        if (!heap.Failed()) return n;
    }
}

} // namespace TestSupport

#endif
