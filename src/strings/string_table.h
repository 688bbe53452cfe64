// The process-wide table of interned strings: each distinct text has one address, so keys are compared as pointers.
// string_table.cpp describes the index, with a picture.

#ifndef TESSARIN_STRINGS_STRING_TABLE_H
#define TESSARIN_STRINGS_STRING_TABLE_H

#include "memory/sizes.h"
#include "memory/until_unload.h"
#include "platform/process_secret.h"
#include "platform/spin_lock.h"
#include "strings/normal_forms.h"
#include "tessarin/types.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tessarin {

/// The length of an interned text in bytes, read from the word in front of it.
inline std::uint32_t CstrLength(cstr text) {
    std::uint32_t length;
    std::memcpy(&length, text - sizeof length, sizeof length);
    return length;
}

/// A text that is to be interned together with others.
struct PendingText {
    const char* text; // without a NUL among its bytes
    std::uint32_t length;
    TextForm form;
    cstr* result; // receives its cstr
    cstr* copy;   // receives it as well; may be null
};

/// Safe from any thread. The texts live until the table is destroyed.
class StringTable {
public:
    static constexpr std::uint32_t kBucketCount = 99991;
    static constexpr std::uint32_t kArenaBytes = OrSmall(0x100000U, 64U);
    static constexpr std::size_t kMaxTextLength = 0x100000 - 9;

    /// key      of the hash for long buckets
    explicit StringTable(TextKey key = process_secret.text_key);
    ~StringTable();
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;

    // All of these return null for a null or overlong text, and when memory runs out.
    cstr Intern(const char* text) { return text == nullptr ? nullptr : Intern(text, std::strlen(text)); }
    /// REQUIRES, here and below: no NUL among the bytes
    cstr Intern(const char* text, std::size_t length);
    cstr InternLowerCase(const char* text) {
        return text == nullptr ? nullptr : InternLowerCase(text, std::strlen(text));
    }
    cstr InternLowerCase(const char* text, std::size_t length);
    cstr InternPath(const char* path);

    /// Interns several texts so that their cache misses overlap: most of the time of interning a text is spent fetching
    /// it into the processor's cache. False if one of them can't be interned; some results are then unset.
    /// REQUIRES: count <= kMaxBatch
    bool Intern(const PendingText* texts, std::uint32_t count);
    static constexpr std::uint32_t kMaxBatch = OrSmall(32U, 2U);

    /// The text if it is interned already, else null.
    cstr Find(const char* text) const;

private:
    // One interned text in the index: the text's address in the low 48 bits, above it the hash's tag. A text is read
    // only if the tag agrees, so a search mostly stays within the index. In a long bucket a slot may be a link instead:
    // the address of a trie node below the top bit.
    using Slot = std::uint64_t;

    // One cache line of slots, used from the first on; 0 means free.
    struct alignas(64) SlotBlock {
        SlotBlock* next;
        std::atomic<Slot> slots[7];
    };

    // A node of a long bucket's trie, one cache line.
    struct alignas(64) TrieNode {
        std::atomic<Slot> slots[8];
    };

    struct Bucket {
        std::atomic<Slot> first; // a text; or, in a long bucket, the link to the root of its trie
        std::atomic<SlotBlock*> more;
    };

    // Memory for the texts: a bump allocator, the current arena first in its list. A node is the text's length, the
    // text and its NUL; nodes lie back to back, unaligned.
    struct Arena {
        Arena* next;
        std::uint32_t capacity;
        std::uint32_t used;
        char* base;
    };

    // Memory for slot blocks and trie nodes, which are allocated one after the other from its first aligned address on.
    struct LineChunk {
        LineChunk* next;
        std::uint32_t used;
    };

    // A text's hash divided by the number of buckets: the remainder and the quotient.
    struct HashParts {
        std::uint32_t bucket;
        std::uint32_t tag; // 15 bits: the hash is below 2^31
    };

    template <TextForm form>
    struct Lookup;

    template <TextForm form>
    static HashParts Hash(const char* text, std::size_t length);

    template <TextForm form>
    cstr InternForm(const char* text, std::size_t length);
    template <TextForm form>
    cstr FindOrAdd(Lookup<form> lookup);
    template <TextForm form>
    cstr FindInBucket(Lookup<form>& lookup) const;
    template <TextForm form>
    static cstr FindInTrie(Lookup<form>& lookup, Slot root);
    template <TextForm form>
    cstr Add(Lookup<form>& lookup);
    [[nodiscard]] cstr FirstWithTag(HashParts hash) const;

    template <TextForm form>
    std::atomic<Slot>* FreeSlot(Lookup<form>& lookup);
    template <TextForm form>
    std::atomic<Slot>* FreeSlotInTrie(std::atomic<Slot>& root, Lookup<form>& lookup);
    bool PushDown(std::atomic<Slot>& slot, unsigned depth);
    static bool IsLong(const Bucket& bucket, std::uint32_t tag);
    bool MakeTrie(Bucket& bucket);
    void* NewLine();
    char* AllocateNode(std::uint32_t size);

    TextKey key_;
    Bucket* buckets_; // null if memory ran out at the start: every function then returns null
    Arena* arenas_ = nullptr;
    LineChunk* chunks_ = nullptr;
    SpinLock lock_; // held while a text is added; lookups don't take it
};

/// The strings of the process.
extern UntilUnload<StringTable> string_table;

} // namespace Tessarin

#endif
