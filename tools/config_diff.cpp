// The comparison pairs the children of two containers, those of tables by sorted key and those of arrays by position.
// If both sides of a pair are containers of one kind, it descends into them. A file may come from anybody, so the
// comparison doesn't recurse, and except for sorting it takes as many steps as both trees have entries.
//
//     levels_[0]  pairs of the roots' children       next is one past the pair
//     levels_[1]  pairs of that pair's children      that is being compared; those
//     ...                                            pairs' names are the path

#include "tools/config_diff.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Command {

namespace {

using Configure::IIterator;

// The entries of both trees under one key or at one position; null for a tree that has no entry there.
struct Pair {
    std::string name;
    IIterator* before;
    IIterator* after;
};

struct KeyedEntry {
    std::string_view key;
    IIterator* entry;
};

// Entries that share a key keep their order.
std::vector<KeyedEntry> SortedEntries(const Node& table) {
    std::vector<KeyedEntry> entries;
    for (Children children(table); !children.IsEmpty();) {
        IIterator* const entry = children.Take();
        entries.push_back({entry->GetKey(), entry});
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const KeyedEntry& a, const KeyedEntry& b) { return a.key < b.key; });
    return entries;
}

std::vector<Pair> PairTables(const Node& first, const Node& second) {
    const std::vector<KeyedEntry> before = SortedEntries(first);
    const std::vector<KeyedEntry> after = SortedEntries(second);
    std::vector<Pair> pairs;
    for (auto left = before.begin(), right = after.begin(); left != before.end() || right != after.end();) {
        const bool has_left = right == after.end() || (left != before.end() && left->key <= right->key);
        const bool has_right = left == before.end() || (right != after.end() && right->key <= left->key);
        std::string name = QuoteKey(has_left ? left->key : right->key);
        IIterator* const entry = has_left ? (left++)->entry : nullptr;
        pairs.push_back({std::move(name), entry, has_right ? (right++)->entry : nullptr});
    }
    return pairs;
}

std::vector<Pair> PairArrays(const Node& first, const Node& second) {
    Children before(first);
    Children after(second);
    std::vector<Pair> pairs;
    while (!before.IsEmpty() || !after.IsEmpty()) {
        IIterator* const entry = before.IsEmpty() ? nullptr : before.Take();
        pairs.push_back({std::to_string(pairs.size()), entry, after.IsEmpty() ? nullptr : after.Take()});
    }
    return pairs;
}

class Comparison {
public:
    explicit Comparison(const DifferenceReporter& report) : report_(report) {}

    void Run(const Node& before, const Node& after) {
        GoDown(before, after);
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next == level.pairs.size()) {
                levels_.pop_back();
            } else {
                ComparePair(level.pairs[level.next++]);
            }
        }
    }

private:
    struct Level {
        std::vector<Pair> pairs;
        std::size_t next;
    };

    void GoDown(const Node& before, const Node& after) {
        levels_.push_back({before.table ? PairTables(before, after) : PairArrays(before, after), 0});
    }

    void ComparePair(const Pair& pair) {
        const Node before = pair.before ? NodeOf(pair.before) : Node{};
        const Node after = pair.after ? NodeOf(pair.after) : Node{};
        if (pair.before && pair.after && KindOf(before) == KindOf(after)) {
            if (KindOf(before) != 0) return GoDown(before, after);
            if (TextOf(before) == TextOf(after)) return;
        }
        Report(pair);
    }

    static int KindOf(const Node& node) { return node.table ? 2 : node.array ? 1 : 0; }
    static std::string_view TextOf(const Node& node) { return node.text ? node.text : ""; }

    void Report(const Pair& pair) {
        Row rows[2];
        if (pair.before) FillRow(NodeOf(pair.before), rows[0]);
        if (pair.after) FillRow(NodeOf(pair.after), rows[1]);
        std::string path;
        for (const Level& level : levels_) (path += path.empty() ? "" : "/") += level.pairs[level.next - 1].name;
        report_({path, pair.before ? &rows[0] : nullptr, pair.after ? &rows[1] : nullptr});
    }

    const DifferenceReporter& report_;
    std::vector<Level> levels_;
};

} // namespace

void CompareTrees(const Node& before, const Node& after, const DifferenceReporter& report) {
    Comparison(report).Run(before, after);
}

} // namespace Command
