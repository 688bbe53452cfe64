/// The trie of one table's keys, as the binary form stores it.

#ifndef TESSARIN_CONFIGURE_BINARY_TRIE_H
#define TESSARIN_CONFIGURE_BINARY_TRIE_H

#include "memory/list.h"
#include "tessarin/types.h"

#include <cstdint>

namespace Configure {

/// One builder serves table after table: Clear, Add for each entry, Build, and then Nodes.
class TrieBuilder {
public:
    static constexpr std::uint32_t kNoEntry = UINT32_MAX;

    struct Node {
        std::uint32_t word;  // as stored, without value bits
        std::uint32_t entry; // whose key ends here: the number of its Add, from 0 on; kNoEntry if none does
    };

    void Clear() { keys_.Clear(); }

    /// Takes an entry's key. Entries that share one become the last of them, if all of them may.
    /// False if memory runs out. REQUIRES: the key is interned
    [[nodiscard]] bool Add(cstr key, bool may_share);

    /// Makes the nodes. False if an entry shares its key but may not, if there would be more nodes than a file can
    /// hold, or if memory runs out.
    [[nodiscard]] bool Build();

    /// Breadth-first, siblings by ascending byte; the root first.
    [[nodiscard]] Tessarin::List<Node>& Nodes() { return nodes_; }

private:
    // While the keys are sorted, eight bytes at a time, `window` has those from some depth on, as a number.
    struct Key {
        std::uint64_t window;
        cstr text;
        std::uint32_t length;
        std::uint32_t entry;
        std::uint32_t shared; // with the key in front, in bytes
        bool may_share;
    };

    // Neighbours in the list of keys.
    struct Range {
        std::uint32_t first, last;
    };
    // Keys that are alike in their first `depth` bytes, to be sorted by the rest.
    struct Unsorted {
        Range range;
        std::uint32_t depth;
    };

    bool Sort();
    bool SortRange(Range range, std::uint32_t depth);
    bool EndRun(Range run, std::uint32_t depth);
    bool MergeEqualKeys();
    [[nodiscard]] bool HoldsTooManyNodes();
    bool AddNode(Range range, std::uint32_t depth, Tessarin::List<Range>& children);

    Tessarin::List<Key> keys_;
    std::uint32_t key_count_ = 0; // those left when equal ones are merged
    Tessarin::List<Node> nodes_;
    Tessarin::List<Unsorted> unsorted_;
    Tessarin::List<Range> levels_[2];
};

} // namespace Configure

#endif
