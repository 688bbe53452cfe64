/// A table as text, for expectations that can be read.

#ifndef TESSARIN_TESTS_SUPPORT_TABLE_TEXT_H
#define TESSARIN_TESTS_SUPPORT_TABLE_TEXT_H

#include "tessarin/tables.h"

#include <cstdlib>
#include <string>

namespace TestSupport {

/// What SaveBuffer gives, whole; "(refused)" if it answers 0.
inline std::string SavedJson(Tessarin::ITable* table) {
    void* data = nullptr;
    std::uint32_t size = 0;
    if (table->SaveBuffer(&data, &size) != 1) return "(refused)";
    std::string text(static_cast<const char*>(data), size);
    std::free(data);
    return text;
}

/// The entries alone: the saved document without its marker. An empty table is "{}".
inline std::string Entries(Tessarin::ITable* table) {
    static const std::string kMarker = R"({"__internal_type":"qv game schema")";
    std::string text = SavedJson(table);
    if (text.compare(0, kMarker.size(), kMarker) != 0) return text;
    std::string entries = text.substr(kMarker.size());
    if (entries[0] != ',') return "{}";
    entries[0] = '{';
    return entries;
}

/// Entries of a table that a factory made, which is then closed; "null" for a null table.
inline std::string EntriesAndClose(Tessarin::ITable* table) {
    if (table == nullptr) return "null";
    std::string entries = Entries(table);
    CloseTable(table);
    return entries;
}

} // namespace TestSupport

#endif
