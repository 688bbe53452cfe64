// Nodes of a configuration tree: finding a node by its key path, iterating over its children, listing it as rows.

#ifndef TESSARIN_TOOLS_CONFIG_TREE_H
#define TESSARIN_TOOLS_CONFIG_TREE_H

#include "tools/config_file.h"
#include "tools/key_path.h"
#include "tools/row_list.h"

#include <tessarin/configure.h>

#include <cstddef>
#include <string>

namespace Command {

/// The value of an entry: one of the three pointers, or none. The tree owns what they point to.
struct Node {
    Configure::ITable* table = nullptr;
    Configure::IArray* array = nullptr;
    cstr text = nullptr;

    explicit operator bool() const { return table || array || text; }
};
Node NodeOf(Configure::IIterator* entry);
Node RootOf(const ConfigFile& file);

/// The entry of a key in a table, or of a position in an array; null if there is none, or if the node is neither. A key
/// is looked up as it is, then in its path form.
Configure::IIterator* FindEntry(const Node& node, const std::string& key);
/// The node at a key path in the file itself; an empty node if there is none.
Node FindNode(Node root, const KeyPath& path);
/// The node that a program would get for a key path: if a table doesn't have a key, its default table supplies the
/// value.
Node FindNodeOrDefault(Node root, const KeyPath& path);

/// A cursor over the children of a table or an array; any other node has none.
class Children {
public:
    explicit Children(const Node& node);

    [[nodiscard]] bool IsEmpty() const { return entry_ == end_; }
    /// The next child. REQUIRES: there is one
    Configure::IIterator* Take();
    /// Like Take, for ListTree: fills the child's row and returns the cursor over the child's own children.
    Children Take(Row& row);

private:
    Configure::ITable* table_;
    Configure::IArray* array_;
    Configure::IIterator* entry_ = nullptr;
    Configure::IIterator* end_ = nullptr;
    std::size_t taken_ = 0;
};

/// Sets the fields of a row that describe a node: its shape, value, kind and count.
void FillRow(const Node& node, Row& row);

/// Lists a node and everything below it.
/// key    the name of the first row
/// limit  levels below the first row
RowList ListNode(const Node& node, const std::string& key, std::size_t limit);

} // namespace Command

#endif
