// Reading. A bitmap of the pool has the places at which a text starts, with the number of texts before each word of it:
// so an offset leads to its text in constant time, and one that points elsewhere is told apart.
//
// Writing. An index from addresses to offsets. Addresses of interned texts rise by few bytes from one to the next; the
// multiplication spreads them over the index, whose slots a text takes from its own place on.

#include "configure/binary/string_pool.h"

#include "strings/intern_batch.h"
#include "strings/string_table.h"

#include <cstdlib>
#include <cstring>

namespace Configure {
namespace {

constexpr std::uint32_t kFirstSlotBits = 6;
constexpr std::uint32_t kMostSlotBits = 31;
constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;

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
        if (!batch.Add(
                {reinterpret_cast<const char*>(bytes + start), next - start - 1, Tessarin::TextForm::kAsIs, &text}))
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
    if (slot_bits_ == 0 || count_ >> (slot_bits_ - 1) != 0) {
        if (!Grow()) return kNoOffset;
    }
    Slot* slot = Find(text);
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

/// The slot of a text, or the free one that it would take.
PoolBuilder::Slot* PoolBuilder::Find(cstr text) const {
    const std::uint64_t spread = std::uint64_t{reinterpret_cast<std::uintptr_t>(text)} * kSpread;
    const std::uint32_t mask = (std::uint32_t{1} << slot_bits_) - 1;
    auto index = static_cast<std::uint32_t>(spread >> (64 - slot_bits_));
    while (slots_[index].text != nullptr && slots_[index].text != text) index = (index + 1) & mask;
    return &slots_[index];
}

/// Doubles the index, or makes the first one.
bool PoolBuilder::Grow() {
    const std::uint32_t bits = slot_bits_ == 0 ? kFirstSlotBits : slot_bits_ + 1;
    if (bits > kMostSlotBits) return false;
    auto* slots = static_cast<Slot*>(std::calloc(std::size_t{1} << bits, sizeof(Slot)));
    if (slots == nullptr) return false;
    Slot* old_slots = slots_;
    const std::size_t old_count = slot_bits_ == 0 ? 0 : std::size_t{1} << slot_bits_;
    slots_ = slots;
    slot_bits_ = bits;
    for (const Slot* slot = old_slots; slot != old_slots + old_count; ++slot) {
        if (slot->text != nullptr) *Find(slot->text) = *slot;
    }
    std::free(old_slots);
    return true;
}

} // namespace Configure
