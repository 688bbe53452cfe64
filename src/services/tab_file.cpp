// A file is read into one buffer and cut there: tabs and line ends become NULs, and a cell is a pointer to its field.
// The lines and columns are counted before anything is cut, so that the grid is allocated once, cleared: cells for
// which the text has no field stay null.
//
// Time grows with the bytes of the text alone. The grid doesn't bound it, nor does the text bound the grid: with as
// many tabs in the first line as there are lines behind it, it has cells by the square. So the grid comes from calloc,
// which takes no page of a large block before it is written to, and a file whose grid can't be had doesn't open.
//
// The counts don't decide where the text is cut, as a 0xFF counts as a line end but is none; each store is checked
// against them.

#include "services/tab_file.h"

#include "files/file_io.h"
#include "files/whole_file.h"
#include "platform/number_text.h"
#include "strings/normal_forms.h"
#include "strings/string_table.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace Tessarin {
namespace {

bool CountsAsLineEnd(char byte) { return byte == '\n' || byte == '\xFF'; }

/// A chunk's count fits a byte, and its length is known when this is compiled: with both, the compiler adds up sixteen
/// bytes at a time.
std::uint32_t CountLines(const char* text, std::uint32_t size) {
    constexpr std::size_t kChunk = 240;
    const char* const last = text + size;
    std::uint32_t lines = 0;
    for (; static_cast<std::size_t>(last - text) >= kChunk; text += kChunk) {
        std::uint8_t in_chunk = 0;
        for (std::size_t i = 0; i < kChunk; ++i) {
            in_chunk = static_cast<std::uint8_t>(in_chunk + static_cast<std::uint8_t>(CountsAsLineEnd(text[i])));
        }
        lines += in_chunk;
    }
    for (; text != last; ++text) lines += CountsAsLineEnd(*text) ? 1U : 0U;
    return lines;
}

/// One more than the tabs of the first line. None if that is empty; the tabs alone if it doesn't end.
std::uint32_t CountColumns(const char* text, std::uint32_t size) {
    std::uint32_t tabs = 0;
    for (std::uint32_t at = 0; at < size; ++at) {
        if (CountsAsLineEnd(text[at])) return at == 0 ? 0 : tabs + 1;
        tabs += text[at] == '\t' ? 1U : 0U;
    }
    return tabs;
}

/// So many null cells; null if they can't be had.
const char** NewCells(std::uint64_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(const char*)) return nullptr;
    return static_cast<const char**>(std::calloc(static_cast<std::size_t>(count), sizeof(const char*)));
}

// Delimiters are searched in blocks of this many bytes: a bit for each in a word.
constexpr std::ptrdiff_t kBlock = 64;

/// Which bytes of a block are tabs or line feeds: the first byte is the lowest bit.
std::uint64_t DelimitersOf(const char* block) {
    unsigned char is_delimiter[kBlock];
    for (int i = 0; i < kBlock; ++i) is_delimiter[i] = block[i] == '\t' || block[i] == '\n' ? 1 : 0;

    // The product moves the lowest bit of each of a word's bytes, all others being 0, to a place of its own among the
    // highest eight bits, in the order of the bytes in memory; no two of its terms meet in one bit, so nothing carries.
    constexpr bool kLittle = std::endian::native == std::endian::little;
    constexpr std::uint64_t kGather = kLittle ? 0x0102040810204080 : 0x8040201008040201;
    std::uint64_t delimiters = 0;
    for (int i = 0; i < kBlock; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, is_delimiter + i, sizeof word);
        delimiters |= (word * kGather >> 56) << i;
    }
    return delimiters;
}

} // namespace

/// Goes through the fields of a text. What it has gone past may be written to.
class TabFile::Fields {
public:
    Fields(char* first, char* last) : last_(last), block_end_(first), field_(first) {}

    [[nodiscard]] bool AtEnd() const { return field_ == last_; }

    /// The current field's first byte.
    [[nodiscard]] char* First() const { return field_; }

