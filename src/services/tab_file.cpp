// The grid of a tab file. The file is read into one buffer; TabSplitter finds the fields; tabs and line ends become
// NULs in place, and a cell is the offset of its field in the text:
//
//     text_    a NUL b c NUL NUL NUL d NUL        "a TAB bc CR LF TAB d LF" as it is after the split
//              |     |           |   |
//     cells_   0,0   0,1         1,0 1,1          an empty field is an empty string, a missing one has no cell
//
// Invariants:
// 1. Only fields that stand in the file have cells, those of a row next to each other. So the grid takes at most 8
//    bytes for each byte of the text, although rows times columns may be about the square of its size: the first line
//    may have as many tabs as there are lines after it.
// 2. As long as all rows have a cell for each column, a cell's place is computed. The first row that is shorter starts
//    `row_starts_`, the list of the places where rows begin.
// 3. The lines and columns are counted before the text is split. The counts don't decide where the text is split,
//    because a 0xFF counts as a line end but doesn't end a line. Each store is checked against the counts.

#include "services/tab_file.h"

#include "files/file_io.h"
#include "files/whole_file.h"
#include "platform/number_text.h"
#include "services/tab_splitter.h"
#include "strings/normal_forms.h"
#include "strings/string_table.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace Tessarin {
namespace {

bool CountsAsLineEnd(char byte) { return byte == '\n' || byte == '\xFF'; }

/// A sum without a branch: compilers process sixteen bytes of it at a time. With std::count_if, all rows OpenTabFile of
/// the benchmark take twice as long.
std::uint32_t CountLines(const char* text, std::uint32_t size) {
    std::uint32_t lines = 0;
    for (std::uint32_t at = 0; at < size; ++at) lines += CountsAsLineEnd(text[at]) ? 1U : 0U;
    return lines;
}

/// One more than the number of tabs in the first line; 0 if that line is empty; the number of tabs if no byte ends it.
std::uint32_t CountColumns(const char* text, std::uint32_t size) {
    std::uint32_t tabs = 0;
    for (std::uint32_t at = 0; at < size; ++at) {
        if (CountsAsLineEnd(text[at])) return at == 0 ? 0 : tabs + 1;
        tabs += text[at] == '\t' ? 1U : 0U;
    }
    return tabs;
}

/// `count` numbers, uninitialised; null if they can't be allocated.
std::uint32_t* NewNumbers(std::uint32_t count) {
    const std::uint64_t bytes = std::uint64_t{count} * sizeof(std::uint32_t);
    if (bytes > std::uint64_t{PTRDIFF_MAX}) return nullptr; // only where std::size_t has 32 bits
    return static_cast<std::uint32_t*>(std::malloc(static_cast<std::size_t>(bytes)));
}

void SkipLine(TabSplitter& splitter) {
    TabField field{};
    while (splitter.Next(field) && field.end == FieldEnd::kTab) {
    }
}

} // namespace

TabFile* TabFile::Create(::IFileIO* file_io) {
    auto* file = new (std::nothrow) TabFile;
    if (file == nullptr) return nullptr;
    file->owns_file_io_ = file_io == nullptr;
    file->file_io_ = file_io != nullptr ? file_io : new (std::nothrow) FileIO;
    return file;
}

TabFile::~TabFile() {
    Clear();
    if (owns_file_io_) delete file_io_;
}

void TabFile::Release() { delete this; }

void TabFile::Clear() {
    std::free(text_);
    std::free(cells_);
    std::free(row_starts_);
    std::free(default_row_);
    text_ = nullptr;
    cells_ = nullptr;
    row_starts_ = nullptr;
    default_row_ = nullptr;
    text_size_ = 0;
    row_count_ = 0;
    column_count_ = 0;
}

bool TabFile::Open(const char* path, std::uint32_t flags) {
    Clear();
    if (IsEmpty(path) || file_io_ == nullptr) return false;
    flags_ = flags;
    path_ = string_table->InternPath(path);
    if (path_ == nullptr) return false;
    const bool loaded = Load();
    if (!loaded) Clear();
    return loaded;
}

/// The file is closed when all is done.
bool TabFile::Load() {
    WholeFile file;
    if (!file.Read(*file_io_, path_, 0)) return false;
    text_ = file.bytes.release();
    text_size_ = file.size;
    return text_size_ == 0 || Split();
}

/// The first line of the file sets the number of columns, even if it is skipped.
bool TabFile::Split() {
    row_count_ = CountLines(text_, text_size_);
    column_count_ = CountColumns(text_, text_size_);
    TabSplitter splitter(text_, text_size_);
    if ((flags_ & TABFILE_SKIP_FIRST_LINE) != 0) {
        if (row_count_ <= 1) return false;
        SkipLine(splitter);
        --row_count_;
    }
    if ((flags_ & TABFILE_SKIP_FIRST_COLUMN) != 0) {
        if (column_count_ <= 1) return false;
        --column_count_;
    }
    if (column_count_ == 0) return true;
    if ((flags_ & TABFILE_DEFAULT_ROW) != 0 && !SplitDefaultRow(splitter)) return false;
    return row_count_ == 0 || SplitRows(splitter);
}

