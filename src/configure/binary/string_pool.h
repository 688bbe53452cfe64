// The pool of texts of the binary form: StringPool is a pool that was read from a file, PoolBuilder makes a pool to be
// written. How both find a text: string_pool.cpp.

#ifndef TESSARIN_CONFIGURE_BINARY_STRING_POOL_H
#define TESSARIN_CONFIGURE_BINARY_STRING_POOL_H

#include "configure/binary/byte_buffer.h"
#include "memory/list.h"
#include "memory/pointer_map.h"
#include "tessarin/types.h"

#include <bit>
#include <cstdint>

namespace Configure {

/// The interned texts of a file's pool. Each text is interned once, however many offsets refer to it, so the cost of a
/// load is bounded by the file's size, whatever its offsets are.
class StringPool {
public:
    /// Interns the texts in their order. Bytes after the last NUL are ignored. False if a text can't be interned or
    /// memory runs out. The bytes aren't needed afterwards.
    [[nodiscard]] bool Read(const unsigned char* bytes, std::uint32_t size);

    /// The text that starts at an offset; null if none starts there.
    [[nodiscard]] cstr At(std::uint32_t offset) const {
        if (offset >= size_) return nullptr;
        const BitmapWord& word = bitmap_[offset / kWordBits];
        const std::uint64_t start = std::uint64_t{1} << offset % kWordBits;
        if ((word.starts & start) == 0) return nullptr;
        return texts_[word.texts_before + static_cast<std::uint32_t>(std::popcount(word.starts & (start - 1)))];
    }

private:
    static constexpr std::uint32_t kWordBits = 64;

    // One bit per byte of the pool, set where a text starts; beside it the number of texts before this word.
    struct BitmapWord {
        std::uint64_t starts = 0;
        std::uint32_t texts_before = 0;
    };

    bool FindStarts(const unsigned char* bytes);

    std::uint32_t size_ = 0;
    Tessarin::List<BitmapWord> bitmap_;
    Tessarin::List<cstr> texts_;
};

/// Makes a pool to be written: each text once, in the order of first use.
class PoolBuilder {
public:
    static constexpr std::uint32_t kNoOffset = UINT32_MAX;

    /// The offset of a text, which is added if it is new. Equal texts have equal addresses, so only addresses are
    /// compared. A null text counts as an empty one. kNoOffset if memory runs out or the pool would be too large.
    /// REQUIRES: the text is interned
    [[nodiscard]] std::uint32_t OffsetOf(cstr text);

    [[nodiscard]] std::uint32_t Size() const { return bytes_.Size(); }
    [[nodiscard]] const unsigned char* Bytes() const { return bytes_.Bytes(); }

private:
    ByteBuffer bytes_;
    Tessarin::PointerMap<std::uint32_t> offsets_;
};

} // namespace Configure

#endif
