/// Objects side by side in one block, as many as are needed: made once, never resized.

#ifndef TESSARIN_MEMORY_OBJECT_ARRAY_H
#define TESSARIN_MEMORY_OBJECT_ARRAY_H

#include "memory/checked_allocation.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Configure {

template <class T>
class ObjectArray {
public:
    ObjectArray() = default;
    ~ObjectArray() { Clear(); }
    ObjectArray(const ObjectArray&) = delete;
    ObjectArray& operator=(const ObjectArray&) = delete;

    /// Makes `count` objects, their fields as they initialise themselves, numbers 0. False if memory runs out, the
    /// array then empty. REQUIRES: the array is empty
    [[nodiscard]] bool Make(std::uint32_t count) {
        if (count == 0) return true;
        objects_ = static_cast<T*>(Tessarin::AllocateArray(count, sizeof(T)));
        if (objects_ == nullptr) return false;
        count_ = count;
        std::uninitialized_value_construct_n(objects_, count);
        return true;
    }

    void Clear() {
        std::destroy_n(objects_, count_);
        std::free(objects_);
        objects_ = nullptr;
        count_ = 0;
    }

    [[nodiscard]] std::uint32_t Count() const { return count_; }
    [[nodiscard]] T* begin() const { return objects_; }
    [[nodiscard]] T* end() const { return objects_ + count_; }
    [[nodiscard]] T& operator[](std::uint32_t index) const { return objects_[index]; }

private:
    T* objects_ = nullptr;
    std::uint32_t count_ = 0;
};

} // namespace Configure

#endif
