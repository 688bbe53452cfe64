/// A growable list of small values, on the heap: the queues and stacks of the walks, none of which recurses.

#ifndef TESSARIN_MEMORY_LIST_H
#define TESSARIN_MEMORY_LIST_H

#include "memory/raw_vector.h"

#include <cstdint>
#include <type_traits>

namespace Tessarin {

template <class T>
class List {
public:
    static_assert(std::is_trivially_copyable_v<T>);

    List() { items_.element_size = sizeof(T); }
    ~List() { items_.Release(); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    /// False if memory runs out, the list unchanged.
    [[nodiscard]] bool Push(T item) {
        if (items_.count == items_.capacity && !items_.GrowForOne()) [[unlikely]]
            return false;
        begin()[items_.count++] = item;
        return true;
    }

    /// REQUIRES: the list isn't empty
    T Pop() { return begin()[--items_.count]; }
    T& Top() { return begin()[items_.count - 1]; }

    /// Forgets the items, keeps the room.
    void Clear() { items_.count = 0; }

    [[nodiscard]] std::uint32_t Count() const { return items_.count; }
    [[nodiscard]] bool IsEmpty() const { return items_.count == 0; }
    T& operator[](std::uint32_t index) { return begin()[index]; }
    T* begin() { return static_cast<T*>(items_.data); }
    T* end() { return begin() + items_.count; }

private:
    RawVector items_;
};

} // namespace Tessarin

#endif
