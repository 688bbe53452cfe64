// The operations of a ring that replace its buffer: growth, and Adapt. Both use Linearise, which copies the records so
// that they begin at offset 0. No word of the ring changes before the new buffer is allocated.
//
// Sizes are added in 64 bits: a ring that would need more than 32 bits fails to grow as if memory had run out.

#include "containers/record_ring.h"

#include "containers/growth.h"

#include <cstddef>
#include <type_traits>

namespace Tessarin {

namespace {

/// Rings double if they need fewer bytes than this; for arrays the limit is one less.
constexpr std::uint32_t kDoublingLimit = 0x10000;

/// The bytes that a ring's first buffer has in addition to the first record.
constexpr std::uint32_t kFirstSlack = 4096;

/// The size of the next buffer. The need is the whole old buffer plus the new record, even if the old buffer has free
/// bytes. 0 if the need would exceed 32 bits.
std::uint32_t NextCapacity(std::uint32_t capacity, std::uint32_t size) {
    const std::uint64_t request = std::uint64_t{capacity == 0 ? kFirstSlack : capacity} + size;
    if (request > kLargestSize) return 0;
    const auto need = static_cast<std::uint32_t>(request);
    return capacity == 0 ? need : ProportionalCapacity(need, kDoublingLimit);
}

} // namespace

static_assert(std::is_standard_layout_v<RecordRing> && sizeof(RecordRing) == 20);

std::uint32_t RecordRing::UsedBytes() const { return UsedEnd() - head + (IsWrapped() ? tail : 0); }

/// Copies the records to a new buffer, the oldest first. The caller frees the old one. False if memory runs out.
/// REQUIRES: new_capacity >= UsedBytes(), and not 0
bool RecordRing::Linearise(Bytes& bytes, std::uint32_t new_capacity) {
    auto* linear = static_cast<Bytes>(std::malloc(new_capacity));
    if (linear == nullptr) return false;
    const std::uint32_t used = UsedBytes();
    if (count != 0) {
        const std::uint32_t before_wrap = UsedEnd() - head;
        std::memcpy(linear, bytes + head, before_wrap);
        std::memcpy(linear + before_wrap, bytes, used - before_wrap); // 0 bytes if it was linear
    }
    bytes = linear;
    capacity = new_capacity;
    head = skip = 0;
    tail = used;
    return true;
}

/// Reserve for a buffer without room. The old buffer isn't freed here, because the record to be appended may be in it.
RecordRing::Bytes RecordRing::Grow(Bytes& bytes, std::uint32_t size) {
    const std::uint32_t new_capacity = NextCapacity(capacity, size);
    if (new_capacity == 0 || !Linearise(bytes, new_capacity)) return nullptr;
    Bytes room = bytes + tail;
    tail += size;
    ++count;
    return room;
}

RecordRing::Bytes RecordRing::GrowAndPush(Bytes& bytes, const void* source, std::uint32_t size) {
    Bytes old = bytes;
    Bytes room = Grow(bytes, size);
    if (room == nullptr) return nullptr;
    std::memcpy(room, source, size);
    std::free(old);
    return room;
}

bool RecordRing::Adapt(Bytes& bytes) {
    if (count == 0) return false;
    if (UsedBytes() == capacity) return true;
    Bytes old = bytes;
    if (!Linearise(bytes, UsedBytes())) return false;
    std::free(old);
    return true;
}

} // namespace Tessarin
