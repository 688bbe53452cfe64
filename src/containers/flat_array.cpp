/// Flat arrays.
///
/// Invariants:
/// 1. count * element_size <= capacity, and both sides fit 32 bits: whatever would pass them is refused as if memory
///    had run out. Products are taken in 64 bits before they are compared.
/// 2. `data` is a block of its own even when capacity is 0.
/// 3. No operation changes a field before it has all the memory that it needs.

#include "containers/flat_array.h"

#include "containers/growth.h"

#include <cstdlib>
#include <cstring>
#include <type_traits>

static_assert(std::is_standard_layout_v<farr> && std::is_trivially_copyable_v<farr>);

namespace {

/// Arrays double below this need, in bytes. Other containers have limits of their own.
constexpr std::uint32_t kDoublingLimit = 0xFFFF;

/// From this capacity on, in bytes, the heap is asked to move a block instead of copying it: it can do so by mapping
/// its pages elsewhere or by extending it in place. Growth by a fixed step, as in an object pool's list of free blocks,
/// would otherwise cost the square of the size.
constexpr std::uint32_t kMovedByHeap = 0x20000;

/// A block even for size 0, where the runtime library may answer null.
void* TakeBuffer(std::uint32_t bytes) { return std::malloc(bytes == 0 ? 1 : bytes); }

} // namespace

/// The record comes first, then its buffer; without the buffer the record goes back too.
farr* farr::Create(std::uint32_t element_size, std::uint32_t elements) {
    std::uint64_t bytes = std::uint64_t{element_size} * elements;
    if (bytes == 0 || bytes > Tessarin::kLargestSize) return nullptr;
    auto* arr = static_cast<farr*>(std::malloc(sizeof(farr)));
    if (arr == nullptr) return nullptr;
    auto capacity = static_cast<std::uint32_t>(bytes);
    *arr = farr{kSignature, 0, capacity, element_size, kFirstThreshold, TakeBuffer(capacity)};
    arr->ResetThreshold(kFirstThreshold);
    if (arr->data != nullptr) return arr;
    std::free(arr);
    return nullptr;
}

void farr::Destroy(farr* arr) {
    std::free(arr->data);
    std::free(arr);
}

/// All of the buffer is copied, used or not: an array that was cleared keeps its bytes in the copy, as in the original.
farr* farr::Copy() const {
    auto* copy = static_cast<farr*>(std::malloc(sizeof(farr)));
    if (copy == nullptr) return nullptr;
    *copy = *this;
    copy->data = TakeBuffer(capacity);
    if (copy->data == nullptr) {
        std::free(copy);
        return nullptr;
    }
    std::memcpy(copy->data, data, capacity);
    return copy;
}

/// Puts the used bytes into a buffer of another size. False if memory runs out, the array unchanged.
/// REQUIRES: bytes >= UsedBytes()
bool farr::Regrow(std::uint32_t bytes) {
    bool moved_by_heap = capacity >= kMovedByHeap && bytes > capacity;
    void* grown = moved_by_heap ? std::realloc(data, bytes) : TakeBuffer(bytes);
    if (grown == nullptr) return false;
    if (!moved_by_heap) {
        std::memcpy(grown, data, UsedBytes());
        std::free(data);
    }
    data = grown;
    capacity = bytes;
    return true;
}

/// Appends where the buffer is full or elements have no size. A null source leaves the element unset.
void* farr::PushWithCare(const void* source) {
    std::uint64_t need = (std::uint64_t{count} + 1) * element_size;
    if (count == UINT32_MAX || need > Tessarin::kLargestSize) return nullptr;
    // A source inside the buffer moves with it.
    auto offset = reinterpret_cast<std::uintptr_t>(source) - reinterpret_cast<std::uintptr_t>(data);
    bool own = source != nullptr && offset < capacity;
    if (need > capacity) {
        auto bytes = static_cast<std::uint32_t>(need);
        if (!Regrow(Tessarin::ThresholdCapacity(bytes, threshold, kDoublingLimit))) return nullptr;
    }
    if (own) source = static_cast<unsigned char*>(data) + offset;
    void* slot = Slot(count++);
    if (source != nullptr) std::memmove(slot, source, element_size);
    return slot;
}

/// A buffer that is too small gets exactly the size needed, without slack: who resizes knows what is coming. A count of
/// 0 is no request to empty the array.
void farr::Resize(std::uint32_t new_count, bool zero_fill) {
    std::uint64_t need = std::uint64_t{new_count} * element_size;
    if (new_count == 0 || need > Tessarin::kLargestSize) return;
    if (need > capacity && !Regrow(static_cast<std::uint32_t>(need))) return;
    if (zero_fill && new_count > count) std::memset(Slot(count), 0, static_cast<std::size_t>(need) - UsedBytes());
    count = new_count;
}

