// How a pool finds its texts. When it is read: a bitmap with one bit per byte of the pool marks where texts start, and
// beside each word of the bitmap is the number of texts before it. So the text of an offset is found in constant time
// (by the rank of its bit), and an offset at which no text starts is rejected.
//
//     pool      a \0 1 \0 c \0 a b \0      offset 4 is the start of "c"
//     bitmap    1 0  1 0  1 0  1 0 0       two bits before it are set, so "c" is texts_[2]
//
// When it is written: a hash index maps the addresses of interned texts to their offsets in the pool.

#include "configure/binary/string_pool.h"

#include "memory/sizes.h"
#include "strings/intern_batch.h"
#include "strings/string_table.h"

#include <cstring>

namespace Configure {
namespace {

constexpr std::uint32_t kFirstSlots = Tessarin::OrSmall(64U, 2U);

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

/// Makes room in the index before it is searched, so that a free slot that is found can take the text.
std::uint32_t PoolBuilder::OffsetOf(cstr text) {
    if (text == nullptr) text = Tessarin::string_table->Intern("");
    if (text == nullptr) return kNoOffset;
    if (count_ >= slots_.Count() / 2 && !GrowIndex()) return kNoOffset;
    Slot* slot = Index(slots_.begin(), slots_.Count()).Find(text);
    if (slot->text != nullptr) return slot->offset;

    const std::uint32_t offset = bytes_.Size();
    const std::uint32_t size = Tessarin::CstrLength(text) + 1;
    unsigned char* room = bytes_.Take(size);
    if (room == nullptr) return kNoOffset;
    std::memcpy(room, text, size);
    *slot = {text, offset};
    ++count_;
    return offset;
}

/// Doubles the index, or makes the first one.
bool PoolBuilder::GrowIndex() {
    if (slots_.Count() > UINT32_MAX / 2) return false;
    Tessarin::List<Slot> grown;
    if (!grown.Make(slots_.IsEmpty() ? kFirstSlots : slots_.Count() * 2)) return false;
    Index index(grown.begin(), grown.Count());
    for (const Slot& slot : slots_) {
        if (slot.text != nullptr) index.Insert(slot);
    }
    slots_.Swap(grown);
    return true;
}

} // namespace Configure
