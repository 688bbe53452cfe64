// The read tree of the binary form. A lookup by text interns nothing, takes no lock and allocates nothing.

#ifndef TESSARIN_CONFIGURE_TREE_BINARY_READ_TREE_H
#define TESSARIN_CONFIGURE_TREE_BINARY_READ_TREE_H

#include "configure/tree/read_tree.h"

#include <cstring>

namespace Configure {

/// The Units are in the order of the stored trie's nodes: by the length of their keys, then by the keys' bytes.
struct BinTable final : TableReader<BinTable> {
    static constexpr bool kKeepsLastColon = false;

    [[nodiscard]] Unit* Search(const char* key) const { return index.Find(units, key, std::strlen(key)); }
};

using BinArray = ArrayReader;
using BinTree = ReadTree<BinTable>;

} // namespace Configure

#endif
