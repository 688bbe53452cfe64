// Hash, comparison and copy of texts, eight bytes at a time: every lookup of a key calls these functions. Each works
// for both forms of a text (TextForm): letters are folded while the text is read, so no caller needs a buffer for the
// form.
//
//  1. The hash of a text with TextForm::kLowerCase is the hash of its lower-case form, which is the text in the string
//     table.
//  2. Exactly `length` bytes are read, never one beyond them.
//  3. Results are the same on machines of either byte order.

#ifndef TESSARIN_STRINGS_STRING_HASH_H
#define TESSARIN_STRINGS_STRING_HASH_H

#include "platform/ascii.h"
#include "strings/normal_forms.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tessarin {

// A word holds eight bytes of a text, the first byte lowest, on every machine. The constants repeat a byte eight times.
inline constexpr std::uint64_t kEachByte = 0x0101010101010101U;
inline constexpr std::uint64_t kTopBits = kEachByte * 0x80;

/// 2 to 8 bytes at `text` as a number, the first byte lowest.
template <class Number>
Number LoadBytes(const char* text) {
    Number number;
    std::memcpy(&number, text, sizeof number);
    if constexpr (std::endian::native == std::endian::big) {
        Number swapped = 0;
        for (std::size_t i = 0; i < sizeof number; ++i) swapped = (swapped << 8) | ((number >> (8 * i)) & 0xFF);
        return swapped;
    }
    return number;
}

/// The `count` bytes at `text`, 1 to 8, in the top of a word; the bytes below are zeros. Reads nothing beyond them. It
/// has no loop, because the lengths of keys vary, and a mispredicted branch costs more than this whole function.
inline std::uint64_t TopBytes(const char* text, std::size_t count) {
    const auto unused = static_cast<unsigned>(64 - 8 * count);
    if (count >= 4) { // two halves that may overlap
        const std::uint64_t last = LoadBytes<std::uint32_t>(text + count - 4);
        const std::uint64_t first = LoadBytes<std::uint32_t>(text);
        return last << 32 | ((first << unused) & 0xFFFFFFFFU);
    }
    const auto byte = [text](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(text[i])}; };
    const std::size_t middle = count / 2;
    return byte(0) << unused | byte(middle) << (unused + 8 * middle) | byte(count - 1) << 56;
}

/// Eight bytes of a text in `form`. A byte below 0x80 is `A` to `Z` exactly if adding 0x3F reaches 0x80 and adding 0x25
/// doesn't.
template <TextForm form>
std::uint64_t Fold(std::uint64_t word) {
    if constexpr (form == TextForm::kAsIs) return word;
    const std::uint64_t low = word & ~kTopBits;
    const std::uint64_t capitals = ((low + kEachByte * 0x3F) ^ (low + kEachByte * 0x25)) & ~word & kTopBits;
    return word + (capitals >> 2); // 0x80 becomes the 0x20 between a capital and its small letter
}

/// Writes a text in `form`, without a NUL. The two places don't overlap.
template <TextForm form>
void CopyText(char* to, const char* text, std::size_t length) {
    if constexpr (form == TextForm::kAsIs) {
        std::memcpy(to, text, length);
    } else {
        for (std::size_t i = 0; i < length; ++i) to[i] = LowerCase(text[i]);
    }
}

/// A polynomial in 131 over the bytes of a word, as signed numbers, modulo 2^32. Neighbours are combined in lanes that
/// get wider: 8 bytes, 4 pairs, 2 halves.
inline std::uint32_t HashOfWord(std::uint64_t word) {
    constexpr std::uint32_t k1 = 131, k2 = k1 * k1, k4 = k2 * k2;
    if ((word & kTopBits) != 0) [[unlikely]] {
        std::uint32_t hash = 0;
        for (unsigned i = 0; i < 64; i += 8) {
            hash = hash * k1 + static_cast<std::uint32_t>(static_cast<std::int8_t>(word >> i));
        }
        return hash;
    }
    constexpr std::uint64_t kBytes = 0x00FF00FF00FF00FFU, kPairs = 0x0000FFFF0000FFFFU;
    const std::uint64_t pairs = (word & kBytes) * k1 + ((word >> 8) & kBytes);     // below 2^15 each
    const std::uint64_t halves = (pairs & kPairs) * k2 + ((pairs >> 16) & kPairs); // below 2^30 each
    return static_cast<std::uint32_t>(halves) * k4 + static_cast<std::uint32_t>(halves >> 32);
}

/// The polynomial over a whole text in `form`, with its top bit cleared. Zeros in front of the text don't change it, so
/// the first word is padded with zeros in front, and every other word is full.
template <TextForm form>
std::uint32_t HashOfText(const char* text, std::size_t length) {
    constexpr std::uint32_t k8 = 0x191145A1U;
    static_assert(k8 == static_cast<std::uint32_t>(131ULL * 131 * 131 * 131 * 131 * 131 * 131 * 131));
    if (length == 0) return 0;
    const std::size_t head = (length - 1) % 8 + 1;
    const std::uint64_t first = length < 8 ? TopBytes(text, head) : LoadBytes<std::uint64_t>(text) << (64 - 8 * head);
    std::uint32_t hash = HashOfWord(Fold<form>(first));
    for (std::size_t i = head; i < length; i += 8) {
        hash = hash * k8 + HashOfWord(Fold<form>(LoadBytes<std::uint64_t>(text + i)));
    }
    return hash & 0x7FFFFFFF;
}

/// Whether an interned text equals `text` in `form`; both have `length` bytes.
template <TextForm form>
bool EqualTexts(const char* interned, const char* text, std::size_t length) {
    if (length < 8) {
        return length == 0 || TopBytes(interned, length) == Fold<form>(TopBytes(text, length));
    }
    const auto equal_at = [interned, text](std::size_t i) {
        return LoadBytes<std::uint64_t>(interned + i) == Fold<form>(LoadBytes<std::uint64_t>(text + i));
    };
    for (std::size_t i = 0; i + 8 < length; i += 8) {
        if (!equal_at(i)) return false;
    }
    return equal_at(length - 8);
}

} // namespace Tessarin

#endif
