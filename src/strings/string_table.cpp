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
// The hash is known to everybody, so texts can be chosen that all have one bucket, and even one hash. A bucket that has
// become long therefore gets a trie instead of further blocks, in which a text's path is its second hash, which nobody
// can choose, as it is keyed with a secret: three bits a level. The slots of the blocks stay as they are, for readers
// that are among them.
//
//     [ first | more ]      first ---> [ slot 0 ... 7 ]      a node, a cache line; a slot is free, a text, or a link:
//                                          |
//                                          v
//     a link     [ 1: the top bit | address of a node, 48 bits ] ---> [ slot 0 ... 7 ]
//
// Invariants:
//
//  1. A slot of a block changes once, from 0 to its text, and never again. So does a bucket's first slot, unless the
//     bucket becomes long: then it changes once more, to the link to the trie, which has all texts of the bucket. A
//     slot of a trie changes from 0 to a text, and from there to a link to a node that leads to that text.
//  2. A block's `next` is set before the block is linked, as is a node's first text. All of these changes are release
//     stores, so a reader that sees a slot, a block or a node also sees everything that it points to.
//  3. Hence a hit takes no lock. A miss takes it and searches again, because another thread may have added the text
//     meanwhile, or moved it into a trie. The search under the lock meets at most some fifty texts, too.
//  4. Equal texts have equal hashes, so they are in one bucket; the second search therefore makes addresses unique.
//
// Lower case is folded while a text is hashed, compared and copied, so no form of a text needs a buffer.

#include "strings/string_table.h"

#include "strings/keyed_hash.h"
#include "strings/normal_forms.h"
#include "strings/string_hash.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>

namespace Tessarin {
namespace {

constexpr unsigned kAddressBits = 48;
constexpr std::uint64_t kLinkBit = std::uint64_t{1} << 63;
constexpr std::size_t kLineBytes = 64;
constexpr std::size_t kLineChunkBytes = OrSmall<std::size_t>(0x10000, 256);

// When a bucket is long: when its first slot and so many blocks are full, or if so many texts have one hash. By chance
// eight of them never have.
constexpr unsigned kMostBlocks = 7;
constexpr unsigned kMostOfOneHash = 8;

// Levels of a trie that one keyed hash of a text serves. Texts that agree in all of them, which a few of ten thousand
// do, are distinguished below by another hash.
constexpr unsigned kLevelsPerHash = 8;

std::uintptr_t AddressIn(std::uint64_t slot) {
    return static_cast<std::uintptr_t>(slot & ((std::uint64_t{1} << kAddressBits) - 1));
}
cstr TextOf(std::uint64_t slot) { return reinterpret_cast<cstr>(AddressIn(slot)); }
bool IsLink(std::uint64_t slot) { return (slot & kLinkBit) != 0; }

/// Memory whose addresses fit in a slot; null if there is none. No program gets higher addresses, except on a host
/// whose heap sets their top bits; there this memory would have to be allocated in another way.
void* AllocateAddressable(std::size_t size) {
    void* memory = std::malloc(size);
    if (std::uint64_t{reinterpret_cast<std::uintptr_t>(memory) + size} >> kAddressBits != 0) {
        std::free(memory); // GCOVR_EXCL_LINE: no host that runs the tests is like that
        return nullptr;    // GCOVR_EXCL_LINE
    }
    return memory;
}

} // namespace

/// A text that is looked up, with its length and hash.
template <TextForm form>
struct StringTable::Lookup {
    const char* text;
    std::size_t length;
    HashParts hash;
    TextKey key;
    std::uint64_t keyed_hash = 0;     // for the levels of one round; most lookups need none
    std::uint32_t round = UINT32_MAX; // which levels: those from kLevelsPerHash * round on

    /// The interned text that a slot leads to if it equals this one, else null. A link never does.
    [[nodiscard]] cstr Match(Slot slot) const {
        if (slot >> kAddressBits != hash.tag) return nullptr;
        const cstr interned = TextOf(slot);
        if (interned == nullptr || CstrLength(interned) != length) return nullptr;
        return EqualTexts<form>(interned, text, length) ? interned : nullptr;
    }

