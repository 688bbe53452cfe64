/// The first-in, first-out ring of records of any length that the command queue and the event list share.
///
/// A record is a run of bytes whose first word, a u32, is its size, that word included. Records lie back to back, each
/// of them contiguous: one that would have to be split starts at offset 0, and the buffer's end stays unused until the
/// head has gone past it.
///
///     straight   tail > head    . . . [head ... tail) . . .
///     wrapped    tail <= head   [0 ... tail) . . . [head ... capacity - skip) skip
///
/// Threads: one at a time per ring.

#ifndef TESSARIN_CONTAINERS_RECORD_RING_H
#define TESSARIN_CONTAINERS_RECORD_RING_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Tessarin {

/// The five words of a ring. The pointer to its bytes stands right behind them in the record of the owner, who hands it
/// in: as a member it would be aligned, and the words would not follow an owner's signature without a gap.
///
/// Invariants:
/// 1. Without records head, tail and skip are 0.
/// 2. With records the ring is straight or wrapped as above; tail == head is a full ring. skip is 0 unless wrapped.
/// 3. head < capacity and tail <= capacity, whatever the first words of the records say.
/// 4. The buffer has `capacity` bytes from malloc, and is null if that is 0.
struct RecordRing {
    std::uint32_t capacity; // bytes
    std::uint32_t count;    // records
    std::uint32_t head;     // offset of the oldest record
    std::uint32_t tail;     // offset behind the newest one
    std::uint32_t skip;     // bytes left unused at the end

    using Bytes = unsigned char*;

    [[nodiscard]] static std::uint32_t FirstWord(const void* record) {
        std::uint32_t size;
        std::memcpy(&size, record, sizeof size);
        return size;
    }

    void Clear() { count = head = tail = skip = 0; }

    [[nodiscard]] Bytes Front(Bytes bytes) const { return count == 0 ? nullptr : bytes + head; }

    /// Room for one more record, its bytes unset. Null if memory runs out, the ring unchanged.
    /// REQUIRES: size > 0; the record's first word equals `size` before Pop gets to it
    Bytes Reserve(Bytes& bytes, std::uint32_t size) {
        if (std::uint32_t offset; TakeRoom(size, offset)) [[likely]]
            return bytes + offset;
        Bytes old = bytes;
        Bytes room = Grow(bytes, size);
        if (room != nullptr) std::free(old);
        return room;
    }

    /// Appends a copy; the source may be one of the ring's own records, or one that has just been popped.
    /// REQUIRES: size > 0, the source's first word
    Bytes Push(Bytes& bytes, const void* source, std::uint32_t size) {
        if (std::uint32_t offset; TakeRoom(size, offset)) [[likely]]
            return static_cast<Bytes>(std::memmove(bytes + offset, source, size));
        return GrowAndPush(bytes, source, size);
    }

    /// Removes the oldest record, if there is one. A first word that points out of the used bytes empties the ring:
    /// nothing behind such a record can be found.
    void Pop(Bytes bytes) {
        if (count <= 1) return Clear();
        std::uint32_t end = UsedEnd();
        // With other records behind it, only damage brings a record this close to the end.
        std::uint32_t size = end - head < sizeof size ? UINT32_MAX : FirstWord(bytes + head);
        if (size < end - head) [[likely]] {
            head += size;
            --count;
        } else if (size == end - head && IsWrapped()) {
            head = skip = 0;
            --count;
        } else {
            Clear();
        }
    }

    /// Straightens the records into a buffer of exactly their size. True if it has that size, now or from the start;
    /// false for a ring without records, or if memory runs out, the ring unchanged.
    bool Adapt(Bytes& bytes);

private:
    [[nodiscard]] bool IsWrapped() const { return count != 0 && tail <= head; }

    /// Where the run of records that begins at the head ends.
    [[nodiscard]] std::uint32_t UsedEnd() const { return IsWrapped() ? capacity - skip : tail; }

    /// Counts in a record where the buffer has room for it: at the tail, else at the start. False if it has none.
    bool TakeRoom(std::uint32_t size, std::uint32_t& offset) {
        bool wrapped = IsWrapped();
        if (std::uint32_t room = (wrapped ? head : capacity) - tail; room >= size) [[likely]] {
            offset = tail;
            tail += size;
        } else if (!wrapped && head >= size) {
            skip = room;
            offset = 0;
            tail = size;
        } else {
            return false;
        }
        ++count;
        return true;
    }

    [[gnu::noinline, gnu::cold]] Bytes Grow(Bytes& bytes, std::uint32_t size);
    [[gnu::noinline, gnu::cold]] Bytes GrowAndPush(Bytes& bytes, const void* source, std::uint32_t size);
    [[nodiscard]] std::uint32_t UsedBytes() const;
    bool Straighten(Bytes& bytes, std::uint32_t new_capacity);
};

} // namespace Tessarin

#endif
