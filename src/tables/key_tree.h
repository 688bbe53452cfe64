// The keys of a large table in the order of their addresses: a B+ tree. All that it is for is the neighbour of a key:
// the key before a new one, or before one that goes.
//
//                        +----------------------+
//                        |    | 40 |    | 70 |  |         a branch: the first key of each child but the first,
//                        +--|-----|-------|-----+         which has no bound
//                  ,--------'     |       '--------.
//           +------------+ +------------+ +------------+
//           | 10  20  30 | | 40  50     | | 70  80  90 |  leaves: the keys
//           +------------+ +------------+ +------------+
//
// Invariants:
//  1. All leaves are equally deep. A tree without keys has no node, and a node is never empty.
//  2. Every key of a child is at or above the child's bound and below the next one's. A bound may outlive its key.
//  3. Two neighbours hold more keys together than kMergedKeys, unless both were larger than kFewKeys when last touched;
//     so a tree that has lost most of its keys has lost most of its nodes.
//
// A node of 63 keys is searched in six steps, moved in a few cache lines, and split at most once in 16 insertions.

#ifndef TESSARIN_TABLES_KEY_TREE_H
#define TESSARIN_TABLES_KEY_TREE_H

#include "tessarin/types.h"

#include <cstddef>
#include <cstdint>

namespace Tessarin {

/// No operation takes more than a multiple of the tree's height, whatever came before. The owner copies a tree byte by
/// byte when it moves, and calls Clear at the end.
class KeyTree {
public:
    [[nodiscard]] bool Empty() const { return root_ == nullptr; }

    /// Adds a key.
    /// before   takes the greatest key below it, null if there is none
    /// returns  false if memory ran out, the keys unchanged
    /// REQUIRES: the key isn't there
    bool Insert(cstr text, cstr& before);

    /// Removes a key. Returns the greatest key below it, null if there is none. REQUIRES: the key is there
    cstr Erase(cstr text);

    /// Removes all keys and frees all nodes.
    void Clear();

    /// Whether the invariants hold and there are that many keys: for tests.
    [[nodiscard]] bool IsValid(std::size_t keys) const;

private:
    using Key = std::uintptr_t; // an address, so that it can be compared with those of other objects

    static constexpr std::uint32_t kMostKeys = 63; // a leaf has 512 bytes, where pointers have eight
    static constexpr std::uint32_t kFewKeys = kMostKeys / 4;
    static constexpr std::uint32_t kMergedKeys = kMostKeys * 3 / 4;

    struct Node;
    struct Branch;
    struct Subtree; // a node and the branches below it
    struct Bounds;

    static std::uint32_t CountBelow(const Key* keys, std::uint32_t count, Key key);
    static std::uint32_t ChildFor(const Branch& branch, Key key);
    static Node* LastLeaf(Subtree subtree);
    static Key KeyBefore(const Node& leaf, std::uint32_t place, Subtree left);
    static Node* MakeNode(std::uint32_t level);
    static void FreeNode(Node* node, std::uint32_t level);
    static bool Split(Branch& parent, std::uint32_t child, std::uint32_t level, std::uint32_t place, Key key);
    static void Erase(Subtree subtree, Key key, Subtree left, Key& before);
    static void Tidy(Branch& parent, std::uint32_t child, std::uint32_t level);
    static void Merge(Branch& parent, std::uint32_t child, std::uint32_t level);
    static void DropChild(Branch& parent, std::uint32_t child);
    static void FreeAll(Subtree subtree);
    static bool IsValid(Subtree subtree, Bounds bounds, std::size_t& keys);

    [[nodiscard]] std::uint32_t SplitPlace(const Node& node, std::uint32_t level, Key key) const;
    bool SplitRoot(Key key);
    bool InsertFirst(Key key, cstr& before);
    bool Append(Key key, cstr& before);

    Node* root_ = nullptr;
    Node* last_ = nullptr; // the leaf of the greatest keys
    std::uint32_t height_ = 0;
};

} // namespace Tessarin

#endif
