/// The process-wide table of interned strings.

#ifndef TESSARIN_STRINGS_STRING_TABLE_H
#define TESSARIN_STRINGS_STRING_TABLE_H

#include "memory/until_unload.h"
#include "platform/spin_lock.h"
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

/// Which normal form of a text is interned.
enum class TextForm { kAsIs, kLowerCase };

/// A text that is interned together with others.
struct PendingText {
    const char* text; // without a NUL among its bytes
    std::uint32_t length;
    TextForm form;
    cstr* result; // where its cstr goes
    cstr* copy;   // where it goes as well, or null
};

/// Safe from any thread. The texts live until the table is destroyed.
class StringTable {
public:
    static constexpr std::uint32_t kBucketCount = 99991;
    static constexpr std::uint32_t kArenaRoom = 0x100000;
    static constexpr std::size_t kLongestText = kArenaRoom - 9;

    StringTable();
    ~StringTable();
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;

    // All of these answer null for a null or overlong text, and when memory runs out.
    cstr Intern(const char* text) { return text == nullptr ? nullptr : Intern(text, std::strlen(text)); }
    /// REQUIRES, here and below: no NUL among the bytes
    cstr Intern(const char* text, std::size_t length);
    cstr InternLowerCase(const char* text) {
        return text == nullptr ? nullptr : InternLowerCase(text, std::strlen(text));
    }
    cstr InternLowerCase(const char* text, std::size_t length);
    cstr InternPath(const char* path);

    /// Interns several texts, whose waits for memory overlap: a text that isn't in the processor's cache is most of
    /// what interning it costs. False if one of them can't be interned; some places are then without.
    bool Intern(const PendingText* texts, std::uint32_t count);
    static constexpr std::uint32_t kMostPending = 32;

    /// The text if it is interned already, else null.
    cstr Find(const char* text) const;

private:
    // One interned text as the index names it: the address in the low 48 bits, above it what the hash holds beyond the
    // bucket's number. A text is followed only where that part agrees, so a walk stays within the index.
    using Slot = std::uint64_t;

    // A line of the processor's cache full of slots, taken from the first on; 0 is free.
    struct alignas(64) SlotBlock {
        SlotBlock* next;
        std::atomic<Slot> slots[7];
    };

    struct Bucket {
        std::atomic<Slot> first;
        std::atomic<SlotBlock*> more;
    };

    // Memory for the texts, the current arena first. A node is the text's length, the text and its NUL; nodes lie back
    // to back, at any address.
    struct Arena {
        Arena* next;
        std::uint32_t capacity;
        std::uint32_t used;
        char* base;
    };

    // Memory for slot blocks, cut from its aligned start on.
    struct BlockChunk {
        BlockChunk* next;
        std::uint32_t used;
    };

    // Where a text belongs, by its hash.
    struct Position {
        std::uint32_t bucket;
        std::uint32_t tag; // 15 bits: the hash is below 2^31
    };

    template <class Form>
    struct Sought;

    template <class Form>
    static Position PositionOf(const char* text, std::size_t length);

    template <class Form>
    cstr InternAs(const char* text, std::size_t length);
    template <class Form>
    cstr InternAt(const Sought<Form>& sought);
    [[nodiscard]] const char* LikelyText(Position position) const;
    template <class Form>
    cstr FindAs(const Sought<Form>& sought) const;
    template <class Form>
    cstr Add(const Sought<Form>& sought);

    std::atomic<Slot>* FreeSlot(Bucket& bucket);
    SlotBlock* NewBlock();
    char* TakeBytes(std::uint32_t size);

    Bucket* buckets_; // null if memory ran out at the start: every answer is then null
    Arena* arenas_ = nullptr;
    BlockChunk* chunks_ = nullptr;
    SpinLock lock_; // guards all that adds
};

/// The strings of the process.
extern UntilUnload<StringTable> string_table;

} // namespace Tessarin

#endif
