// The trie of one table's keys, in the order in which the binary form stores its nodes. How it is built without a tree,
// with a picture: trie.cpp.

#ifndef TESSARIN_CONFIGURE_BINARY_TRIE_H
#define TESSARIN_CONFIGURE_BINARY_TRIE_H

#include "memory/list.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

/// One builder is used for table after table: Clear, Add for each entry, Build, and then Nodes.
class TrieBuilder {
public:
    static constexpr std::uint32_t kNoEntry = UINT32_MAX;

    struct Node {
        std::uint32_t word;  // as stored, without value bits
        std::uint32_t entry; // whose key ends here: the number of its Add, from 0; kNoEntry if no key ends here
    };

    void Clear() { keys_.Clear(); }

    /// Adds an entry's key. Of entries that share a key the last is kept; all of them must be allowed to share it.
    /// False if memory runs out. REQUIRES: the key is interned
    [[nodiscard]] bool Add(cstr key, bool may_share);

    /// Makes the nodes. False if an entry shares its key without `may_share`, if there would be more nodes than a file
    /// can hold, or if memory runs out.
    [[nodiscard]] bool Build();

    /// The nodes: breadth-first, siblings by ascending byte; the root first.
    [[nodiscard]] Tessarin::List<Node>& Nodes() { return nodes_; }

private:
    struct Key {
        std::uint64_t window; // while keys are sorted: eight bytes from the current depth on, as a number
        cstr text;
        std::uint32_t length;
        std::uint32_t entry;
        std::uint32_t common_prefix; // with the key before it, in bytes; 0 for the first key
        bool may_share;
    };

    // Keys from `first` up to, but not including, `last`.
    struct Range {
        std::uint32_t first, last;
    };
    // Keys with the same first `depth` bytes, still to be sorted by the other bytes.
    struct UnsortedRange {
        Range range;
        std::uint32_t depth;
    };

    bool Sort();
    bool SortRange(Range range, std::uint32_t depth);
    bool DeferEqualWindows(Range equal, std::uint32_t depth);
    bool MergeEqualKeys();
    [[nodiscard]] bool ExceedsNodeLimit();
    bool AddNode(Range range, std::uint32_t depth, Tessarin::List<Range>& children);

    Tessarin::List<Key> keys_;
    std::uint32_t key_count_ = 0; // distinct keys; they are the first of keys_ once equal keys are merged
    Tessarin::List<Node> nodes_;
    Tessarin::List<UnsortedRange> unsorted_;
    Tessarin::List<Range> levels_[2]; // the ranges of the current depth and of the next one; the two lists alternate
};

} // namespace Configure

#endif
