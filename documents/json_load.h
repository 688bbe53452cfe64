/// The JSON form into a table.

#ifndef TESSARIN_DOCUMENTS_JSON_LOAD_H
#define TESSARIN_DOCUMENTS_JSON_LOAD_H

namespace Tessarin {

class Table;

/// Fills a table from a NUL-terminated text, which is scratch space to it. A text that is no valid document, or whose
/// root is no object, leaves the table as it was, with success.
/// returns  false if memory ran out; the table is then fit only to be destroyed
bool LoadJson(Table& root, char* text);

} // namespace Tessarin

#endif
