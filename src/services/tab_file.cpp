// The grid of a tab file. The file is read into one buffer; TabSplitter finds the fields; tabs and line ends become
// NULs in place, and a cell is a pointer to its field:
//
//     text_    a NUL b c NUL NUL NUL d NUL        "a TAB bc CR LF TAB d LF" as it is after the split
//              |     |           |   |
//     cells_   0,0   0,1         1,0 1,1          an empty field is an empty string, a missing one a null
//
// Invariants:
// 1. The lines and columns are counted before the text is split, so that the grid is allocated once. It starts cleared:
//    a cell stays null if the text has no field for it.
// 2. The counts don't decide where the text is split, because a 0xFF counts as a line end but doesn't end a line. Each
//    store is checked against the counts.
// 3. Time depends only on the size of the text, not on that of the grid. The grid may be far larger than the text: if
//    the first line has as many tabs as there are lines after it, the number of cells is about the square of that
//    number. So the grid comes from calloc, which takes no page of a large block before it is written to. A file whose
//    grid can't be allocated doesn't open.

#include "services/tab_file.h"

#include "files/file_io.h"
#include "files/whole_file.h"
#include "platform/number_text.h"
#include "services/tab_splitter.h"
#include "strings/normal_forms.h"
#include "strings/string_table.h"

#include <cstdlib>
#include <cstring>
#include <limits>
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

/// `count` null cells; null if they can't be allocated.
const char** NewCells(std::uint64_t count) {
    // Only where std::size_t has 32 bits: the text has fewer than 2^31 bytes, and each row and each column except one
    // takes one of them, so there are at most about 2^60 cells.
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(const char*)) return nullptr;
    return static_cast<const char**>(std::calloc(static_cast<std::size_t>(count), sizeof(const char*)));
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
    std::free(default_row_);
    text_ = nullptr;
    cells_ = nullptr;
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
    const char** row = NewCells(column_count_);
    if (row == nullptr) return false;
    SplitLines(splitter, 1, row);
    default_row_ = row; // only now, because there are no defaults for its own empty fields
    --row_count_;
    return true;
}

bool TabFile::SplitRows(TabSplitter& splitter) {
    cells_ = NewCells(std::uint64_t{row_count_} * column_count_);
    if (cells_ == nullptr) return false;
    SplitLines(splitter, row_count_, cells_);
    return true;
}

/// Splits the next lines, at most `count`, and fills one row with the fields of each.
void TabFile::SplitLines(TabSplitter& splitter, std::uint32_t count, const char** row) const {
    // A char that is written may alias any member, so the compiler would reload them for each field. Hence the local
    // copies.
    TabSplitter fields = splitter;
    char* const text = text_;
    const std::uint32_t columns = column_count_;
    const char* const* const defaults = default_row_;
    // A first field that is to be skipped is stored like any other; the next field, if there is one, overwrites it.
    const std::uint32_t skipped = (flags_ & TABFILE_SKIP_FIRST_COLUMN) != 0 ? 1 : 0;
    for (TabField field; fields.Next(field) && field.end != FieldEnd::kTextEnd;) {
        char* const cell = text + field.offset;
        cell[field.length] = '\0';
        if (field.end == FieldEnd::kReturnAndLineFeed) cell[field.length + 1] = '\0';
        const std::uint32_t column = field.column == 0 ? 0 : field.column - skipped;
        if (column < columns) {
            // Two loads and a selection instead of a branch: whether a field is empty is often mispredicted.
            const char* const if_empty = defaults != nullptr ? defaults[column] : cell;
            row[column] = *cell == '\0' ? if_empty : cell;
        }
        if (field.end == FieldEnd::kTab) continue;
        if (--count == 0) break;
        row += columns;
    }
    splitter = fields;
}

bool TabFile::Reserved(void* /*unused*/) { return true; }

std::uint32_t TabFile::GetRowCount() { return row_count_; }

std::uint32_t TabFile::GetColumnCount() { return column_count_; }

const char* TabFile::GetCell(std::uint32_t row, std::uint32_t column) {
    if (row >= row_count_ || column >= column_count_) return nullptr;
    return cells_[std::size_t{row} * column_count_ + column];
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
