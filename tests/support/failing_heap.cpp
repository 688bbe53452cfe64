// The replacements of the heap's functions that the linker's --wrap option selects, and the state that they share. That
// state is a thread's own, so that a test's other threads are neither counted nor failed.

#include "tests/support/failing_heap.h"

#include <cstdlib>
#include <new>

namespace TestSupport {
namespace {

struct State {
    bool armed = false;
    bool failed = false;
    std::size_t fail_at = FailingHeap::kNever;
    std::size_t allocations = 0;
    long outstanding = 0;
};

thread_local State state;

/// Counts an allocation, and returns whether it must fail.
bool Refuse() {
    if (!state.armed) return false;
    if (state.allocations++ != state.fail_at) return false;
    state.failed = true;
    return true;
}

void* Counted(void* block) {
    if (state.armed && block != nullptr) ++state.outstanding;
    return block;
}

} // namespace

FailingHeap::FailingHeap(std::size_t fail_at) {
    state = State{};
    state.fail_at = fail_at;
    state.armed = true;
}

FailingHeap::~FailingHeap() { state.armed = false; }

std::size_t FailingHeap::Allocations() const { return state.allocations; }
bool FailingHeap::Failed() const { return state.failed; }
long FailingHeap::Outstanding() const { return state.outstanding; }

} // namespace TestSupport

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);

void* __wrap_malloc(std::size_t size) {
    return TestSupport::Refuse() ? nullptr : TestSupport::Counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    return TestSupport::Refuse() ? nullptr : TestSupport::Counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, std::size_t size) {
    if (TestSupport::Refuse()) return nullptr;
    return block == nullptr ? TestSupport::Counted(__real_realloc(nullptr, size)) : __real_realloc(block, size);
}

void __wrap_free(void* block) {
    if (TestSupport::state.armed && block != nullptr) --TestSupport::state.outstanding;
    __real_free(block);
}
}

// operator new, for the three types that size_t can be. Only its failure matters here: its memory is freed by operator
// delete, which isn't wrapped, so it isn't part of the outstanding allocations.
#if __SIZEOF_POINTER__ == 8 && __SIZEOF_LONG__ == 8
#define TESSARIN_NEW(prefix) prefix##_Znwm
#define TESSARIN_NEW_NOTHROW(prefix) prefix##_ZnwmRKSt9nothrow_t
#elif __SIZEOF_POINTER__ == 8
#define TESSARIN_NEW(prefix) prefix##_Znwy
#define TESSARIN_NEW_NOTHROW(prefix) prefix##_ZnwyRKSt9nothrow_t
#else
#define TESSARIN_NEW(prefix) prefix##_Znwj
#define TESSARIN_NEW_NOTHROW(prefix) prefix##_ZnwjRKSt9nothrow_t
#endif

extern "C" {

void* TESSARIN_NEW(__real_)(std::size_t size);
void* TESSARIN_NEW_NOTHROW(__real_)(std::size_t size, const std::nothrow_t& tag);
void* TESSARIN_NEW(__wrap_)(std::size_t size);
void* TESSARIN_NEW_NOTHROW(__wrap_)(std::size_t size, const std::nothrow_t& tag);

void* TESSARIN_NEW(__wrap_)(std::size_t size) {
    if (TestSupport::Refuse()) throw std::bad_alloc();
    return TESSARIN_NEW(__real_)(size);
}

void* TESSARIN_NEW_NOTHROW(__wrap_)(std::size_t size, const std::nothrow_t& tag) {
    return TestSupport::Refuse() ? nullptr : TESSARIN_NEW_NOTHROW(__real_)(size, tag);
}
}
