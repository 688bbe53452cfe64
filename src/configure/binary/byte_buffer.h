// A buffer for the bytes of a file that is being made. It never holds more bytes than a file may have.

#ifndef TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H
#define TESSARIN_CONFIGURE_BINARY_BYTE_BUFFER_H

#include "configure/binary/format.h"
#include "memory/list.h"

#include <cstdint>

namespace Configure {

/// Appends bytes and words. Invariant: Size() <= kMostFileBytes
class ByteBuffer {
public:
    /// Appends `count` bytes, which the caller may fill until the next Take. If memory runs out or the size would
    /// exceed kMostFileBytes, returns null and leaves the buffer unchanged. REQUIRES: `count` isn't 0
    [[nodiscard]] unsigned char* Take(std::uint32_t count) {
        if (count > kMostFileBytes - bytes_.Count()) [[unlikely]]
            return nullptr;
        return bytes_.Extend(count);
    }

    // False if Take returns null.
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

    /// Overwrites the word at `place`. REQUIRES: a word has been put there
    void PatchWord(std::uint32_t place, std::uint32_t word) { StoreWord(&bytes_[place], word); }

    [[nodiscard]] std::uint32_t Size() const { return bytes_.Count(); }
    [[nodiscard]] const unsigned char* Bytes() const { return bytes_.begin(); } // null while there are none

private:
    Tessarin::List<unsigned char> bytes_;
};

} // namespace Configure

#endif
