// Interning. 99991 buckets, fixed, each a list of slots that only ever gains: a bucket's first slot stands in the
// bucket itself, further ones in blocks of seven, the newest block first. Invariants:
//
//  1. A slot goes from 0 to its text once and never changes again; a block's `next` is set before the block is linked.
//     Both are published by a release store, so a reader that sees a slot or a block sees all that it leads to.
//  2. Hence a hit takes no lock. A miss takes it and looks again, as another thread may have added the text meanwhile.
//  3. Equal texts hash alike and stand in one bucket, so the second look makes addresses unique.
//
// The forms (as it is, lower case) fold in hash, comparison and copy as they go; nothing needs a scratch buffer.

#include "strings/string_table.h"

#include "strings/string_hash.h"

#include <cstdlib>
#include <mutex>
#include <new>

namespace Tessarin {
namespace {

constexpr unsigned kAddressBits = 48;
constexpr std::size_t kBlockChunkBytes = std::size_t{64} * 1024;

cstr TextOf(std::uint64_t slot) {
    return reinterpret_cast<cstr>(static_cast<std::uintptr_t>(slot & ((std::uint64_t{1} << kAddressBits) - 1)));
}

} // namespace

/// A text on its way through the index.
template <class Form>
struct StringTable::Sought {
    const char* text;
    std::size_t length;
    Position position;

