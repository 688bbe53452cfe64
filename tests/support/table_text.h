// A table as text, so that expectations are easy to read.

#ifndef TESSARIN_TESTS_SUPPORT_TABLE_TEXT_H
#define TESSARIN_TESTS_SUPPORT_TABLE_TEXT_H

#include "tessarin/tables.h"

#include <cstdlib>
#include <string>

namespace TestSupport {

/// The complete text of SaveBuffer; "(refused)" if that returns 0.
inline std::string SavedJson(Tessarin::ITable* table) {
    void* data = nullptr;
    std::uint32_t size = 0;
    if (table->SaveBuffer(&data, &size) != 1) return "(refused)";
    std::string text(static_cast<const char*>(data), size);
    std::free(data);
    return text;
}

/// Only the entries: the saved document without its marker. An empty table is "{}".
inline std::string Entries(Tessarin::ITable* table) {
    static const std::string kMarker = R"({"__internal_type":"qv game schema")";
    std::string text = SavedJson(table);
    if (text.compare(0, kMarker.size(), kMarker) != 0) return text;
    std::string entries = text.substr(kMarker.size());
    if (entries[0] != ',') return "{}";
    entries[0] = '{';
    return entries;
}

/// The entries of a table that a factory made; closes the table. "null" for a null table.
inline std::string EntriesAndClose(Tessarin::ITable* table) {
    if (table == nullptr) return "null";
    std::string entries = Entries(table);
    CloseTable(table);
    return entries;
}

} // namespace TestSupport

#endif
