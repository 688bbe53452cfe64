// How a pool finds its texts. When it is read: a bitmap with one bit per byte of the pool marks where texts start, and
// beside each word of the bitmap is the number of texts before it. So the text of an offset is found in constant time
// (by the rank of its bit), and an offset at which no text starts is rejected.
//
//     pool      a \0 1 \0 c \0 a b \0      offset 4 is the start of "c"
//     bitmap    1 0  1 0  1 0  1 0 0       two bits before it are set, so "c" is texts_[2]
//
// When it is written: a map leads from the addresses of interned texts to their offsets in the pool.

#include "configure/binary/string_pool.h"

#include "strings/intern_batch.h"
#include "strings/string_table.h"

#include <cstring>

namespace Configure {
namespace {

/// The offset after the NUL of the text at `offset`; 0 if there is no NUL.
std::uint32_t NextStart(const unsigned char* bytes, std::uint32_t offset, std::uint32_t size) {
    const void* nul = std::memchr(bytes + offset, 0, size - offset);
    if (nul == nullptr) return 0;
    return static_cast<std::uint32_t>(static_cast<const unsigned char*>(nul) - bytes) + 1;
}

} // namespace

/// Two passes over the bytes: the first counts the texts, so that they are allocated at once.
bool StringPool::Read(const unsigned char* bytes, std::uint32_t size) {
    size_ = size;
    if (!bitmap_.Make(size / kWordBits + 1) || !FindStarts(bytes)) return false;
    Tessarin::InternBatch batch(*Tessarin::string_table);
    std::uint32_t start = 0;
    for (cstr& text : texts_) {
        const std::uint32_t next = NextStart(bytes, start, size);
        if (!batch.Add({reinterpret_cast<const char*>(bytes + start), next - start - 1, Tessarin::TextForm::kAsIs,
                        &text, nullptr}))
            return false;
        start = next;
    }
    return batch.InternAll();
}

/// Fills the bitmap, and allocates the texts.
bool StringPool::FindStarts(const unsigned char* bytes) {
    std::uint32_t count = 0;
    std::uint32_t words_done = 0;
    for (std::uint32_t start = 0; start < size_;) {
        const std::uint32_t next = NextStart(bytes, start, size_);
        if (next == 0) break;
        for (; words_done <= start / kWordBits; ++words_done) bitmap_[words_done].texts_before = count;
        bitmap_[start / kWordBits].starts |= std::uint64_t{1} << start % kWordBits;
        ++count;
        start = next;
    }
    return texts_.Make(count);
}

std::uint32_t PoolBuilder::OffsetOf(cstr text) {
    if (text == nullptr) text = Tessarin::string_table->Intern("");
    auto* slot = text == nullptr ? nullptr : offsets_.At(text);
    if (slot == nullptr) return kNoOffset;
    if (slot->key != nullptr) return slot->value;

    const std::uint32_t offset = bytes_.Size();
    const std::uint32_t size = Tessarin::CstrLength(text) + 1;
    unsigned char* room = bytes_.Take(size);
    if (room == nullptr) return kNoOffset;
    std::memcpy(room, text, size);
    offsets_.Take(*slot, text, offset);
    return offset;
}

} // namespace Configure
