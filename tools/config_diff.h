// The differences between two configuration trees.

#ifndef TESSARIN_TOOLS_CONFIG_DIFF_H
#define TESSARIN_TOOLS_CONFIG_DIFF_H

#include "tools/config_tree.h"

#include <functional>
#include <string>

namespace Command {

/// One difference: what each tree has at a path, null for the tree that has nothing there.
struct Difference {
    std::string path; // as SplitKeyPath reads it
    const Row* before;
    const Row* after;
};
using DifferenceReporter = std::function<void(const Difference&)>;

/// Compares the content of two trees, whatever the order of their tables' entries, and reports each difference. A table
/// or an array that only one of them has is one difference. Entries of a table that share a key are compared in their
/// order. An entry without any value counts as an empty text.
/// REQUIRES: both are tables, or both are arrays
void CompareTrees(const Node& before, const Node& after, const DifferenceReporter& report);

} // namespace Command

#endif
