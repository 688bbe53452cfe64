// The read tree of the text form.

#ifndef TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_TEXT_READ_TREE_H

#include "configure/tree/read_tree.h"

namespace Configure {

/// Invariant: the Units ascend by the address of their key, which never changes; equal keys are neighbours, in the
/// order of the file.
struct TxtTableReader final : TableReader<TxtTableReader> {
    static constexpr bool kKeepsLastColon = true;

    /// A key that isn't there is interned: whatever was searched for is an interned text from then on, as in an edited
    /// file.
    [[nodiscard]] Unit* Search(const char* key) const;

    /// Puts the Units in order.
    void Sort();
};

using TxtArrayReader = ArrayReader;
using TextTree = ReadTree<TxtTableReader>;

} // namespace Configure

#endif
