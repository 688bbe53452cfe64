// Where a ring's buffer is replaced. Both ways go through Straighten, which alone copies: the new ring is straight from
// offset 0. No word changes before the new buffer is there.
//
// Sizes are added in 64 bits: a ring that would have to pass 32 is refused as if memory had run out.

#include "containers/record_ring.h"

#include "containers/growth.h"

#include <cstddef>
#include <type_traits>

namespace Tessarin {

namespace {

/// Rings double below this request, in bytes; arrays have a limit that is one less.
constexpr std::uint32_t kDoublingLimit = 0x10000;

/// What a ring without a buffer takes beside its first record.
constexpr std::uint32_t kFirstSlack = 4096;

/// The size of the next buffer, made from all of the old one and not from what is missing. 0 if it would pass 32 bits.
std::uint32_t NextCapacity(std::uint32_t capacity, std::uint32_t size) {
    std::uint64_t request = std::uint64_t{capacity == 0 ? kFirstSlack : capacity} + size;
    if (request > kLargestSize) return 0;
    auto need = static_cast<std::uint32_t>(request);
    return capacity == 0 ? need : ProportionalCapacity(need, kDoublingLimit);
}

} // namespace

static_assert(std::is_standard_layout_v<RecordRing> && sizeof(RecordRing) == 20);

std::uint32_t RecordRing::UsedBytes() const { return UsedEnd() - head + (IsWrapped() ? tail : 0); }

/// Puts the records into a new buffer, the oldest first. The old one is left to the caller. False if memory runs out.
/// REQUIRES: new_capacity >= UsedBytes(), and not 0
bool RecordRing::Straighten(Bytes& bytes, std::uint32_t new_capacity) {
    auto* straight = static_cast<Bytes>(std::malloc(new_capacity));
    if (straight == nullptr) return false;
    std::uint32_t used = UsedBytes();
    if (count != 0) {
        std::uint32_t first_run = UsedEnd() - head;
        std::memcpy(straight, bytes + head, first_run);
        std::memcpy(straight + first_run, bytes, used - first_run); // nothing if it was straight
    }
    bytes = straight;
    capacity = new_capacity;
    head = skip = 0;
    tail = used;
    return true;
}

/// Reserve where the buffer has no room. The old buffer is not freed here, as the record to come may lie in it.
RecordRing::Bytes RecordRing::Grow(Bytes& bytes, std::uint32_t size) {
    std::uint32_t new_capacity = NextCapacity(capacity, size);
    if (new_capacity == 0 || !Straighten(bytes, new_capacity)) return nullptr;
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
    if (!Straighten(bytes, UsedBytes())) return false;
    std::free(old);
    return true;
}

} // namespace Tessarin
