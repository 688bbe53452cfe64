/// What a JSON text says, as RapidJSON's own documents read it: the standard's strings, no table, one call for each
/// value. It shares with the library no more than the grammar.

#ifndef TESSARIN_FUZZ_JSON_ORACLE_H
#define TESSARIN_FUZZ_JSON_ORACLE_H

#include "fuzz/table_tree.h"

#include <string>
#include <string_view>

namespace Fuzz {

/// The tree of a text by the rules of the JSON form, but with the standard's strings; a text that isn't valid, or whose
/// root is no object, is an empty table. A NUL ends the text.
Value TreeOfStandardJson(const std::string& text);

/// The same with strings that are read raw: every backslash stands for itself.
Value TreeOfRawJson(std::string_view text);

/// A table's save, seen from outside: it is a standard text that says what the table holds, and what loads from it is
/// what the form makes of it.
void CheckSave(Tessarin::ITable& table);

} // namespace Fuzz

#endif
