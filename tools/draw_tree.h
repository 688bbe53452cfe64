// A tree drawn for people, with the lines between its branches.

#ifndef TESSARIN_TOOLS_DRAW_TREE_H
#define TESSARIN_TOOLS_DRAW_TREE_H

#include "tools/row_list.h"

#include <cstdio>
#include <string>

namespace Command {

/// Draws a tree, a row a line, with colours or without.
void DrawTree(const RowList& rows, bool has_colour, std::FILE* out);

/// A row's value in a few words: `table, 3 entries`, a text in quotes, a literal as it is.
std::string Describe(const Row& row);

} // namespace Command

#endif
