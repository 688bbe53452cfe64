// Any bytes as a tab file: the first byte is the flags, the rest the text. The grid is compared, cell by cell, with the
// result of a plain reader that reads line by line and field by field.

#include "fuzz/check.h"
#include "tessarin/tab_files.h"
#include "tests/support/memory_files.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Fuzz;
using Row = std::vector<std::optional<std::string>>;

struct Grid {
    std::size_t columns = 0;
    std::vector<Row> rows;
};

/// Takes the text before the first `byte` off the front, and drops that byte; takes all of it if there is none.
std::string_view Cut(std::string_view& text, char byte) {
    const std::string_view piece = text.substr(0, text.find(byte));
    text.remove_prefix(std::min(text.size(), piece.size() + 1));
    return piece;
}

/// The columns of a text that isn't empty.
std::size_t CountColumns(std::string_view text) {
    const std::size_t end = text.find_first_of("\n\xFF");
    const std::string_view first = text.substr(0, end);
    const auto tabs = static_cast<std::size_t>(std::count(first.begin(), first.end(), '\t'));
    return end == text.npos ? tabs : end == 0 ? 0 : tabs + 1;
}

/// The fields of one line, as many as there are columns. A last line without a line feed keeps only the fields that a
/// tab ends; the skipped column is the first of these.
Row ReadLine(std::string_view& text, std::size_t columns, bool skips_column) {
    const bool ends = text.find('\n') != text.npos;
    std::string_view line = Cut(text, '\n');
    if (ends && !line.empty() && line.back() == '\r') line.remove_suffix(1);
    const std::size_t fields = static_cast<std::size_t>(std::count(line.begin(), line.end(), '\t')) + (ends ? 1 : 0);
    const bool skips = skips_column && line.find('\t') != line.npos;
    Row row(columns);
    for (std::size_t i = 0; i < fields; ++i) {
        const std::string_view field = Cut(line, '\t');
        const std::size_t column = skips && i != 0 ? i - 1 : i;
        if (column < columns) row[column] = field.substr(0, field.find('\0'));
    }
    return row;
}

/// Nothing if the file is refused.
std::optional<Grid> Read(std::string_view text, std::uint32_t flags) {
    Grid grid;
    if (text.empty()) return grid;
    auto lines = static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return byte == '\n' || byte == '\xFF'; }));
    grid.columns = CountColumns(text);
    const bool skips_column = (flags & TABFILE_SKIP_FIRST_COLUMN) != 0;
    if ((flags & TABFILE_SKIP_FIRST_LINE) != 0) {
        if (lines-- <= 1) return std::nullopt;
        Cut(text, '\n');
    }
    if (skips_column && grid.columns-- <= 1) return std::nullopt;
    Row defaults;
    if (grid.columns != 0 && (flags & TABFILE_DEFAULT_ROW) != 0) {
        if (lines-- <= 1) return std::nullopt;
        defaults = ReadLine(text, grid.columns, skips_column);
    }
    grid.rows.assign(lines, Row(grid.columns));
    for (Row& row : grid.rows) {
        if (text.empty()) break;
        row = ReadLine(text, grid.columns, skips_column);
        for (std::size_t i = 0; i < defaults.size(); ++i) {
            if (row[i] && row[i]->empty()) row[i] = defaults[i];
        }
    }
    return grid;
}

void CheckCell(ITabFile& file, std::uint32_t row, std::uint32_t column, const std::optional<std::string>& expected) {
    const char* cell = file.GetCell(row, column);
    Require((cell != nullptr) == expected.has_value(), "a cell is there that shouldn't be, or isn't");
    if (cell == nullptr) {
        Require(file.GetInteger(row, column, 7) == 7 && file.GetReal(row, column, 7.5F) == 7.5F, "no default");
        return;
    }
    Require(*expected == cell, "a cell holds something else");
    Require(file.GetInteger(row, column, 7) == file.GetIntegerAlso(row, column, 8), "a number hangs on the default");
    static_cast<void>(file.GetReal(row, column, 0));
}

void CheckGrid(ITabFile& file, const Grid& grid) {
    Require(file.GetRowCount() == grid.rows.size() && file.GetColumnCount() == grid.columns, "another size");
    for (std::uint32_t row = 0; row <= grid.rows.size(); ++row) {
        for (std::uint32_t column = 0; column <= grid.columns; ++column) {
            const bool inside = row < grid.rows.size() && column < grid.columns;
            CheckCell(file, row, column, inside ? grid.rows[row][column] : std::nullopt);
        }
    }
}

struct Releaser {
    void operator()(ITabFile* file) const { file->Release(); }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint32_t flags = data[0];
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    TestSupport::MemoryFiles files;
    files["file"] = text;
    const std::unique_ptr<ITabFile, Releaser> file(CreateTabFile(&files));
    // The second Open drops what the first one read.
    for (const std::uint32_t tried_flags : {flags, flags ^ 7U, flags}) {
        const std::optional<Grid> grid = Read(text, tried_flags);
        Require(file->Open("file", tried_flags) == grid.has_value(), "refused for no reason, or not refused");
        CheckGrid(*file, grid.value_or(Grid{}));
    }
    Require(files.handles == 0, "a file stays open");
    return 0;
}