    /// The text that a slot names if it is the one sought, else null.
    cstr In(Slot slot) const {
        if (slot >> kAddressBits != position.tag) return nullptr;
        const cstr interned = TextOf(slot);
        if (interned == nullptr || CstrLength(interned) != length) return nullptr;
        return EqualTexts<Form>(interned, text, length) ? interned : nullptr;
    }
};

StringTable::StringTable() : buckets_(static_cast<Bucket*>(std::calloc(kBucketCount, sizeof(Bucket)))) {}

StringTable::~StringTable() {
    std::free(buckets_);
    while (chunks_ != nullptr) {
        BlockChunk* next = chunks_->next;
        std::free(chunks_);
        chunks_ = next;
    }
    while (arenas_ != nullptr) {
        Arena* next = arenas_->next;
        std::free(arenas_);
        arenas_ = next;
    }
}

cstr StringTable::Intern(const char* text, std::size_t length) { return InternAs<AsItIs>(text, length); }

cstr StringTable::InternLowerCase(const char* text, std::size_t length) { return InternAs<InLowerCase>(text, length); }

cstr StringTable::InternPath(const char* path) {
    if (path == nullptr) return nullptr;
    char form[kPathFormRoom];
    return Intern(form, PathForm(path, form));
}

cstr StringTable::Find(const char* text) const {
    if (text == nullptr || buckets_ == nullptr) return nullptr;
    const std::size_t length = std::strlen(text);
    return FindAs(Sought<AsItIs>{text, length, PositionOf<AsItIs>(text, length)});
}

/// In turns, each for all texts: ask for the bucket; for the block behind it; for the text; and only then look.
bool StringTable::Intern(const PendingText* texts, std::uint32_t count) {
    if (buckets_ == nullptr) return false;
    Position positions[kMostPending];
    for (std::uint32_t i = 0; i < count; ++i) {
        const PendingText& text = texts[i];
        positions[i] = text.form == TextForm::kLowerCase ? PositionOf<InLowerCase>(text.text, text.length)
                                                         : PositionOf<AsItIs>(text.text, text.length);
        __builtin_prefetch(&buckets_[positions[i].bucket]);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const Bucket& bucket = buckets_[positions[i].bucket];
        if (bucket.first.load(std::memory_order_relaxed) >> kAddressBits == positions[i].tag) continue;
        __builtin_prefetch(bucket.more.load(std::memory_order_relaxed));
    }
    for (std::uint32_t i = 0; i < count; ++i) __builtin_prefetch(LikelyText(positions[i]));
    for (std::uint32_t i = 0; i < count; ++i) {
        const PendingText& text = texts[i];
        if (text.length > kLongestText) return false;
        *text.result = text.form == TextForm::kLowerCase
                           ? InternAt(Sought<InLowerCase>{text.text, text.length, positions[i]})
                           : InternAt(Sought<AsItIs>{text.text, text.length, positions[i]});
        if (*text.result == nullptr) return false;
        if (text.copy != nullptr) *text.copy = *text.result;
    }
    return true;
}

template <class Form>
StringTable::Position StringTable::PositionOf(const char* text, std::size_t length) {
    const std::uint32_t hash = HashOfText<Form>(text, length);
    const std::uint32_t tag = hash / kBucketCount;
    return {hash - tag * kBucketCount, tag};
}

/// The text at a position that is the one wanted if any in the first slots is; null if none can be.
const char* StringTable::LikelyText(Position position) const {
    const Bucket& bucket = buckets_[position.bucket];
    const Slot first = bucket.first.load(std::memory_order_acquire);
    if (first >> kAddressBits == position.tag) return TextOf(first);
    const SlotBlock* block = bucket.more.load(std::memory_order_acquire);
    if (block == nullptr) return nullptr;
    for (const std::atomic<Slot>& slot : block->slots) {
        const Slot its_text = slot.load(std::memory_order_acquire);
        if (its_text >> kAddressBits == position.tag) return TextOf(its_text);
    }
    return nullptr;
}

template <class Form>
cstr StringTable::InternAs(const char* text, std::size_t length) {
    if (length > kLongestText || buckets_ == nullptr) return nullptr;
    return InternAt(Sought<Form>{text, length, PositionOf<Form>(text, length)});
}

template <class Form>
cstr StringTable::InternAt(const Sought<Form>& sought) {
    if (cstr found = FindAs(sought)) return found;
    return Add(sought);
}

template <class Form>
cstr StringTable::FindAs(const Sought<Form>& sought) const {
    const Bucket& bucket = buckets_[sought.position.bucket];
    if (cstr found = sought.In(bucket.first.load(std::memory_order_acquire))) return found;
    for (const SlotBlock* block = bucket.more.load(std::memory_order_acquire); block != nullptr; block = block->next) {
        for (const std::atomic<Slot>& slot : block->slots) {
            Slot its_text = slot.load(std::memory_order_acquire);
            if (its_text == 0) break;
            if (cstr found = sought.In(its_text)) return found;
        }
    }
    return nullptr;
}

template <class Form>
cstr StringTable::Add(const Sought<Form>& sought) {
    std::lock_guard guard(lock_);
    if (cstr found = FindAs(sought)) return found;
    std::atomic<Slot>* slot = FreeSlot(buckets_[sought.position.bucket]);
    if (slot == nullptr) return nullptr;
    auto length = static_cast<std::uint32_t>(sought.length);
    char* node = TakeBytes(static_cast<std::uint32_t>(sizeof length) + length + 1);
    if (node == nullptr) return nullptr;
    char* text = node + sizeof length;
    std::memcpy(node, &length, sizeof length);
    Form::Copy(text, sought.text, length);
    text[length] = '\0';
    slot->store(Slot{sought.position.tag} << kAddressBits | reinterpret_cast<std::uintptr_t>(text),
                std::memory_order_release);
    return text;
}

/// The bucket's next free slot, in a new block if need be; null without memory. A block that stays empty, because its
/// text then couldn't be had, serves the next one.
std::atomic<StringTable::Slot>* StringTable::FreeSlot(Bucket& bucket) {
    if (bucket.first.load(std::memory_order_relaxed) == 0) return &bucket.first;
    SlotBlock* newest = bucket.more.load(std::memory_order_relaxed);
    if (newest != nullptr) {
        for (std::atomic<Slot>& slot : newest->slots) {
            if (slot.load(std::memory_order_relaxed) == 0) return &slot;
        }
    }
    SlotBlock* block = NewBlock();
    if (block == nullptr) return nullptr;
    block->next = newest;
    bucket.more.store(block, std::memory_order_release);
    return &block->slots[0];
}

StringTable::SlotBlock* StringTable::NewBlock() {
    constexpr auto per_chunk =
        static_cast<std::uint32_t>((kBlockChunkBytes - sizeof(BlockChunk)) / sizeof(SlotBlock) - 1);
    if (chunks_ == nullptr || chunks_->used == per_chunk) {
        auto* chunk = static_cast<BlockChunk*>(std::malloc(kBlockChunkBytes));
        if (chunk == nullptr) return nullptr;
        *chunk = {chunks_, 0};
        chunks_ = chunk;
    }
    auto start = reinterpret_cast<std::uintptr_t>(chunks_ + 1);
    auto* blocks = reinterpret_cast<unsigned char*>(chunks_ + 1) + (-start & (alignof(SlotBlock) - 1));
    return new (blocks + chunks_->used++ * sizeof(SlotBlock)) SlotBlock{};
}

char* StringTable::TakeBytes(std::uint32_t size) {
    if (arenas_ == nullptr || arenas_->capacity - arenas_->used < size) {
        auto* arena = static_cast<Arena*>(std::malloc(sizeof(Arena) + kArenaRoom));
        if (arena == nullptr) return nullptr;
        *arena = {arenas_, kArenaRoom, 0, reinterpret_cast<char*>(arena + 1)};
        // A slot has 48 bits for an address. That is all that programs get, but where the heap marks its addresses at
        // their top; on such a host this allocation has to come from somewhere else.
        if (std::uint64_t{reinterpret_cast<std::uintptr_t>(arena->base + kArenaRoom)} >> kAddressBits != 0) {
            std::free(arena); // GCOVR_EXCL_LINE: nothing that runs the tests is such a host
            return nullptr;   // GCOVR_EXCL_LINE
        }
        arenas_ = arena;
    }
    char* bytes = arenas_->base + arenas_->used;
    arenas_->used += size;
    return bytes;
}

} // namespace Tessarin
