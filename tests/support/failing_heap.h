/// A heap that fails at the n-th allocation, and that counts what is out.
///
/// The test programs are linked with --wrap for malloc, calloc, realloc, free and operator new, so that every call of
/// the library's objects passes through here. Only calls of the thread that has armed the heap count.

#ifndef TESSARIN_TESTS_SUPPORT_FAILING_HEAP_H
#define TESSARIN_TESTS_SUPPORT_FAILING_HEAP_H

#include <cstddef>

namespace TestSupport {

/// While it lives, this thread's allocations are counted, and the one with the number `fail_at` (from 0) fails.
class FailingHeap {
public:
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    explicit FailingHeap(std::size_t fail_at = kNever);
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    /// Allocations asked for since the heap was armed, the failed one included.
    [[nodiscard]] std::size_t Allocations() const;

    /// Whether the chosen allocation was reached and refused.
    [[nodiscard]] bool Failed() const;

    /// Allocations of this thread less its frees since the heap was armed: 0 when all that was taken has gone back.
    [[nodiscard]] long Outstanding() const;
};

/// Lets each allocation of `attempt` fail once in its turn, then runs it undisturbed. `attempt` gets the heap, does the
/// work, undoes it, and checks what it must; it is called until no allocation is left to fail.
/// returns  how many allocations have been made to fail
template <class Attempt>
std::size_t FailEachAllocation(Attempt attempt) {
    for (std::size_t n = 0;; ++n) {
        FailingHeap heap(n);
        attempt(heap);
        if (!heap.Failed()) return n;
    }
}

} // namespace TestSupport

#endif
