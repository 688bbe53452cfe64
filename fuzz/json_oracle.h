// What a JSON text says, as RapidJSON's own documents read it: the standard's strings, no table, one call for each
// value. It shares nothing but the grammar with the library.

#ifndef TESSARIN_FUZZ_JSON_ORACLE_H
#define TESSARIN_FUZZ_JSON_ORACLE_H

#include "fuzz/table_tree.h"

#include <string>
#include <string_view>

namespace Fuzz {

/// The tree of a text by the rules of the JSON form, but with the standard's strings; a text that isn't valid, or whose
/// root isn't an object, is an empty table. A NUL ends the text.
Value TreeOfStandardJson(const std::string& text);

/// The tree by the same rules, but with raw strings: a backslash is an ordinary byte.
Value TreeOfRawJson(std::string_view text);

/// Saves a table and requires that this is a standard text that says what the table holds, and that it loads as the
/// form says.
void CheckSave(Tessarin::ITable& table);

} // namespace Fuzz

#endif
