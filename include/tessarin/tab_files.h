/// \file
/// Tab-separated text files, read into a grid of cells. C++ only.
///
/// Fields are delimited by tabs, lines end with LF or CR LF; there are no quotes and no escapes. A last line without an
/// LF doesn't count as a line: none of its fields is in the grid. Fields are split in place: a NUL in a field ends its
/// text for the reader of the cell.

#ifndef TESSARIN_TAB_FILES_H
#define TESSARIN_TAB_FILES_H

#include "tessarin/documents.h"
#include "tessarin/types.h"

#include <cstdint>

/// How ITabFile::Open reads a file; the flags may be combined.
enum TabFileFlags : std::uint32_t {
    TABFILE_DEFAULT_ROW = 1,      ///< the first line that isn't skipped holds defaults for empty fields, not data
    TABFILE_SKIP_FIRST_LINE = 2,  ///< the file's first line is ignored, except that its fields count the columns
    TABFILE_SKIP_FIRST_COLUMN = 4 ///< the first field of each line is ignored
};

/// The grid of one tab file.
///
/// Before the first Open, and after one that failed, the grid has no rows and no columns.
///
/// Threads: one at a time for Open and Release; between them any number may read.
struct ITabFile {
    /// Ends the object with the texts of all its cells, but not a file service that came from the host.
    virtual void Release() = 0;

    /// Reads a file. The content of an earlier Open is dropped first, with the texts of its cells, even when this one
    /// fails.
    ///
    /// The first line of the file, skipped or not, sets the number of columns: one more than its tabs, or 0 if it is
    /// empty; a skipped column isn't counted. A file without a line end has as many columns as tabs, and no rows. Every
    /// other line is a row: fields beyond the columns are ignored, and missing ones have no cell. A line without a tab
    /// has no column to skip: its one field stays, in column 0. A byte 0xFF counts as one more line, and ends the first
    /// line for the count of its columns, but it splits nothing: the row that it adds has no cells and is at the end.
    ///
    /// path     passed to the file service in its path form, as cstr_path makes it
    /// flags    TabFileFlags; other bits are ignored
    /// returns  false, the grid empty, for a null or empty path, if the file can't be read whole, if nothing is left
    ///          besides the skipped line, the skipped column or the line of defaults, and when memory runs out for the
    ///          text or its cells; true for an empty file, whatever the flags
    virtual bool Open(const char* path, std::uint32_t flags) = 0;

    /// A reserved place in the order of operations. Always true.
    virtual bool Reserved(void* unused) = 0;

    /// The number of rows in the grid, without the line of defaults and the skipped line.
    virtual std::uint32_t GetRowCount() = 0;
    /// The number of columns in the grid, without the skipped one.
    virtual std::uint32_t GetColumnCount() = 0;

    /// A cell's text, borrowed, valid until Release or the next Open. An empty field has the text of the default row
    /// for its column, if there is such a row; otherwise it is empty. Rows and columns count from 0.
    /// returns  null outside the grid, where a line had no such field, and for an empty field whose default is missing
    virtual const char* GetCell(std::uint32_t row, std::uint32_t column) = 0;

    /// The number that a cell's text begins with, 0 if it begins with none. Each call reads the text anew, the same in
    /// every locale. An integer far out of range is -1 or 0.
    /// returns  `default_value` where GetCell returns null
    virtual std::int32_t GetInteger(std::uint32_t row, std::uint32_t column, std::int32_t default_value) = 0;
    /// The same as GetInteger.
    virtual std::int32_t GetIntegerAlso(std::uint32_t row, std::uint32_t column, std::int32_t default_value) = 0;
    /// As GetInteger, with a fraction and an exponent.
    virtual float GetReal(std::uint32_t row, std::uint32_t column, float default_value) = 0;

protected:
    virtual ~ITabFile() = default;
};

extern "C" {

/// Makes an empty object for one tab file.
/// file_io  the file service to use, borrowed: it must outlive the object; null for the library's own
/// returns  an object that the caller owns and ends with Release; null when memory runs out for it. If memory runs out
///          for its file service, every Open returns false.
/// Threads: any, at once
TESSARIN_API ITabFile* CreateTabFile(IFileIO* file_io);

} // extern "C"

#endif