    /// Moves behind the current field. Answers the tab or line feed that closes it; null if none does.
    char* Next() {
        while (delimiters_ == 0) {
            if (block_end_ == last_) {
                field_ = last_;
                return nullptr;
            }
            NextBlock();
        }
        char* delimiter = block_ + std::countr_zero(delimiters_);
        delimiters_ &= delimiters_ - 1;
        field_ = delimiter + 1;
        return delimiter;
    }

private:
    void NextBlock() {
        block_ = block_end_;
        if (last_ - block_ >= kBlock) {
            block_end_ = block_ + kBlock;
            delimiters_ = DelimitersOf(block_);
            return;
        }
        char rest[kBlock] = {};
        std::copy(block_, last_, rest);
        block_end_ = last_;
        delimiters_ = DelimitersOf(rest);
    }

    char* last_;
    char* block_ = nullptr;
    char* block_end_; // where the next block begins
    char* field_;
    std::uint64_t delimiters_ = 0; // those of the block that Next hasn't come to
};

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
    WholeFile file;
    if (!file.Read(*file_io_, path_, 0)) return false;
    text_ = file.bytes.release();
    text_size_ = file.size;
    if (text_size_ == 0 || Split()) return true;
    Clear();
    return false;
}

/// The columns are those of the file's first line, even if it is skipped.
bool TabFile::Split() {
    row_count_ = CountLines(text_, text_size_);
    column_count_ = CountColumns(text_, text_size_);
    char* const last = text_ + text_size_;
    char* first = text_;
    if ((flags_ & TABFILE_SKIP_FIRST_LINE) != 0) {
        if (row_count_ <= 1) return false;
        first = std::find(text_, last, '\n');
        if (first != last) ++first; // none is found if bytes 0xFF alone made the count
        --row_count_;
    }
    if ((flags_ & TABFILE_SKIP_FIRST_COLUMN) != 0) {
        if (column_count_ <= 1) return false;
        --column_count_;
    }
    if (column_count_ == 0) return true;
    Fields fields(first, last);
    if ((flags_ & TABFILE_DEFAULT_ROW) != 0 && !SplitDefaultRow(fields)) return false;
    return row_count_ == 0 || SplitRows(fields);
}

bool TabFile::SplitDefaultRow(Fields& fields) {
    if (row_count_ <= 1) return false;
    const char** row = NewCells(column_count_);
    if (row == nullptr) return false;
    SplitLine(fields, row);
    default_row_ = row; // only now: its own empty fields have no defaults
    --row_count_;
    return true;
}

bool TabFile::SplitRows(Fields& fields) {
    cells_ = NewCells(std::uint64_t{row_count_} * column_count_);
    if (cells_ == nullptr) return false;
    const char** row = cells_;
    for (current_row_ = 0; current_row_ < row_count_ && !fields.AtEnd(); ++current_row_) {
        SplitLine(fields, row);
        row += column_count_;
    }
    return true;
}

/// A first field that is to be skipped is stored like any other; the field behind it, if there is one, takes its place.
void TabFile::SplitLine(Fields& fields, const char** row) const {
    // A NUL in the text could be a byte of anything that has an address, so that all of it would be read anew for each
    // field: what the loop needs is copied.
    Fields here = fields;
    const std::uint32_t columns = column_count_;
    const char* const* const defaults = default_row_;
    bool skips = (flags_ & TABFILE_SKIP_FIRST_COLUMN) != 0;
    std::uint32_t column = 0;
    for (bool line_ends = false; !line_ends;) {
        const char* field = here.First();
        char* delimiter = here.Next();
        if (delimiter == nullptr) break;
        line_ends = *delimiter == '\n';
        *delimiter = '\0';
        // There is a byte in front: a text that begins with a line feed has no columns, and isn't split.
        if (line_ends && delimiter[-1] == '\r') delimiter[-1] = '\0';
        if (column < columns) row[column] = *field == '\0' && defaults != nullptr ? defaults[column] : field;
        if (!skips) ++column;
        skips = false;
    }
    fields = here;
}

bool TabFile::Reserved(void* /*unused*/) { return true; }

std::uint32_t TabFile::GetRowCount() { return row_count_; }

std::uint32_t TabFile::GetColumnCount() { return column_count_; }

const char* TabFile::GetCell(std::uint32_t row, std::uint32_t column) {
    if (row >= row_count_ || column >= column_count_) return nullptr;
    return cells_[std::size_t{row} * column_count_ + column];
}

// A cell ends with its NUL, before the text does.

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
