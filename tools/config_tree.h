// Nodes of a configuration tree: finding one by its key path, going over its children, listing it as rows.

#ifndef TESSARIN_TOOLS_CONFIG_TREE_H
#define TESSARIN_TOOLS_CONFIG_TREE_H

#include "tools/config_file.h"
#include "tools/key_path.h"
#include "tools/row_list.h"

#include <tessarin/configure.h>

#include <cstddef>
#include <string>

namespace Command {

/// What an entry holds: one of the three, or nothing. The pointers are the tree's own.
struct Node {
    Configure::ITable* table = nullptr;
    Configure::IArray* array = nullptr;
    cstr text = nullptr;

    explicit operator bool() const { return table || array || text; }
};
Node NodeOf(Configure::IIterator* entry);
Node RootOf(const ConfigFile& file);

/// The entry of a key in a table or of a position in an array; null if there is none, and for any other node. A key is
/// looked up as it is, then in its path form.
Configure::IIterator* FindEntry(const Node& node, const std::string& key);
/// What the file itself has at a key path; an empty node if there is nothing.
Node FindNode(Node root, const KeyPath& path);
/// What a program gets that asks for a key path: where a table has no such key, its `_default` supplies the value.
Node FindNodeOrDefault(Node root, const KeyPath& path);

/// A cursor over the children of a table or an array; any other node has none.
class Children {
public:
    explicit Children(const Node& node);

    [[nodiscard]] bool IsEmpty() const { return entry_ == end_; }
    /// The next child. REQUIRES: there is one
    Configure::IIterator* Take();
    /// The same as a row, for ListTree.
    Children Take(Row& row);

private:
    Configure::ITable* table_;
    Configure::IArray* array_;
    Configure::IIterator* entry_ = nullptr;
    Configure::IIterator* end_ = nullptr;
    std::size_t taken_ = 0;
};

/// Sets what a row says of a node: its shape, value, kind and count.
void FillRow(const Node& node, Row& row);

/// A node and what is below it.
/// key    the name of the first row
/// limit  levels below the first row
RowList ListNode(const Node& node, const std::string& key, std::size_t limit);

} // namespace Command

#endif
