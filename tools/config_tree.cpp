// Searches and lists a tree without recursion, as a file from anywhere may be nested to any depth.

#include "tools/config_tree.h"

#include <tessarin/interned_strings.h>

#include <optional>
#include <tuple>
#include <utility>

namespace Command {

namespace {

using Configure::IIterator;
using Configure::ITable;

template <class Container>
std::pair<IIterator*, IIterator*> EntriesOf(Container* container) {
    return {container->Begin(), container->End()};
}

bool HasSeparator(const std::string& key) { return key.find_first_of("/\\") != std::string::npos; }

// The value that a table's getters return for a key that the table doesn't have itself.
Node GetDefault(ITable* table, const char* key) {
    Node node;
    if (!key) return node;
    node.table = table->GetTable(key);
    if (!node.table) node.array = table->GetArray(key);
    if (!node) node.text = table->GetString(key);
    return node;
}

} // namespace

Node NodeOf(IIterator* entry) { return {entry->GetTable(), entry->GetArray(), entry->GetString()}; }

Node RootOf(const ConfigFile& file) { return {file->GetRoot(), nullptr, nullptr}; }

IIterator* FindEntry(const Node& node, const std::string& key) {
    if (node.array) {
        const std::optional<std::uint32_t> position = ParsePosition(key);
        return position ? node.array->At(*position) : nullptr;
    }
    if (!node.table) return nullptr;
    IIterator* const entry = node.table->Find(key.c_str());
    return entry || !HasSeparator(key) ? entry : node.table->FindPath(key.c_str());
}

Node FindNode(Node root, const KeyPath& path) {
    for (const std::string& key : path) {
        IIterator* const entry = FindEntry(root, key);
        root = entry ? NodeOf(entry) : Node{};
    }
    return root;
}

Node FindNodeOrDefault(Node root, const KeyPath& path) {
    for (const std::string& key : path) {
        IIterator* const entry = FindEntry(root, key);
        Node next = entry ? NodeOf(entry) : Node{};
        if (!entry && root.table) next = GetDefault(root.table, key.c_str());
        if (!next && !entry && root.table && HasSeparator(key)) next = GetDefault(root.table, cstr_path(key.c_str()));
        root = next;
    }
    return root;
}

Children::Children(const Node& node) : table_(node.table), array_(node.array) {
    if (table_) std::tie(entry_, end_) = EntriesOf(table_);
    if (array_) std::tie(entry_, end_) = EntriesOf(array_);
}

IIterator* Children::Take() {
    IIterator* const entry = entry_;
    if (table_) entry_ = table_->Next(entry);
    if (array_) entry_ = array_->Next(entry);
    ++taken_;
    return entry;
}

Children Children::Take(Row& row) {
    row.is_in_array = array_ != nullptr;
    if (array_) row.key = std::to_string(taken_);
    IIterator* const entry = Take();
    if (table_) row.key = entry->GetKey();
    const Node node = NodeOf(entry);
    FillRow(node, row);
    return Children(node);
}

void FillRow(const Node& node, Row& row) {
    row.shape = node.table ? Shape::Table : node.array ? Shape::Array : node.text ? Shape::Text : Shape::Literal;
    if (node.table) row.count = node.table->GetCount();
    if (node.array) row.count = node.array->GetCount();
    if (node.text) row.value = node.text;
    if (node) return;
    row.value = "null";
    row.kind = "no value";
}

RowList ListNode(const Node& node, const std::string& key, std::size_t limit) {
    Row root;
    root.key = key;
    FillRow(node, root);
    return ListTree(std::move(root), Children(node), limit);
}

} // namespace Command
