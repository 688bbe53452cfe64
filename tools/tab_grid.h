// Tab files as grids: opening one, drawing it in columns, and writing it as JSON.

#ifndef TESSARIN_TOOLS_TAB_GRID_H
#define TESSARIN_TOOLS_TAB_GRID_H

#include "tools/input_file.h"
#include "tools/row_list.h"

#include <tessarin/tab_files.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace Command {

struct GridReleaser {
    void operator()(ITabFile* grid) const { grid->Release(); }
};
using Grid = std::unique_ptr<ITabFile, GridReleaser>;

/// Reads a tab file. Throws Failure.
/// flags  TABFILE_ values
Grid OpenGrid(const InputFile& input, std::uint32_t flags);

/// Draws a grid in columns as wide as their widest cell.
void DrawGrid(ITabFile& grid, std::FILE* out);

/// The row of a cell, for JSON: its text, or null for a cell that isn't there.
Row RowOfCell(const char* cell, std::size_t depth);

/// A grid as a list of lists, for JSON.
RowList ListGrid(ITabFile& grid);

} // namespace Command

#endif
