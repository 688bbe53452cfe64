// The index of the interned strings: a hash table with a fixed number of buckets. Texts are only ever added, so a
// bucket is a list of slots that only grows: its first slot is in the bucket itself, further ones are in blocks of
// seven, each one cache line.
//
//     buckets_      hash % 99991
//       |
//       v
//     [ first | more ]      more ---> [ next | slot 1 ... 7 ] ---> [ next | slot 1 ... 7 ] ---> null
//          |                           the newest block, which      older blocks, full
//          |                           is filled from slot 1 on
//          v
//     a slot      [ tag: hash / 99991, 15 bits | address of a text, 48 bits ]      bit 63 is unused; 0 while it is free
//                                                    |
//                                                    v
//     an arena    ... [ length, 4 bytes | text | NUL ][ length | text | NUL ] ...      1 MiB, bump-allocated
//
// Invariants:
//
//  1. A slot changes once, from 0 to its text, and never again. A block's `next` is set before the block is linked.
//     Both are published by a release store, so a reader that sees a slot or a block also sees everything that it
//     points to.
//  2. Hence a hit takes no lock. A miss takes it and searches again, because another thread may have added the text
//     meanwhile.
//  3. Equal texts have equal hashes, so they are in one bucket; the second search therefore makes addresses unique.
//
// Lower case is folded while a text is hashed, compared and copied, so no form of a text needs a buffer.

#include "strings/string_table.h"

#include "strings/normal_forms.h"
#include "strings/string_hash.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>

namespace Tessarin {
namespace {

constexpr unsigned kAddressBits = 48;
constexpr std::size_t kBlockChunkBytes = OrSmall<std::size_t>(0x10000, 256);

cstr TextOf(std::uint64_t slot) {
    return reinterpret_cast<cstr>(static_cast<std::uintptr_t>(slot & ((std::uint64_t{1} << kAddressBits) - 1)));
}

} // namespace

/// A text that is looked up, with its length and hash.
template <TextForm form>
struct StringTable::Lookup {
    const char* text;
    std::size_t length;
    HashParts hash;

