// No tree is built. With the keys sorted, a trie's node is a range of them and a depth: the keys that begin with the
// bytes that lead to the node. Its children are the range's parts by the byte at that depth.
//
// The sort compares eight bytes of each key as one number, kept with the key, and then sorts each run of equal ones by
// the next eight. So a text is read once from front to back, and no byte is compared twice. Where two neighbours part
// is seen on the way: `shared` says it, and then ranges are parted without a look at the texts. Cost: the bytes of all
// keys, and for n keys n log n comparisons of numbers for each eight bytes that they have in common.

#include "configure/binary/trie.h"

#include "configure/binary/format.h"
#include "strings/string_table.h"

#include <algorithm>
#include <bit>

namespace Configure {
namespace {

constexpr std::uint32_t kWindowBytes = 8;

/// The eight bytes from `text` on as a number that sorts as they do, with zeros behind the last of `count`.
std::uint64_t WindowOf(const char* text, std::uint32_t count) {
    std::uint64_t window = 0;
    for (std::uint32_t i = 0; i < std::min(count, kWindowBytes); ++i) {
        window |= std::uint64_t{static_cast<unsigned char>(text[i])} << (56 - 8 * i);
    }
    return window;
}

/// Whether the text ends in the window: a text has no zeros of its own.
bool EndsInside(std::uint64_t window) { return (window & 0xFF) == 0; }

} // namespace

bool TrieBuilder::Add(cstr key, bool may_share) {
    return keys_.Push({0, key, Tessarin::CstrLength(key), keys_.Count(), 0, may_share});
}

/// One level of the trie after the other. The ranges of a level don't overlap, so a level is no longer than the keys.
bool TrieBuilder::Build() {
    nodes_.Clear();
    if (!Sort() || !MergeEqualKeys() || HoldsTooManyNodes()) return false;
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

/// By bytes as unsigned numbers, equal keys in the order in which they came.
bool TrieBuilder::Sort() {
    unsorted_.Clear();
    if (keys_.IsEmpty()) return true;
    if (!SortRange({0, keys_.Count()}, 0)) return false;
    while (!unsorted_.IsEmpty()) {
        const Unsorted next = unsorted_.Pop();
        if (!SortRange(next.range, next.depth)) return false;
    }
    return true;
}

/// What the range's first key shares with the one in front is known already, whichever key will be the first.
bool TrieBuilder::SortRange(Range range, std::uint32_t depth) {
    Key* const keys = keys_.begin();
    const std::uint32_t shared = keys[range.first].shared;
    for (Key* key = keys + range.first; key != keys + range.last; ++key) {
        key->window = WindowOf(key->text + depth, key->length - depth);
    }
    std::sort(keys + range.first, keys + range.last, [](const Key& left, const Key& right) {
        return left.window != right.window ? left.window < right.window : left.entry < right.entry;
    });
    keys[range.first].shared = shared;
    std::uint32_t run = range.first;
    for (std::uint32_t index = range.first + 1; index < range.last; ++index) {
        const std::uint64_t difference = keys[index].window ^ keys[index - 1].window;
        if (difference == 0) continue;
        keys[index].shared = depth + static_cast<std::uint32_t>(std::countl_zero(difference)) / 8;
        if (!EndRun({run, index}, depth)) return false;
        run = index;
    }
    return EndRun({run, range.last}, depth);
}

/// What to do about keys with one window.
bool TrieBuilder::EndRun(Range run, std::uint32_t depth) {
    if (run.last - run.first < 2 || EndsInside(keys_[run.first].window)) return true;
    return unsorted_.Push({run, depth + kWindowBytes});
}

/// Equal keys are neighbours, and have one address.
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

/// Each key adds the nodes of the bytes that it doesn't share. Asked first, as some long keys make more nodes than
/// there is memory for.
bool TrieBuilder::HoldsTooManyNodes() {
    std::uint64_t count = 1;
    for (std::uint32_t index = 0; index < key_count_; ++index) count += keys_[index].length - keys_[index].shared;
    return count > kMostFileBytes / kWordSize;
}

/// Of a range's keys only the first can end at the node. Its children go to the next level.
bool TrieBuilder::AddNode(Range range, std::uint32_t depth, Tessarin::List<Range>& children) {
    const Key* const keys = keys_.begin();
    std::uint32_t first = range.first;
    Node node = {kRootBit, kNoEntry};
    if (depth != 0) node.word = WordOfKeyByte(static_cast<unsigned char>(keys[first].text[depth - 1]));
    if (first != range.last && keys[first].length == depth) {
        node.word |= kTerminalBit;
        node.entry = keys[first++].entry;
    }
    while (first != range.last) {
        std::uint32_t last = first + 1;
        while (last != range.last && keys[last].shared > depth) ++last;
        if (!children.Push({first, last})) return false;
        ++node.word; // at most 255 times: no key has the byte 0
        first = last;
    }
    return nodes_.Push(node);
}

} // namespace Configure
