/// The family of a text form that is only read.

#ifndef TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H

#include "configure/tree/read_tree.h"

namespace Configure {

/// Invariant: the Units stand in ascending order of their keys' addresses, which never change; equal keys are
/// neighbours, in the order of the file.
struct TxtTableReader final : TableReader<TxtTableReader> {
    static constexpr bool kKeepsLastColon = true;

    /// A key that isn't there is interned: whatever was asked for is a string from then on, as in an edited file.
    [[nodiscard]] Unit* Search(const char* key) const;

    /// Puts the Units in order.
    void Sort();
};

using TxtArrayReader = ArrayReader;
using TextTree = ReadTree<TxtTableReader>;

} // namespace Configure

#endif
