// Makes the trie of a table's keys without building a tree. In the sorted list of keys, a node of the trie is a range
// and a depth: the keys that begin with the `depth` bytes on the path to the node. Its children are the parts of the
// range that agree in the next byte. Taking the ranges depth by depth yields the nodes breadth-first.
//
//     sorted keys          0 "a"    1 "ab"   2 "ad"   3 "c"
//
//     depth 0, ranges    [ 0        1        2        3   )     the root; its children have the bytes a and c
//     depth 1, ranges    [ 0        1        2   )  [ 3   )     a, where "a" ends, with two children; c, a leaf
//     depth 2, ranges             [ 1   )  [ 2   )              b and d, where "ab" and "ad" end
//
//     nodes              root, a, c, b, d
//
// Invariants:
//
//  1. Only the first key of a range can end at the node, as it is the shortest one: equal keys have been merged before.
//  2. The ranges of a depth don't overlap, so there are at most as many of them as keys.
//  3. `common_prefix` of a key is known as soon as the key is in its final place, so ranges are split without reading
//     the texts again.
//
// The sort is a radix sort by windows: it compares eight bytes of each key as one number, kept with the key, and then
// sorts each group of keys with equal windows by the next eight. So a text is read once from front to back, and no byte
// is compared twice. Cost: the bytes of all keys, and for n keys n log n comparisons of numbers for each eight bytes
// that they have in common.

#include "configure/binary/trie.h"

#include "configure/binary/format.h"
#include "strings/string_table.h"

#include <algorithm>
#include <bit>

namespace Configure {
namespace {

constexpr std::uint32_t kWindowBytes = 8;

/// The eight bytes from `text` on as a number that sorts as they do. If there are only `count` bytes, zeros follow
/// them.
std::uint64_t WindowOf(const char* text, std::uint32_t count) {
    std::uint64_t window = 0;
    for (std::uint32_t i = 0; i < std::min(count, kWindowBytes); ++i) {
        window |= std::uint64_t{static_cast<unsigned char>(text[i])} << (56 - 8 * i);
    }
    return window;
}

/// Whether the text ends in the window: texts contain no zeros.
bool EndsInside(std::uint64_t window) { return (window & 0xFF) == 0; }

} // namespace

bool TrieBuilder::Add(cstr key, bool may_share) {
    return keys_.Push({0, key, Tessarin::CstrLength(key), keys_.Count(), 0, may_share});
}

/// Makes the nodes depth by depth.
bool TrieBuilder::Build() {
    nodes_.Clear();
    if (!Sort() || !MergeEqualKeys() || ExceedsNodeLimit()) return false;
    levels_[0].Clear();
    if (!levels_[0].Push({0, key_count_})) return false;
    for (std::uint32_t depth = 0; !levels_[depth % 2].IsEmpty(); ++depth) {
        Tessarin::List<Range>& children = levels_[(depth + 1) % 2];
        children.Clear();
        for (const Range range : levels_[depth % 2]) {
            if (!AddNode(range, depth, children)) return false;
        }
    }
    return true;
}

/// Sorts the keys by their bytes as unsigned numbers, equal keys by their entries.
bool TrieBuilder::Sort() {
    unsorted_.Clear();
    if (keys_.IsEmpty()) return true;
    if (!SortRange({0, keys_.Count()}, 0)) return false;
    while (!unsorted_.IsEmpty()) {
        const UnsortedRange next = unsorted_.Pop();
        if (!SortRange(next.range, next.depth)) return false;
    }
    return true;
}

/// Sorts keys with the same first `depth` bytes by the next eight. The common prefix of the range's first key with the
/// key before it is known already; it stays the same whichever key of the range becomes the first.
bool TrieBuilder::SortRange(Range range, std::uint32_t depth) {
    Key* keys = keys_.begin();
    const std::uint32_t first_common_prefix = keys[range.first].common_prefix;
    for (Key* key = keys + range.first; key != keys + range.last; ++key) {
        key->window = WindowOf(key->text + depth, key->length - depth);
    }
    std::sort(keys + range.first, keys + range.last, [](const Key& left, const Key& right) {
        return left.window != right.window ? left.window < right.window : left.entry < right.entry;
    });
    keys[range.first].common_prefix = first_common_prefix;
    std::uint32_t equal_from = range.first;
    for (std::uint32_t index = range.first + 1; index < range.last; ++index) {
        const std::uint64_t difference = keys[index].window ^ keys[index - 1].window;
        if (difference == 0) continue;
        keys[index].common_prefix = depth + static_cast<std::uint32_t>(std::countl_zero(difference)) / 8;
        if (!DeferEqualWindows({equal_from, index}, depth)) return false;
        equal_from = index;
    }
    return DeferEqualWindows({equal_from, range.last}, depth);
}

/// Notes a range of keys with equal windows, to be sorted by the bytes after the window, unless the keys end in it.
bool TrieBuilder::DeferEqualWindows(Range equal, std::uint32_t depth) {
    if (equal.last - equal.first < 2 || EndsInside(keys_[equal.first].window)) return true;
    return unsorted_.Push({equal, depth + kWindowBytes});
}

/// Of entries with equal keys, keeps the one added last. Equal keys are neighbours and have the same address.
bool TrieBuilder::MergeEqualKeys() {
    key_count_ = 0;
    for (const Key& key : keys_) {
        if (key_count_ == 0 || keys_[key_count_ - 1].text != key.text) {
            keys_[key_count_++] = key;
            continue;
        }
        Key& same = keys_[key_count_ - 1];
        if (!same.may_share || !key.may_share) return false;
        same.entry = key.entry;
    }
    return true;
}

/// Each key adds one node per byte after its common prefix with the key before it. This is checked before nodes are
/// made, as a few long keys can make more nodes than there is memory for.
bool TrieBuilder::ExceedsNodeLimit() {
    std::uint64_t count = 1;
    for (std::uint32_t index = 0; index < key_count_; ++index)
        count += keys_[index].length - keys_[index].common_prefix;
    return count > kMostFileBytes / kWordSize;
}

/// Appends the node of a range to the nodes, and its children's ranges to `children`.
bool TrieBuilder::AddNode(Range range, std::uint32_t depth, Tessarin::List<Range>& children) {
    const Key* keys = keys_.begin();
    std::uint32_t first = range.first;
    Node node = {kRootBit, kNoEntry};
    if (depth != 0) node.word = WordOfKeyByte(static_cast<unsigned char>(keys[first].text[depth - 1]));
    if (first != range.last && keys[first].length == depth) {
        node.word |= kTerminalBit;
        node.entry = keys[first++].entry;
    }
    while (first != range.last) {
        std::uint32_t last = first + 1;
        while (last != range.last && keys[last].common_prefix > depth) ++last;
        if (!children.Push({first, last})) return false;
        ++node.word; // at most 255 times: no key has the byte 0
        first = last;
    }
    return nodes_.Push(node);
}

} // namespace Configure
