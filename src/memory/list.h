// The library's internal growable array: for the queues and stacks of walks, which never recurse, for the buffers in
// which files are built, and for the objects of a loaded tree.
//
// Invariants:
//  1. The first `count_` of `capacity_` items are alive; the storage after them is raw.
//  2. No storage is allocated before the first item. Make allocates exactly what it needs.
//  3. Items are moved as bytes when the list grows, so only trivially copyable ones may be added to a list. Objects of
//     any other type are created by Make and stay where they are until Release.

#ifndef TESSARIN_MEMORY_LIST_H
#define TESSARIN_MEMORY_LIST_H

#include "memory/checked_allocation.h"
#include "memory/sizes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>

namespace Tessarin {

template <class T>
class List {
public:
    List() = default;
    ~List() { Release(); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    /// False if memory runs out; the list is then unchanged.
    [[nodiscard]] bool Push(T item) {
        if (count_ == capacity_ && !Grow(1)) [[unlikely]]
            return false;
        items_[count_++] = item;
        return true;
    }

    /// Appends `count` items, uninitialised, for the caller to fill.
    /// returns  the first of them, valid until the next growth; null, the list unchanged, if memory runs out
    /// REQUIRES: `count` isn't 0
    [[nodiscard]] T* Extend(std::uint32_t count) {
        if (count > capacity_ - count_ && !Grow(count)) [[unlikely]]
            return nullptr;
        T* added = items_ + count_;
        count_ += count;
        return added;
    }

    /// Makes `count` objects at once, in storage of exactly their size: they are value-initialised, so plain numbers
    /// are 0. False if memory runs out; the list is then empty. REQUIRES: the list has no storage
    [[nodiscard]] bool Make(std::uint32_t count) {
        if (count == 0) return true;
        items_ = static_cast<T*>(AllocateArray(count, sizeof(T)));
        if (items_ == nullptr) return false;
        count_ = capacity_ = count;
        std::uninitialized_value_construct_n(items_, count);
        return true;
    }

    /// REQUIRES: the list isn't empty
    T Pop() { return items_[--count_]; }
    T& Top() { return items_[count_ - 1]; }

    /// Forgets the items, keeps the storage.
    void Clear() {
        static_assert(std::is_trivially_destructible_v<T>);
        count_ = 0;
    }

    /// Destroys the items and frees the storage.
    void Release() {
        std::destroy_n(items_, count_);
        std::free(items_);
        items_ = nullptr;
        count_ = capacity_ = 0;
    }

    void Swap(List& other) {
        std::swap(items_, other.items_);
        std::swap(count_, other.count_);
        std::swap(capacity_, other.capacity_);
    }

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    [[nodiscard]] bool IsEmpty() const { return count_ == 0; }
    T& operator[](std::uint32_t index) { return items_[index]; }
    const T& operator[](std::uint32_t index) const { return items_[index]; }
    T* begin() { return items_; } // null if there is no storage
    T* end() { return items_ + count_; }
    [[nodiscard]] const T* begin() const { return items_; }
    [[nodiscard]] const T* end() const { return items_ + count_; }

private:
    // A cache line of small items; a few of large ones.
    static constexpr std::uint32_t kFirstCapacity = OrSmall(std::max<std::uint32_t>(4, 64 / sizeof(T)), 1U);
    static constexpr std::uint32_t kLargestCapacity =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(UINT32_MAX, std::uint64_t{PTRDIFF_MAX} / sizeof(T)));

    /// Gives the list room for `count` more items, or doubles its capacity if that is more.
    [[nodiscard, gnu::noinline]] bool Grow(std::uint32_t count) {
        static_assert(std::is_trivially_copyable_v<T>, "items are moved as bytes: Make is for all others");
        if (count > kLargestCapacity - count_) return false;
        const std::uint64_t doubled = std::max<std::uint64_t>(kFirstCapacity, std::uint64_t{capacity_} * 2);
        const std::uint64_t wanted = std::clamp<std::uint64_t>(doubled, count_ + count, kLargestCapacity);
        void* grown = std::realloc(items_, static_cast<std::size_t>(wanted) * sizeof(T));
        if (grown == nullptr) return false;
        items_ = static_cast<T*>(grown);
        capacity_ = static_cast<std::uint32_t>(wanted);
        return true;
    }

    T* items_ = nullptr; // from malloc
    std::uint32_t count_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace Tessarin

#endif
