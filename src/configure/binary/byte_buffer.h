// The bytes of a file that is being made, as many as a file may have.

#ifndef TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H
#define TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H

#include "configure/binary/format.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// Writes bytes and words behind one another. Invariant: Size() <= kMostFileBytes
class ByteBuffer {
public:
    /// Appends `count` bytes for the caller to fill, until the next Take. Null if memory runs out or the bytes would
    /// pass kMostFileBytes, the buffer then unchanged. REQUIRES: `count` isn't 0
    [[nodiscard]] unsigned char* Take(std::uint32_t count) {
        if (count > kMostFileBytes - bytes_.Count()) [[unlikely]]
            return nullptr;
        return bytes_.Extend(count);
    }

    // False where Take returns null.
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
    void PatchWord(std::uint32_t place, std::uint32_t word) { StoreWord(&bytes_[place], word); }

    [[nodiscard]] std::uint32_t Size() const { return bytes_.Count(); }
    [[nodiscard]] const unsigned char* Bytes() const { return bytes_.begin(); } // null while there are none

private:
    Tessarin::List<unsigned char> bytes_;
};

} // namespace Configure

#endif
