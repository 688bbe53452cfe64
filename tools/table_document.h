// Documents of tables, readable text or JSON: opening one and listing its tree.

#ifndef TESSARIN_TOOLS_TABLE_DOCUMENT_H
#define TESSARIN_TOOLS_TABLE_DOCUMENT_H

#include "tools/input_file.h"
#include "tools/key_path.h"
#include "tools/row_list.h"

#include <tessarin/documents.h>

#include <cstddef>
#include <memory>
#include <string>

namespace Command {

struct TableCloser {
    void operator()(Tessarin::ITable* table) const { CloseTable(table); }
};
using Table = std::unique_ptr<Tessarin::ITable, TableCloser>;

/// Loads a document of either form. Throws Failure.
Table OpenTable(const InputFile& input);

/// Lists the tree of the entry at a key path; empty if there is no such entry.
/// key    the name of the first row
/// limit  levels below the first row
RowList ListEntry(Tessarin::ITable* root, const KeyPath& path, const std::string& key, std::size_t limit);

} // namespace Command

#endif
