// Insertion goes down once: it splits each full node that it meets, so there is always room for one more child above.
// Keys often arrive in runs, so a node that is split where a run goes on keeps most of its keys on the side that the
// run has left; at the very end, all of them. Removal goes down once and tidies on its way back.

#include "tables/key_tree.h"

#include <algorithm>
#include <new>

namespace Tessarin {

struct KeyTree::Node {
    std::uint32_t count = 0;
    Key keys[kMostKeys]; // of a branch: the bounds of its children; the first has no meaning
};

struct KeyTree::Branch : Node {
    Node* children[kMostKeys];
};

struct KeyTree::Subtree {
    Node* node;
    std::uint32_t level; // 0 for a leaf

    [[nodiscard]] Branch& AsBranch() const { return static_cast<Branch&>(*node); }
    [[nodiscard]] Subtree Child(std::uint32_t i) const { return {AsBranch().children[i], level - 1}; }
};

/// The least key that may be in a subtree, and the least one that may not.
struct KeyTree::Bounds {
    Key from, to;
};

namespace {

std::uintptr_t AddressOf(cstr key) { return reinterpret_cast<std::uintptr_t>(key); }
cstr KeyAt(std::uintptr_t address) { return reinterpret_cast<cstr>(address); }

template <class T>
void InsertAt(T* items, std::uint32_t count, std::uint32_t place, T item) {
    std::copy_backward(items + place, items + count, items + count + 1);
    items[place] = item;
}

template <class T>
void EraseAt(T* items, std::uint32_t count, std::uint32_t place) {
    std::copy(items + place + 1, items + count, items + place);
}

} // namespace

/// How many of the ascending keys are below one. The steps depend on the count alone: the processor would guess half of
/// the comparisons wrong, so none of them decides a jump.
std::uint32_t KeyTree::CountBelow(const Key* keys, std::uint32_t count, Key key) {
    std::uint32_t from = 0;
    for (std::uint32_t rest = count; rest > 1;) {
        const std::uint32_t half = rest / 2;
        from += half * static_cast<std::uint32_t>(keys[from + half - 1] < key);
        rest -= half;
    }
    return from + static_cast<std::uint32_t>(count != 0 && keys[from] < key);
}

/// The child that has the key, or would get it. REQUIRES: the key isn't the greatest address
std::uint32_t KeyTree::ChildFor(const Branch& branch, Key key) {
    return CountBelow(branch.keys + 1, branch.count - 1, key + 1);
}

KeyTree::Node* KeyTree::LastLeaf(Subtree subtree) {
    while (subtree.level != 0) subtree = subtree.Child(subtree.node->count - 1);
    return subtree.node;
}

/// The key before a place of a leaf; 0 if there is none. `left` is the nearest subtree to the left of the leaf, if any.
KeyTree::Key KeyTree::KeyBefore(const Node& leaf, std::uint32_t place, Subtree left) {
    if (place != 0) return leaf.keys[place - 1];
    if (left.node == nullptr) return 0;
    const Node& neighbour = *LastLeaf(left);
    return neighbour.keys[neighbour.count - 1];
}

KeyTree::Node* KeyTree::MakeNode(std::uint32_t level) {
    return level == 0 ? new (std::nothrow) Node : new (std::nothrow) Branch;
}

void KeyTree::FreeNode(Node* node, std::uint32_t level) {
    if (level == 0) {
        delete node;
    } else {
        delete static_cast<Branch*>(node);
    }
}

/// Adds a key after all others, if that takes no more than a store.
bool KeyTree::Append(Key key, cstr& before) {
    if (last_->count == kMostKeys || last_->keys[last_->count - 1] >= key) return false;
    before = KeyAt(last_->keys[last_->count - 1]);
    last_->keys[last_->count++] = key;
    return true;
}

bool KeyTree::InsertFirst(Key key, cstr& before) {
    Node* const leaf = MakeNode(0);
    if (leaf == nullptr) return false;
    leaf->keys[leaf->count++] = key;
    before = nullptr;
    root_ = last_ = leaf;
    return true;
}

bool KeyTree::Insert(cstr text, cstr& before) {
    const Key key = AddressOf(text);
    if (root_ == nullptr) return InsertFirst(key, before);
    if (Append(key, before)) return true;
    if (root_->count == kMostKeys && !SplitRoot(key)) return false;
    Subtree at{root_, height_};
    Subtree left{nullptr, 0};
    while (at.level != 0) {
        Branch& branch = at.AsBranch();
        std::uint32_t child = ChildFor(branch, key);
        const Node& full = *branch.children[child];
        if (full.count == kMostKeys) {
            if (!Split(branch, child, at.level - 1, SplitPlace(full, at.level - 1, key), key)) return false;
            child = ChildFor(branch, key);
        }
        if (child != 0) left = at.Child(child - 1);
        at = at.Child(child);
    }
    const std::uint32_t place = CountBelow(at.node->keys, at.node->count, key);
    before = KeyAt(KeyBefore(*at.node, place, left));
    InsertAt(at.node->keys, at.node->count++, place, key);
    last_ = LastLeaf({root_, height_});
    return true;
}

/// Where to split a full node that is to receive a key. At least a quarter stays on each side, so nodes can't be kept
/// small by choosing the keys, except at the end: what begins there can't be split again until it is full.
std::uint32_t KeyTree::SplitPlace(const Node& node, std::uint32_t level, Key key) const {
    if (last_->keys[last_->count - 1] < key) return level == 0 ? kMostKeys : kMostKeys - 1;
    if (node.keys[kMostKeys - 1] < key) return kMergedKeys;
    return key < node.keys[1] ? kFewKeys + 1 : kMostKeys / 2;
}

/// Moves what is at and after a place of a full child into a new one. A leaf that gets nothing is for `key`.
/// REQUIRES: the parent has room
bool KeyTree::Split(Branch& parent, std::uint32_t child, std::uint32_t level, std::uint32_t place, Key key) {
    Node* const right = MakeNode(level);
    if (right == nullptr) return false;
    Node* const left = parent.children[child];
    std::copy(left->keys + place, left->keys + kMostKeys, right->keys);
    if (level != 0) {
        Node* const* const moved = static_cast<Branch*>(left)->children;
        std::copy(moved + place, moved + kMostKeys, static_cast<Branch*>(right)->children);
    }
    left->count = place;
    right->count = kMostKeys - place;
    InsertAt(parent.keys, parent.count, child + 1, right->count == 0 ? key : right->keys[0]);
    InsertAt(parent.children, parent.count++, child + 1, right);
    return true;
}

bool KeyTree::SplitRoot(Key key) {
    Node* const above = MakeNode(height_ + 1);
    if (above == nullptr) return false;
    auto& branch = static_cast<Branch&>(*above);
    branch.count = 1;
    branch.keys[0] = 0;
    branch.children[0] = root_;
    if (!Split(branch, 0, height_, SplitPlace(*root_, height_, key), key)) {
        FreeNode(above, height_ + 1);
        return false;
    }
    root_ = above;
    ++height_;
    return true;
}

cstr KeyTree::Erase(cstr text) {
    Key before = 0;
    Erase({root_, height_}, AddressOf(text), {nullptr, 0}, before);
    while (height_ != 0 && root_->count == 1) { // the only child becomes the root
        Node* const child = Subtree{root_, height_}.Child(0).node;
        FreeNode(root_, height_--);
        root_ = child;
    }
    if (root_->count == 0) Clear();
    last_ = root_ == nullptr ? nullptr : LastLeaf({root_, height_});
    return KeyAt(before);
}

/// Erases a key of a subtree, which may leave its node empty. `left` is the nearest subtree to the left, if any.
void KeyTree::Erase(Subtree subtree, Key key, Subtree left, Key& before) {
    if (subtree.level == 0) {
        Node& leaf = *subtree.node;
        const std::uint32_t place = CountBelow(leaf.keys, leaf.count, key);
        before = KeyBefore(leaf, place, left);
        EraseAt(leaf.keys, leaf.count--, place);
        return;
    }
    Branch& branch = subtree.AsBranch();
    const std::uint32_t child = ChildFor(branch, key);
    Erase(subtree.Child(child), key, child == 0 ? left : subtree.Child(child - 1), before);
    if (branch.children[child]->count <= kFewKeys) Tidy(branch, child, subtree.level - 1);
}

/// Drops an empty child, and merges a small one with a neighbour if the two leave enough room that the next insertions
/// don't split them again.
void KeyTree::Tidy(Branch& parent, std::uint32_t child, std::uint32_t level) {
    const auto fit = [&parent](std::uint32_t i) {
        return i + 1 < parent.count && parent.children[i]->count + parent.children[i + 1]->count <= kMergedKeys;
    };
    if (parent.children[child]->count == 0) {
        FreeNode(parent.children[child], level);
        DropChild(parent, child);
    } else if (child != 0 && fit(child - 1)) {
        Merge(parent, child - 1, level);
    } else if (fit(child)) {
        Merge(parent, child, level);
    }
}

/// Moves what the next child has into a child, and drops the next one.
void KeyTree::Merge(Branch& parent, std::uint32_t child, std::uint32_t level) {
    Node* const left = parent.children[child];
    Node* const right = parent.children[child + 1];
    right->keys[0] = level == 0 ? right->keys[0] : parent.keys[child + 1];
    std::copy_n(right->keys, right->count, left->keys + left->count);
    if (level != 0) {
        Node* const* const moved = static_cast<Branch*>(right)->children;
        std::copy_n(moved, right->count, static_cast<Branch*>(left)->children + left->count);
    }
    left->count += right->count;
    FreeNode(right, level);
    DropChild(parent, child + 1);
}

void KeyTree::DropChild(Branch& parent, std::uint32_t child) {
    EraseAt(parent.keys, parent.count, child);
    EraseAt(parent.children, parent.count--, child);
}

void KeyTree::FreeAll(Subtree subtree) {
    for (std::uint32_t i = 0; subtree.level != 0 && i < subtree.node->count; ++i) FreeAll(subtree.Child(i));
    FreeNode(subtree.node, subtree.level);
}

void KeyTree::Clear() {
    if (root_ != nullptr) FreeAll({root_, height_});
    *this = KeyTree{};
}

bool KeyTree::IsValid(Subtree subtree, Bounds bounds, std::size_t& keys) {
    const Node& node = *subtree.node;
    if (node.count == 0 || node.count > kMostKeys) return false;
    Key from = bounds.from;
    for (std::uint32_t i = 0; i < node.count; ++i) {
        if (subtree.level != 0) {
            const Bounds of_child{i == 0 ? bounds.from : node.keys[i],
                                  i + 1 < node.count ? node.keys[i + 1] : bounds.to};
            if (of_child.from >= of_child.to || !IsValid(subtree.Child(i), of_child, keys)) return false;
        } else if (node.keys[i] < from || node.keys[i] >= bounds.to) {
            return false;
        } else {
            from = node.keys[i] + 1;
            ++keys;
        }
    }
    return true;
}

bool KeyTree::IsValid(std::size_t keys) const {
    if (root_ == nullptr) return keys == 0 && last_ == nullptr && height_ == 0;
    std::size_t found = 0;
    return IsValid({root_, height_}, {0, UINTPTR_MAX}, found) && found == keys && last_ == LastLeaf({root_, height_});
}

} // namespace Tessarin