    /// The interned text that a slot leads to if it equals this one, else null.
    cstr Match(Slot slot) const {
        if (slot >> kAddressBits != hash.tag) return nullptr;
        const cstr interned = TextOf(slot);
        if (interned == nullptr || CstrLength(interned) != length) return nullptr;
        return EqualTexts<form>(interned, text, length) ? interned : nullptr;
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

cstr StringTable::Intern(const char* text, std::size_t length) { return InternForm<TextForm::kAsIs>(text, length); }

cstr StringTable::InternLowerCase(const char* text, std::size_t length) {
    return InternForm<TextForm::kLowerCase>(text, length);
}

cstr StringTable::InternPath(const char* path) {
    if (path == nullptr) return nullptr;
    char form[kPathFormRoom];
    return Intern(form, PathForm(path, form));
}

cstr StringTable::Find(const char* text) const {
    if (text == nullptr || buckets_ == nullptr) return nullptr;
    const std::size_t length = std::strlen(text);
    return FindInBucket(Lookup<TextForm::kAsIs>{text, length, Hash<TextForm::kAsIs>(text, length)});
}

/// Makes four passes over all texts. Each of the first three prefetches what the next pass reads: the bucket, its
/// newest block, the text. The fourth looks the texts up.
bool StringTable::Intern(const PendingText* texts, std::uint32_t count) {
    if (buckets_ == nullptr) return false;
    HashParts hashes[kMaxBatch];
    for (std::uint32_t i = 0; i < count; ++i) {
        const PendingText& text = texts[i];
        hashes[i] = text.form == TextForm::kLowerCase ? Hash<TextForm::kLowerCase>(text.text, text.length)
                                                      : Hash<TextForm::kAsIs>(text.text, text.length);
        __builtin_prefetch(&buckets_[hashes[i].bucket]);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        const Bucket& bucket = buckets_[hashes[i].bucket];
        if (bucket.first.load(std::memory_order_relaxed) >> kAddressBits == hashes[i].tag) continue;
        __builtin_prefetch(bucket.more.load(std::memory_order_relaxed));
    }
    for (std::uint32_t i = 0; i < count; ++i) __builtin_prefetch(FirstWithTag(hashes[i]));
    for (std::uint32_t i = 0; i < count; ++i) {
        const PendingText& text = texts[i];
        if (text.length > kMaxTextLength) return false;
        *text.result = text.form == TextForm::kLowerCase
                           ? FindOrAdd(Lookup<TextForm::kLowerCase>{text.text, text.length, hashes[i]})
                           : FindOrAdd(Lookup<TextForm::kAsIs>{text.text, text.length, hashes[i]});
        if (*text.result == nullptr) return false;
        if (text.copy != nullptr) *text.copy = *text.result;
    }
    return true;
}

template <TextForm form>
StringTable::HashParts StringTable::Hash(const char* text, std::size_t length) {
    const std::uint32_t hash = HashOfText<form>(text, length);
    const std::uint32_t tag = hash / kBucketCount;
    return {hash - tag * kBucketCount, tag};
}

/// The first text in the bucket and its newest block whose tag agrees; if the text that is looked up is in them, it is
/// nearly always this one. Null if no tag agrees.
cstr StringTable::FirstWithTag(HashParts hash) const {
    const Bucket& bucket = buckets_[hash.bucket];
    const Slot first = bucket.first.load(std::memory_order_acquire);
    if (first >> kAddressBits == hash.tag) return TextOf(first);
    const SlotBlock* block = bucket.more.load(std::memory_order_acquire);
    if (block == nullptr) return nullptr;
    for (const std::atomic<Slot>& slot : block->slots) {
        const Slot taken = slot.load(std::memory_order_acquire);
        if (taken >> kAddressBits == hash.tag) return TextOf(taken);
    }
    return nullptr;
}

template <TextForm form>
cstr StringTable::InternForm(const char* text, std::size_t length) {
    if (length > kMaxTextLength || buckets_ == nullptr) return nullptr;
    return FindOrAdd(Lookup<form>{text, length, Hash<form>(text, length)});
}

template <TextForm form>
cstr StringTable::FindOrAdd(const Lookup<form>& lookup) {
    if (const cstr found = FindInBucket(lookup)) return found;
    return Add(lookup);
}

template <TextForm form>
cstr StringTable::FindInBucket(const Lookup<form>& lookup) const {
    const Bucket& bucket = buckets_[lookup.hash.bucket];
    if (const cstr found = lookup.Match(bucket.first.load(std::memory_order_acquire))) return found;
    for (const SlotBlock* block = bucket.more.load(std::memory_order_acquire); block != nullptr; block = block->next) {
        for (const std::atomic<Slot>& slot : block->slots) {
            const Slot taken = slot.load(std::memory_order_acquire);
            if (taken == 0) break;
            if (const cstr found = lookup.Match(taken)) return found;
        }
    }
    return nullptr;
}

template <TextForm form>
cstr StringTable::Add(const Lookup<form>& lookup) {
    const std::lock_guard guard(lock_);
    if (const cstr found = FindInBucket(lookup)) return found;
    std::atomic<Slot>* slot = FreeSlot(buckets_[lookup.hash.bucket]);
    if (slot == nullptr) return nullptr;
    const auto length = static_cast<std::uint32_t>(lookup.length);
    char* node = AllocateNode(static_cast<std::uint32_t>(sizeof length) + length + 1);
    if (node == nullptr) return nullptr;
    char* text = node + sizeof length;
    std::memcpy(node, &length, sizeof length);
    CopyText<form>(text, lookup.text, length);
    text[length] = '\0';
    slot->store(Slot{lookup.hash.tag} << kAddressBits | reinterpret_cast<std::uintptr_t>(text),
                std::memory_order_release);
    return text;
}

/// The bucket's next free slot, in a new block if necessary; null if memory runs out. If memory then runs out for the
/// text, the new block stays empty and is used for the bucket's next text.
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
    // One block less than would fit, because aligning the first one takes some bytes.
    constexpr auto kBlocksPerChunk =
        static_cast<std::uint32_t>((kBlockChunkBytes - sizeof(BlockChunk)) / sizeof(SlotBlock) - 1);
    if (chunks_ == nullptr || chunks_->used == kBlocksPerChunk) {
        auto* chunk = static_cast<BlockChunk*>(std::malloc(kBlockChunkBytes));
        if (chunk == nullptr) return nullptr;
        *chunk = {chunks_, 0};
        chunks_ = chunk;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(chunks_ + 1);
    auto* blocks = reinterpret_cast<unsigned char*>(chunks_ + 1) + (-start & (alignof(SlotBlock) - 1));
    return new (blocks + chunks_->used++ * sizeof(SlotBlock)) SlotBlock{};
}

char* StringTable::AllocateNode(std::uint32_t size) {
    if (arenas_ == nullptr || arenas_->capacity - arenas_->used < size) {
        const std::uint32_t capacity = std::max(kArenaBytes, size); // only a small arena is too small for a text
        auto* arena = static_cast<Arena*>(std::malloc(sizeof(Arena) + capacity));
        if (arena == nullptr) return nullptr;
        *arena = {arenas_, capacity, 0, reinterpret_cast<char*>(arena + 1)};
        // A slot has 48 bits for an address. No program gets higher addresses, except on a host whose heap sets their
        // top bits; there this memory would have to be allocated in another way.
        if (std::uint64_t{reinterpret_cast<std::uintptr_t>(arena->base + capacity)} >> kAddressBits != 0) {
            std::free(arena); // GCOVR_EXCL_LINE: no host that runs the tests is like that
            return nullptr;   // GCOVR_EXCL_LINE
        }
        arenas_ = arena;
    }
    char* bytes = arenas_->base + arenas_->used;
    arenas_->used += size;
    return bytes;
}

} // namespace Tessarin