bool TabFile::SplitDefaultRow(TabSplitter& splitter) {
    if (row_count_ <= 1) return false;
    std::uint32_t* const row = NewNumbers(column_count_);
    if (row == nullptr) return false;
    std::fill(row, row + column_count_, kNoText);
    SplitLines(splitter, row, [](std::uint32_t /*count*/) { return false; });
    default_row_ = row; // only now, because there are no defaults for its own empty fields
    --row_count_;
    return true;
}

/// Every cell ends with a delimiter of the text, so there are no more cells than bytes. Usually the grid is smaller;
/// where it isn't, most of the room for cells is never written to, and takes no page of a large block.
bool TabFile::SplitRows(TabSplitter& splitter) {
    const std::uint64_t grid = std::uint64_t{row_count_} * column_count_;
    cells_ = NewNumbers(static_cast<std::uint32_t>(std::min<std::uint64_t>(grid, text_size_)));
    if (cells_ == nullptr) return false;
    std::uint32_t row = 0, next = 0;
    bool has_memory = true;
    const auto end_row = [this, &row, &next, &has_memory, rows = row_count_,
                          columns = column_count_](std::uint32_t count) {
        ++row;
        next += count;
        if (count != columns || row_starts_ != nullptr) [[unlikely]]
            has_memory = StartRow(row, next);
        return has_memory && row != rows;
    };
    SplitLines(splitter, cells_, end_row);
    while (has_memory && row != row_count_) end_row(0); // rows that only bytes 0xFF count
    return has_memory;
}

/// Sets the number of the first cell of a row. The list begins at the end of the first row that is shorter than those
/// before it. False if memory runs out.
[[gnu::noinline]] bool TabFile::StartRow(std::uint32_t row, std::uint32_t cell) {
    if (row_starts_ == nullptr) {
        row_starts_ = NewNumbers(row_count_ + 1);
        if (row_starts_ == nullptr) return false;
        for (std::uint32_t full = 0; full < row; ++full) row_starts_[full] = full * column_count_;
    }
    row_starts_[row] = cell;
    return true;
}

/// Splits lines into cells, one line's after the other's, until `end_row` returns false. It is called with the number
/// of a row's cells at its end; the end of the text ends a row, too, if that has cells.
template <class EndRow>
void TabFile::SplitLines(TabSplitter& splitter, std::uint32_t* row, EndRow end_row) const {
    // A char that is written may alias any member, so the compiler would reload them for each field. Hence the local
    // copies.
    TabSplitter fields = splitter;
    char* const text = text_;
    const std::uint32_t columns = column_count_;
    const std::uint32_t* const defaults = default_row_;
    // A first field that is to be skipped is stored like any other; the next field, if there is one, overwrites it.
    const std::uint32_t skipped = (flags_ & TABFILE_SKIP_FIRST_COLUMN) != 0 ? 1 : 0;
    TabField field{};
    while (fields.Next(field) && field.end != FieldEnd::kTextEnd) {
        char* const cell = text + field.offset;
        cell[field.length] = '\0';
        if (field.end == FieldEnd::kReturnAndLineFeed) cell[field.length + 1] = '\0';
        const std::uint32_t column = field.column == 0 ? 0 : field.column - skipped;
        if (column < columns) {
            // Two loads and a selection instead of a branch: whether a field is empty is often mispredicted.
            const std::uint32_t if_empty = defaults != nullptr ? defaults[column] : field.offset;
            row[column] = *cell == '\0' ? if_empty : field.offset;
        }
        if (field.end == FieldEnd::kTab) continue;
        const std::uint32_t count = std::min(column + 1, columns);
        row += count;
        if (!end_row(count)) break;
    }
    if (field.end == FieldEnd::kTextEnd && field.column != 0) { // the tabs have closed some fields
        end_row(std::min(std::max(field.column - skipped, 1U), columns));
    }
    splitter = fields;
}

bool TabFile::Reserved(void* /*unused*/) { return true; }

std::uint32_t TabFile::GetRowCount() { return row_count_; }

std::uint32_t TabFile::GetColumnCount() { return column_count_; }

const char* TabFile::GetCell(std::uint32_t row, std::uint32_t column) {
    if (row >= row_count_ || column >= column_count_) return nullptr;
    std::size_t place = std::size_t{row} * column_count_ + column;
    if (row_starts_ != nullptr) {
        if (column >= row_starts_[row + 1] - row_starts_[row]) return nullptr;
        place = row_starts_[row] + column;
    }
    return cells_[place] == kNoText ? nullptr : text_ + cells_[place];
}

// A cell ends with its NUL, which is before the end of the text.

std::int32_t TabFile::GetInteger(std::uint32_t row, std::uint32_t column, std::int32_t default_value) {
    const char* cell = GetCell(row, column);
    return cell == nullptr ? default_value : TextToInteger(cell, text_ + text_size_);
}

std::int32_t TabFile::GetIntegerAlso(std::uint32_t row, std::uint32_t column, std::int32_t default_value) {
    return GetInteger(row, column, default_value);
}

float TabFile::GetReal(std::uint32_t row, std::uint32_t column, float default_value) {
    const char* cell = GetCell(row, column);
    return cell == nullptr ? default_value : TextToFloat(cell, text_ + text_size_);
}

} // namespace Tessarin

extern "C" ITabFile* CreateTabFile(IFileIO* file_io) { return Tessarin::TabFile::Create(file_io); }
