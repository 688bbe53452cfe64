// Flat arrays: one heap block that is replaced by a larger one when it is full (growth.h).
//
// Invariants:
//
//  1. count * element_size <= capacity, and both sides fit 32 bits: an operation that would exceed them fails as if
//     memory had run out. Products are computed in 64 bits before they are compared.
//  2. `data` is a heap block even when capacity is 0.
//  3. No operation changes a field before it has all the memory that it needs.

#include "containers/flat_array.h"

#include "containers/growth.h"

#include <cstdlib>
#include <cstring>
#include <type_traits>

static_assert(std::is_standard_layout_v<farr> && std::is_trivially_copyable_v<farr>);

namespace {

/// Arrays double if they need fewer bytes than this. Other containers have their own limits.
constexpr std::uint32_t kDoublingLimit = 0xFFFF;

/// From this capacity on, in bytes, a block grows by realloc: the heap can then map its pages elsewhere or extend it in
/// place instead of copying it. Otherwise growth by a fixed step, as in the list of free blocks of a fixed-size pool,
/// would take time proportional to the square of the size.
constexpr std::uint32_t kReallocFrom = 0x20000;

/// Returns a block for size 0, too, although malloc may then return null.
void* AllocateBuffer(std::uint32_t bytes) { return std::malloc(bytes == 0 ? 1 : bytes); }

} // namespace

/// Allocates the record, then its buffer; if there is no memory for the buffer, the record is freed again.
farr* farr::Create(std::uint32_t element_size, std::uint32_t elements) {
    const std::uint64_t bytes = std::uint64_t{element_size} * elements;
    if (bytes == 0 || bytes > Tessarin::kLargestSize) return nullptr;
    auto* arr = static_cast<farr*>(std::malloc(sizeof(farr)));
    if (arr == nullptr) return nullptr;
    const auto capacity = static_cast<std::uint32_t>(bytes);
    *arr = farr{kSignature, 0, capacity, element_size, kFirstThreshold, AllocateBuffer(capacity)};
    arr->ResetThreshold(kFirstThreshold);
    if (arr->data != nullptr) return arr;
    std::free(arr);
    return nullptr;
}

void farr::Destroy(farr* arr) {
    std::free(arr->data);
    std::free(arr);
}

/// The whole buffer is copied, used bytes or not: the bytes of a cleared array are in the copy, too.
farr* farr::Copy() const {
    auto* copy = static_cast<farr*>(std::malloc(sizeof(farr)));
    if (copy == nullptr) return nullptr;
    *copy = *this;
    copy->data = AllocateBuffer(capacity);
    if (copy->data == nullptr) {
        std::free(copy);
        return nullptr;
    }
    std::memcpy(copy->data, data, capacity);
    return copy;
}

/// Moves the used bytes to a buffer of another size. False if memory runs out; the array is then unchanged.
/// REQUIRES: bytes >= UsedBytes()
bool farr::Reallocate(std::uint32_t bytes) {
    const bool use_realloc = capacity >= kReallocFrom && bytes > capacity;
    void* grown = use_realloc ? std::realloc(data, bytes) : AllocateBuffer(bytes);
    if (grown == nullptr) return false;
    if (!use_realloc) {
        std::memcpy(grown, data, UsedBytes());
        std::free(data);
    }
    data = grown;
    capacity = bytes;
    return true;
}

/// Pushes when the buffer is full, or when elements have size 0. A null source leaves the element uninitialised.
void* farr::PushSlowly(const void* source) {
    const std::uint64_t need = (std::uint64_t{count} + 1) * element_size;
    if (count == UINT32_MAX || need > Tessarin::kLargestSize) return nullptr;
    // A source inside the buffer moves with the buffer.
    const auto offset = reinterpret_cast<std::uintptr_t>(source) - reinterpret_cast<std::uintptr_t>(data);
    const bool own = source != nullptr && offset < capacity;
    if (need > capacity) {
        const auto bytes = static_cast<std::uint32_t>(need);
        if (!Reallocate(Tessarin::ThresholdCapacity(bytes, threshold, kDoublingLimit))) return nullptr;
    }
    if (own) source = static_cast<unsigned char*>(data) + offset;
    void* slot = Slot(count++);
    if (source != nullptr) std::memmove(slot, source, element_size);
    return slot;
}

/// A buffer that is too small gets exactly the size needed, without slack: a caller that resizes knows how many
/// elements it needs. A count of 0 does nothing; it doesn't empty the array.
void farr::Resize(std::uint32_t new_count, bool zero_fill) {
    const std::uint64_t need = std::uint64_t{new_count} * element_size;
    if (new_count == 0 || need > Tessarin::kLargestSize) return;
    if (need > capacity && !Reallocate(static_cast<std::uint32_t>(need))) return;
    if (zero_fill && new_count > count) std::memset(Slot(count), 0, static_cast<std::size_t>(need) - UsedBytes());
    count = new_count;
}

/// Moves all elements after the index. No erase frees memory; Adapt does.
void farr::Erase(std::uint32_t index) {
    if (index >= count) return;
    std::memmove(Slot(index), Slot(index + 1), std::size_t{count - index - 1} * element_size);
    --count;
}

/// Takes constant time: the last element moves to the place of the erased one, so the order changes.
void farr::FastErase(std::uint32_t index) {
    if (index >= count) return;
    --count;
    if (index < count) Tessarin::CopyBytes(Slot(index), Slot(count), element_size);
}

/// Allocates a new buffer even if the old one has the right size, so element pointers are invalid afterwards in any
/// case.
void farr::Adapt() { Reallocate(UsedBytes()); }

// ---------------------------------------------------------------------------------------- the exported functions
// Each checks the handle, then calls the record's member function. Nothing in the library calls these, since a
// host may define functions of the same names.

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

// An element size of 0 is allowed here, unlike at creation; PushSlowly handles it.
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

// Only the exact address after the last element ends an iteration.
void* farr_next(farr* arr, void* element) {
    if (!IsLive(arr) || element == nullptr) return nullptr;
    unsigned char* next = static_cast<unsigned char*>(element) + arr->element_size;
    return next == arr->Slot(arr->count) ? nullptr : next;
}

// qsort is undefined for a null comparison, so that is ignored.
void farr_sort(farr* arr, int (*compare)(const void*, const void*)) {
    if (IsLive(arr) && compare != nullptr) std::qsort(arr->data, arr->count, arr->element_size, compare);
}

void farr_sort_particular(farr* arr, uint32_t first, uint32_t last, int (*compare)(const void*, const void*)) {
    if (!IsLive(arr) || compare == nullptr || first >= last || last > arr->count) return;
    std::qsort(arr->Slot(first), last - first, arr->element_size, compare);
}
