// The read tree of the text form: a table's Units are sorted by the addresses of their keys, and found by text.

#ifndef TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H

#include "configure/tree/read_tree.h"

namespace Configure {

/// Invariant: the Units ascend by the address of their key, which never changes; equal keys are neighbours, in the
/// order of the file.
struct TxtTableReader final : TableReader<TxtTableReader> {
    static constexpr bool kKeepsLastColon = true;

    /// Interns a key that isn't there: every key that was searched for is an interned text afterwards, as in an edited
    /// file.
    [[nodiscard]] Unit* Search(const char* key) const;

    /// Puts the Units in order.
    void Sort();
};

using TxtArrayReader = ArrayReader;
using TextTree = ReadTree<TxtTableReader>;

} // namespace Configure

#endif
