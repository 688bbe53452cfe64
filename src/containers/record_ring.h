// The ring buffer of the command queue and the event list: a first-in, first-out queue of records of any length.
//
// The first word of a record, a u32, is its size in bytes, that word included. Records lie back to back, each of them
// contiguous: a record that would have to be split starts at offset 0, and the buffer's end stays unused until the head
// has passed it.
//
//     linear     tail > head    . . . [head ... tail) . . .
//     wrapped    tail <= head   [0 ... tail) . . . [head ... capacity - skip) skip

#ifndef TESSARIN_CONTAINERS_RECORD_RING_H
#define TESSARIN_CONTAINERS_RECORD_RING_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Tessarin {

/// The five words of a ring. The pointer to the ring's bytes is the next field in the owner's record and is passed to
/// every function. As a member of the ring it would be aligned, which would make a gap between an owner's signature and
/// the words.
/// Threads: one at a time per ring.
///
/// Invariants:
/// 1. Without records, head, tail and skip are 0.
/// 2. With records, the ring is linear or wrapped as above; tail == head means that it is full. skip is 0 unless the
///    ring is wrapped.
/// 3. head < capacity and tail <= capacity, whatever the first words of the records say.
/// 4. The buffer has `capacity` bytes from malloc, and is null if that is 0.
struct RecordRing {
    std::uint32_t capacity; // bytes
    std::uint32_t count;    // records
    std::uint32_t head;     // offset of the oldest record
    std::uint32_t tail;     // offset after the newest one
    std::uint32_t skip;     // bytes left unused at the end

    using Bytes = unsigned char*;

    [[nodiscard]] static std::uint32_t FirstWord(const void* record) {
        std::uint32_t size;
        std::memcpy(&size, record, sizeof size);
        return size;
    }

    void Clear() { count = head = tail = skip = 0; }

    [[nodiscard]] Bytes Front(Bytes bytes) const { return count == 0 ? nullptr : bytes + head; }

    /// Appends a record, its bytes uninitialised. Null if memory runs out; the ring is then unchanged.
    /// REQUIRES: size > 0; the record's first word equals `size` before Pop reaches it
    Bytes Reserve(Bytes& bytes, std::uint32_t size) {
        if (std::uint32_t offset; TryAppend(size, offset)) [[likely]]
            return bytes + offset;
        Bytes old = bytes;
        Bytes room = Grow(bytes, size);
        if (room != nullptr) std::free(old);
        return room;
    }

    /// Appends a copy; the source may be one of the ring's own records, or one that was just popped.
    /// REQUIRES: size > 0, and the source's first word equals `size`
    Bytes Push(Bytes& bytes, const void* source, std::uint32_t size) {
        if (std::uint32_t offset; TryAppend(size, offset)) [[likely]]
            return static_cast<Bytes>(std::memmove(bytes + offset, source, size));
        return GrowAndPush(bytes, source, size);
    }

    /// Removes the oldest record, if there is one. If its first word points beyond the used bytes, the ring is emptied,
    /// because no later record can be found.
    void Pop(Bytes bytes) {
        if (count <= 1) return Clear();
        const std::uint32_t end = UsedEnd();
        // Other records follow this one, so if it has no room for its first word, it has been damaged.
        const std::uint32_t size = end - head < sizeof size ? UINT32_MAX : FirstWord(bytes + head);
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

    /// Moves the records to a buffer of exactly their size. True if the buffer then has that size, even if it had it
    /// before. False for a ring without records, or if memory runs out; the ring is then unchanged.
    bool Adapt(Bytes& bytes);

private:
    [[nodiscard]] bool IsWrapped() const { return count != 0 && tail <= head; }

    /// The end of the contiguous records that begin at the head.
    [[nodiscard]] std::uint32_t UsedEnd() const { return IsWrapped() ? capacity - skip : tail; }

    /// Appends a record if the buffer has room for it: at the tail, else at offset 0. False if there is no room.
    bool TryAppend(std::uint32_t size, std::uint32_t& offset) {
        const bool wrapped = IsWrapped();
        if (const std::uint32_t room = (wrapped ? head : capacity) - tail; room >= size) [[likely]] {
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
    bool Linearise(Bytes& bytes, std::uint32_t new_capacity);
};

} // namespace Tessarin

#endif