    /// Where the text's path goes on in the node that a link leads to. The root has depth 0.
    [[nodiscard]] std::atomic<Slot>* Follow(Slot link, unsigned depth) {
        if (depth / kLevelsPerHash != round) {
            round = depth / kLevelsPerHash;
            keyed_hash = KeyedHashOfText<form>({key.first, key.second + round}, text, length);
        }
        auto* node = reinterpret_cast<TrieNode*>(AddressIn(link));
        return &node->slots[keyed_hash >> depth % kLevelsPerHash * 3 & 7];
    }
};

StringTable::StringTable(TextKey key)
    : key_(key), buckets_(static_cast<Bucket*>(std::calloc(kBucketCount, sizeof(Bucket)))) {}

StringTable::~StringTable() {
    std::free(buckets_);
    while (chunks_ != nullptr) {
        LineChunk* next = chunks_->next;
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
    Lookup<TextForm::kAsIs> lookup = {text, length, Hash<TextForm::kAsIs>(text, length), key_};
    return FindInBucket(lookup);
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
                           ? FindOrAdd<TextForm::kLowerCase>({text.text, text.length, hashes[i], key_})
                           : FindOrAdd<TextForm::kAsIs>({text.text, text.length, hashes[i], key_});
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
    return FindOrAdd<form>({text, length, Hash<form>(text, length), key_});
}

template <TextForm form>
cstr StringTable::FindOrAdd(Lookup<form> lookup) {
    if (const cstr found = FindInBucket(lookup)) return found;
    return Add(lookup);
}

template <TextForm form>
cstr StringTable::FindInBucket(Lookup<form>& lookup) const {
    const Bucket& bucket = buckets_[lookup.hash.bucket];
    const Slot first = bucket.first.load(std::memory_order_acquire);
    if (const cstr found = lookup.Match(first)) return found;
    if (IsLink(first)) [[unlikely]]
        return FindInTrie(lookup, first);
    for (const SlotBlock* block = bucket.more.load(std::memory_order_acquire); block != nullptr; block = block->next) {
        for (const std::atomic<Slot>& slot : block->slots) {
            const Slot taken = slot.load(std::memory_order_acquire);
            if (taken == 0) break;
            if (const cstr found = lookup.Match(taken)) return found;
        }
    }
    return nullptr;
}

/// A text that isn't where its path ends isn't in the bucket.
template <TextForm form>
[[gnu::noinline]] cstr StringTable::FindInTrie(Lookup<form>& lookup, Slot root) {
    Slot slot = root;
    for (unsigned depth = 0; IsLink(slot); ++depth) {
        slot = lookup.Follow(slot, depth)->load(std::memory_order_acquire);
    }
    return lookup.Match(slot);
}

template <TextForm form>
cstr StringTable::Add(Lookup<form>& lookup) {
    const std::lock_guard guard(lock_);
    if (const cstr found = FindInBucket(lookup)) return found;
    std::atomic<Slot>* slot = FreeSlot(lookup);
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

/// The free slot for a text that isn't there yet, in a new block or node if necessary; null if memory runs out. If
/// memory then runs out for the text, a new block stays empty and is used for the bucket's next text.
template <TextForm form>
std::atomic<StringTable::Slot>* StringTable::FreeSlot(Lookup<form>& lookup) {
    Bucket& bucket = buckets_[lookup.hash.bucket];
    const Slot first = bucket.first.load(std::memory_order_relaxed);
    if (first == 0) return &bucket.first;
    if (IsLink(first)) return FreeSlotInTrie(bucket.first, lookup);
    SlotBlock* newest = bucket.more.load(std::memory_order_relaxed);
    if (newest != nullptr) {
        for (std::atomic<Slot>& slot : newest->slots) {
            if (slot.load(std::memory_order_relaxed) == 0) return &slot;
        }
        if (IsLong(bucket, lookup.hash.tag)) {
            return MakeTrie(bucket) ? FreeSlotInTrie(bucket.first, lookup) : nullptr;
        }
    }
    void* line = NewLine();
    if (line == nullptr) return nullptr;
    auto* block = new (line) SlotBlock{newest, {}};
    bucket.more.store(block, std::memory_order_release);
    return &block->slots[0];
}

/// The free slot at the end of the text's path, below `root`. Texts in the way move down.
template <TextForm form>
std::atomic<StringTable::Slot>* StringTable::FreeSlotInTrie(std::atomic<Slot>& root, Lookup<form>& lookup) {
    std::atomic<Slot>* slot = &root;
    for (unsigned depth = 0; slot->load(std::memory_order_relaxed) != 0; ++depth) {
        if (!IsLink(slot->load(std::memory_order_relaxed)) && !PushDown(*slot, depth)) return nullptr;
        slot = lookup.Follow(slot->load(std::memory_order_relaxed), depth);
    }
    return slot;
}

/// Puts a new node in the place of a text, which moves into it. False if memory runs out.
bool StringTable::PushDown(std::atomic<Slot>& slot, unsigned depth) {
    void* line = NewLine();
    if (line == nullptr) return false;
    const Slot link = kLinkBit | reinterpret_cast<std::uintptr_t>(new (line) TrieNode{});
    const Slot moved = slot.load(std::memory_order_relaxed);
    const cstr text = TextOf(moved);
    Lookup<TextForm::kAsIs> path = {text, CstrLength(text), {}, key_};
    path.Follow(link, depth)->store(moved, std::memory_order_relaxed);
    slot.store(link, std::memory_order_release);
    return true;
}

/// Whether a bucket whose slots are all taken gets no further block. `tag` is that of the text to be added.
bool StringTable::IsLong(const Bucket& bucket, std::uint32_t tag) {
    unsigned blocks = 0, of_one_hash = 0;
    for (const SlotBlock* block = bucket.more.load(std::memory_order_relaxed); block != nullptr; block = block->next) {
        ++blocks;
        for (const std::atomic<Slot>& slot : block->slots) {
            if (slot.load(std::memory_order_relaxed) >> kAddressBits == tag) ++of_one_hash;
        }
    }
    return blocks >= kMostBlocks || of_one_hash + 1 >= kMostOfOneHash;
}

/// Makes the trie of a bucket, with all its texts, and only then shows it to readers. False if memory runs out; the
/// bucket is then unchanged, and the next text tries again.
bool StringTable::MakeTrie(Bucket& bucket) {
    std::atomic<Slot> root{bucket.first.load(std::memory_order_relaxed)};
    for (const SlotBlock* block = bucket.more.load(std::memory_order_relaxed); block != nullptr; block = block->next) {
        for (const std::atomic<Slot>& slot : block->slots) {
            const Slot moved = slot.load(std::memory_order_relaxed);
            const cstr text = TextOf(moved);
            Lookup<TextForm::kAsIs> path = {text, CstrLength(text), {}, key_};
            std::atomic<Slot>* place = FreeSlotInTrie(root, path);
            if (place == nullptr) return false;
            place->store(moved, std::memory_order_relaxed);
        }
    }
    bucket.first.store(root.load(std::memory_order_relaxed), std::memory_order_release);
    return true;
}

/// A cache line for a block or a node; null if memory runs out.
void* StringTable::NewLine() {
    static_assert(sizeof(SlotBlock) == kLineBytes && sizeof(TrieNode) == kLineBytes);
    // One line less than would fit, because aligning the first one takes some bytes.
    constexpr auto kLinesPerChunk = static_cast<std::uint32_t>((kLineChunkBytes - sizeof(LineChunk)) / kLineBytes - 1);
    if (chunks_ == nullptr || chunks_->used == kLinesPerChunk) {
        auto* chunk = static_cast<LineChunk*>(AllocateAddressable(kLineChunkBytes));
        if (chunk == nullptr) return nullptr;
        *chunk = {chunks_, 0};
        chunks_ = chunk;
    }
    const auto start = reinterpret_cast<std::uintptr_t>(chunks_ + 1);
    auto* lines = reinterpret_cast<unsigned char*>(chunks_ + 1) + (-start & (kLineBytes - 1));
    return lines + chunks_->used++ * kLineBytes;
}

char* StringTable::AllocateNode(std::uint32_t size) {
    if (arenas_ == nullptr || arenas_->capacity - arenas_->used < size) {
        const std::uint32_t capacity = std::max(kArenaBytes, size); // only a small arena is too small for a text
        auto* arena = static_cast<Arena*>(AllocateAddressable(sizeof(Arena) + capacity));
        if (arena == nullptr) return nullptr;
        *arena = {arenas_, capacity, 0, reinterpret_cast<char*>(arena + 1)};
        arenas_ = arena;
    }
    char* bytes = arenas_->base + arenas_->used;
    arenas_->used += size;
    return bytes;
}

} // namespace Tessarin
