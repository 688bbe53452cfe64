// The text form can't hold everything that a tree can, and the library's save doesn't check. So the text is loaded
// again and compared with the tree before it replaces a file: nothing is ever lost silently.

#include "tools/config_edit.h"

#include "tools/config_diff.h"
#include "tools/config_tree.h"
#include "tools/failure.h"
#include "tools/terminal_text.h"

#include <tessarin/interned_strings.h>

namespace Command {

namespace {

using Configure::IIterator;

KeyPath ParentOf(const KeyPath& path) { return {path.begin(), path.end() - 1}; }

IIterator* RequireEntry(const EditTarget& target, const Node& parent) {
    IIterator* const entry = FindEntry(parent, target.path.back());
    if (!entry) throw Failure(target.file_name, "has no " + target.path_text);
    return entry;
}

Node ParentNode(const EditTarget& target) { return FindNode(RootOf(target.file), ParentOf(target.path)); }

// The table or array to which the new entry is added.
Node RequireParent(const EditTarget& target, bool creates_parents) {
    Node node = RootOf(target.file);
    for (const std::string& key : ParentOf(target.path)) {
        IIterator* entry = FindEntry(node, key);
        if (!entry && creates_parents && node.table) entry = node.table->AddTable(key.c_str());
        if (!entry) throw Failure(target.file_name, "has no " + QuoteKey(key) + " on the path");
        node = NodeOf(entry);
    }
    if (!node.table && !node.array) throw Failure(target.file_name, "has a text where a table is needed");
    return node;
}

IIterator* AddTo(const Node& parent, const std::string& name, NewEntry kind, const std::string& text) {
    // A key that contains a separator is added in path form, like such a key in the text of a file.
    const bool is_path = name.find_first_of("/\\") != std::string::npos;
    const char* const key = is_path ? cstr_path(name.c_str()) : name.c_str();
    Configure::ITable* const table = parent.table;
    Configure::IArray* const array = parent.array;
    switch (kind) {
    case NewEntry::Table:
        return table ? table->AddTable(key) : array->AddTable(0);
    case NewEntry::Array:
        return table ? table->AddArray(key) : array->AddArray(0);
    case NewEntry::Text:
        break;
    }
    return table ? table->AddString(key, text.c_str()) : array->AddString(0, text.c_str());
}

} // namespace

void SetEntry(const EditTarget& target, const std::string& text) {
    IIterator* const entry = RequireEntry(target, ParentNode(target));
    if (entry->IsTable() || entry->IsArray()) {
        throw Failure(target.file_name, target.path_text + " is not a plain value");
    }
    if (!entry->SetString(text.c_str())) throw Failure(target.file_name, "takes no text that long");
}

void RemoveEntry(const EditTarget& target) {
    const Node parent = ParentNode(target);
    IIterator* const entry = RequireEntry(target, parent);
    parent.table ? parent.table->Remove(entry) : parent.array->Remove(entry);
}

void AddEntry(const EditTarget& target, NewEntry kind, const std::string& text, bool creates_parents) {
    const Node parent = RequireParent(target, creates_parents);
    const std::string& key = target.path.back();
    if (parent.array && key != "-" && ParsePosition(key) != parent.array->GetCount()) {
        throw Failure(target.file_name, "adds to an array only at its end, which is `-`");
    }
    if (FindEntry(parent, key)) throw Failure(target.file_name, "has " + target.path_text + " already");
    if (!AddTo(parent, key, kind, text)) throw Failure(target.file_name, "takes no such key or text");
}

void SaveAsText(const ConfigFile& file, AtomicOutputFile& output, const std::string& changed) {
    const ConfigFile saved = SaveAndReload(output, file, Configure::FORMAT_TEXT);
    CompareTrees(RootOf(file), RootOf(saved), [&](const Difference& lost) {
        // After a change, the message names the changed entry: a quote in it may swallow the entries that follow, and
        // then one of these is the first that is found lost.
        const std::string& culprit = changed.empty() ? lost.path : changed;
        throw Failure(output.Name(), "is not written: the text form can't hold " + ToUtf8(culprit));
    });
    output.Commit();
}

} // namespace Command
