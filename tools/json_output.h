// A tree written as JSON, for scripts.

#ifndef TESSARIN_TOOLS_JSON_OUTPUT_H
#define TESSARIN_TOOLS_JSON_OUTPUT_H

#include "tools/row_list.h"

#include <cstdio>

namespace Command {

/// Writes a tree as one line of JSON: indentation would grow with the square of the depth. Keys and texts are made
/// valid UTF-8 by ToUtf8 (terminal_text.h): U+FFFD stands for each byte that isn't.
void WriteJson(const RowList& rows, std::FILE* out);

} // namespace Command

#endif
