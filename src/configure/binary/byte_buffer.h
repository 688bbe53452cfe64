/// Bytes that are made one behind the other, as many as a file may have.

#ifndef TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H
#define TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H

#include "configure/binary/format.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace Configure {

/// Invariant: size_ <= capacity_ <= kMostFileBytes
class ByteBuffer {
public:
    ByteBuffer() = default;
    ~ByteBuffer() { std::free(bytes_); }
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;

    /// Appends `count` bytes for the caller to fill, until the next Take. Null if memory runs out or the bytes would
    /// pass kMostFileBytes, the buffer then unchanged.
    [[nodiscard]] unsigned char* Take(std::uint32_t count) {
        if (capacity_ - size_ < count && !Grow(count)) [[unlikely]]
            return nullptr;
        unsigned char* taken = bytes_ + size_;
        size_ += count;
        return taken;
    }

    // False as Take answers null.
    [[nodiscard]] bool PutByte(unsigned char byte) {
        unsigned char* taken = Take(1);
        if (taken == nullptr) return false;
        *taken = byte;
        return true;
    }

    [[nodiscard]] bool PutWord(std::uint32_t word) {
        unsigned char* taken = Take(kWordSize);
        if (taken == nullptr) return false;
        StoreWord(taken, word);
        return true;
    }

    /// REQUIRES: a word has been put there
    void PatchWord(std::uint32_t place, std::uint32_t word) { StoreWord(bytes_ + place, word); }

    [[nodiscard]] std::uint32_t Size() const { return size_; }
    [[nodiscard]] const unsigned char* Bytes() const { return bytes_; } // null while there are none

private:
    static constexpr std::uint32_t kFirstCapacity = 1024;

    // Room for at least `count` bytes more: twice what there is, as long as that may be.
    [[nodiscard, gnu::noinline]] bool Grow(std::uint32_t count) {
        if (count > kMostFileBytes - size_) return false;
        std::uint64_t wanted = capacity_ == 0 ? kFirstCapacity : std::uint64_t{capacity_} * 2;
        if (wanted < std::uint64_t{size_} + count) wanted = std::uint64_t{size_} + count;
        if (wanted > kMostFileBytes) wanted = kMostFileBytes;
        void* grown = std::realloc(bytes_, static_cast<std::size_t>(wanted));
        if (grown == nullptr) return false;
        bytes_ = static_cast<unsigned char*>(grown);
        capacity_ = static_cast<std::uint32_t>(wanted);
        return true;
    }

    unsigned char* bytes_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0;
};

} // namespace Configure

#endif
