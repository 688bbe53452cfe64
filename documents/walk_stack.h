/// The stack of a walk through nested tables, on the heap: documents may be deeper than a thread's own stack.

#ifndef TESSARIN_DOCUMENTS_WALK_STACK_H
#define TESSARIN_DOCUMENTS_WALK_STACK_H

#include "core/raw_vector.h"

#include <type_traits>

namespace Tessarin {

template <class Frame>
class WalkStack {
public:
    static_assert(std::is_trivially_copyable_v<Frame>);

    WalkStack() { frames_.element_size = sizeof(Frame); }
    ~WalkStack() { frames_.Release(); }
    WalkStack(const WalkStack&) = delete;
    WalkStack& operator=(const WalkStack&) = delete;

    [[nodiscard]] bool Push(const Frame& frame) { return frames_.Push(&frame) != nullptr; }
    void Pop() { --frames_.count; }

    [[nodiscard]] std::uint32_t Depth() const { return frames_.count; }
    Frame& Top() { return (*this)[frames_.count - 1]; }
    Frame& operator[](std::uint32_t depth) { return *static_cast<Frame*>(frames_.At(depth)); }

private:
    RawVector frames_;
};

} // namespace Tessarin

#endif
