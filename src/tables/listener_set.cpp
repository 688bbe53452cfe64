// The delegates of a vector are contiguous. A removal moves the last one into the gap, so the order of the others may
// change.

#include "tables/listener_set.h"

#include "tables/table_pools.h"

#include <algorithm>
#include <new>

namespace Tessarin {
namespace {

bool Equal(const Delegate& left, const Delegate& right) {
    return left.object == right.object && left.function == right.function;
}

std::uint64_t BytesOf(std::uint32_t delegates) { return std::uint64_t{delegates} * sizeof(Delegate); }

/// The smallest size class above `capacity`; twice `capacity` if there is none.
std::uint32_t NextCapacity(std::uint32_t capacity) {
    for (const SizeClass& size : kDelegateClasses) {
        if (BytesOf(capacity) < size.block_size) return size.block_size / sizeof(Delegate);
    }
    return capacity * 2;
}

} // namespace

Delegate* DelegateVector::Append(ListenerKind kind) {
    if (count == capacity && !Grow(kind)) return nullptr;
    data[count] = Delegate{};
    return &data[count++];
}

bool DelegateVector::Grow(ListenerKind kind) {
    if (capacity > UINT32_MAX / 2) return false;
    const std::uint32_t grown_capacity = NextCapacity(capacity);
    auto* grown = static_cast<Delegate*>(listener_pools->delegates[kind].Acquire(BytesOf(grown_capacity)));
    if (grown == nullptr) return false;
    std::copy_n(data, count, grown);
    Release(kind);
    data = grown;
    capacity = grown_capacity;
    return true;
}

void DelegateVector::Remove(const Delegate& delegate) {
    for (std::uint32_t i = 0; i < count;) {
        if (Equal(data[i], delegate)) {
            data[i] = data[--count]; // `i` stays, as this delegate may be equal, too
        } else {
            ++i;
        }
    }
}

void DelegateVector::Release(ListenerKind kind) { listener_pools->delegates[kind].Release(data, BytesOf(capacity)); }

ListenerSet* ListenerSet::Create() {
    void* block = listener_pools->sets.Alloc();
    if (block == nullptr) return nullptr;
    return new (block) ListenerSet{};
}

void ListenerSet::Destroy(ListenerSet* set) {
    for (std::uint32_t kind = 0; kind < kListenerKinds; ++kind) {
        set->vectors[kind].Release(static_cast<ListenerKind>(kind));
    }
    listener_pools->sets.Free(set);
}

} // namespace Tessarin
