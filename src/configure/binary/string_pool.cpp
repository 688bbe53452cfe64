// Reading. A bitmap of the pool has the places at which a text starts, with the number of texts before each word of it:
// so an offset leads to its text in constant time, and one that points elsewhere is told apart.
//
// Writing. An index leads from a text's address to its offset, for a text that is in the pool already.

#include "configure/binary/string_pool.h"

#include "strings/intern_batch.h"
#include "strings/string_table.h"

#include <cstring>

namespace Configure {
namespace {

constexpr std::uint32_t kFirstSlots = 64;

/// Behind the NUL of the text at `offset`; 0 if none follows.
std::uint32_t NextStart(const unsigned char* bytes, std::uint32_t offset, std::uint32_t size) {
    const void* nul = std::memchr(bytes + offset, 0, size - offset);
    if (nul == nullptr) return 0;
    return static_cast<std::uint32_t>(static_cast<const unsigned char*>(nul) - bytes) + 1;
}

} // namespace

/// Twice through the bytes: the places first, so that the room for the texts is made once.
bool StringPool::Read(const unsigned char* bytes, std::uint32_t size) {
    size_ = size;
    if (!stretches_.Make(size / kStretch + 1) || !FindStarts(bytes)) return false;
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

/// Marks where texts start, and makes the room for them.
bool StringPool::FindStarts(const unsigned char* bytes) {
    std::uint32_t count = 0;
    std::uint32_t stretches_done = 0;
    for (std::uint32_t start = 0; start < size_;) {
        const std::uint32_t next = NextStart(bytes, start, size_);
        if (next == 0) break;
        for (; stretches_done <= start / kStretch; ++stretches_done) stretches_[stretches_done].texts_before = count;
        stretches_[start / kStretch].starts |= std::uint64_t{1} << start % kStretch;
        ++count;
        start = next;
    }
    return texts_.Make(count);
}

/// The index has room before it is searched: the slot found free is then the text's own.
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