/// Linear in the elements behind the index. No erase gives memory back; that is Adapt's.
void farr::Erase(std::uint32_t index) {
    if (index >= count) return;
    std::memmove(Slot(index), Slot(index + 1), std::size_t{count - index - 1} * element_size);
    --count;
}

/// Constant: the last element takes the place, so the order is lost.
void farr::FastErase(std::uint32_t index) {
    if (index >= count) return;
    --count;
    if (index < count) Tessarin::CopyBytes(Slot(index), Slot(count), element_size);
}

/// Takes a new buffer even where the size is right already: element pointers are stale after it in any case.
void farr::Adapt() { Regrow(UsedBytes()); }

// ---------------------------------------------------------------------------------------- the exported functions
// The guard, then the record's own function. Nothing in the library calls these, since a host may have functions of the
// same names.

using Tessarin::IsLive;

farr* farr_create(uint32_t element_size) { return farr::Create(element_size); }

farr* farr_create_capacity(uint32_t element_size, uint32_t elements) { return farr::Create(element_size, elements); }

void farr_destroy(farr* arr) {
    if (IsLive(arr)) farr::Destroy(arr);
}

uint32_t farr_count(farr* arr) { return IsLive(arr) ? arr->count : 0; }

uint32_t farr_capacity(farr* arr) { return IsLive(arr) ? arr->capacity : 0; }

uint32_t farr_empty(farr* arr) { return IsLive(arr) && arr->count != 0 ? 0 : 1; }

uint32_t farr_threshold(farr* arr) { return IsLive(arr) ? arr->threshold : 0; }

void farr_reset_threshold(farr* arr, uint32_t threshold) {
    if (IsLive(arr)) arr->ResetThreshold(threshold);
}

// An element size of 0 is let in here, unlike at creation; PushWithCare knows of it.
void farr_reset(farr* arr, uint32_t element_size) {
    if (!IsLive(arr)) return;
    arr->count = 0;
    arr->element_size = element_size;
}

void farr_clear(farr* arr) {
    if (IsLive(arr)) arr->count = 0;
}

void* farr_at(farr* arr, uint32_t index) { return IsLive(arr) && index < arr->count ? arr->Slot(index) : nullptr; }

void* farr_push(farr* arr) { return IsLive(arr) ? arr->Push() : nullptr; }

void* farr_push_element(farr* arr, const void* source) {
    return IsLive(arr) && source != nullptr ? arr->PushElement(source) : nullptr;
}

void farr_resize(farr* arr, uint32_t new_count, uint32_t zero_fill) {
    if (IsLive(arr)) arr->Resize(new_count, zero_fill != 0);
}

void farr_erase(farr* arr, uint32_t index) {
    if (IsLive(arr)) arr->Erase(index);
}

void farr_fast_erase(farr* arr, uint32_t index) {
    if (IsLive(arr)) arr->FastErase(index);
}

void farr_popback(farr* arr) {
    if (IsLive(arr) && arr->count != 0) --arr->count;
}

void farr_adapt(farr* arr) {
    if (IsLive(arr)) arr->Adapt();
}

farr* farr_copy(farr* arr) { return IsLive(arr) ? arr->Copy() : nullptr; }

void* farr_begin(farr* arr) { return IsLive(arr) && arr->count != 0 ? arr->data : nullptr; }

void* farr_end(farr*) { return nullptr; }

// Only the exact address behind the last element ends a walk.
void* farr_next(farr* arr, void* element) {
    if (!IsLive(arr) || element == nullptr) return nullptr;
    unsigned char* next = static_cast<unsigned char*>(element) + arr->element_size;
    return next == arr->Slot(arr->count) ? nullptr : next;
}

// The runtime library's sort is undefined for a null comparison, so that is turned away.
void farr_sort(farr* arr, int (*compare)(const void*, const void*)) {
    if (IsLive(arr) && compare != nullptr) std::qsort(arr->data, arr->count, arr->element_size, compare);
}

void farr_sort_particular(farr* arr, uint32_t first, uint32_t last, int (*compare)(const void*, const void*)) {
    if (!IsLive(arr) || compare == nullptr || first >= last || last > arr->count) return;
    std::qsort(arr->Slot(first), last - first, arr->element_size, compare);
}
