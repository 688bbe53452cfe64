// The implementation of ITabFile: a tab-separated file as a grid of cells. tab_file.cpp shows the layout.

#ifndef TESSARIN_SERVICES_TAB_FILE_H
#define TESSARIN_SERVICES_TAB_FILE_H

#include "tessarin/tab_files.h"

#include <cstdint>

namespace Tessarin {

class TabSplitter;

/// Invariants: `text_` is null if and only if there is no file or the file is empty; the counts are then 0. The numbers
/// in `cells_` and `default_row_` are offsets in `text_`, or kNoText. A row has at most `column_count_` cells, and
/// exactly as many if `row_starts_` is null.
class TabFile final : public ::ITabFile {
public:
    /// Null if memory runs out for the object. If `file_io` is null, the object makes its own file service.
    static TabFile* Create(::IFileIO* file_io);

    void Release() override;
    bool Open(const char* path, std::uint32_t flags) override;
    bool Reserved(void* unused) override;
    std::uint32_t GetRowCount() override;
    std::uint32_t GetColumnCount() override;
    const char* GetCell(std::uint32_t row, std::uint32_t column) override;
    std::int32_t GetInteger(std::uint32_t row, std::uint32_t column, std::int32_t default_value) override;
    std::int32_t GetIntegerAlso(std::uint32_t row, std::uint32_t column, std::int32_t default_value) override;
    float GetReal(std::uint32_t row, std::uint32_t column, float default_value) override;

private:
    ~TabFile() override;

    void Clear();
    bool Load();
    bool Split();
    bool SplitDefaultRow(TabSplitter& splitter);
    bool SplitRows(TabSplitter& splitter);
    bool StartRow(std::uint32_t row, std::uint32_t cell);
    template <class EndRow>
    void SplitLines(TabSplitter& splitter, std::uint32_t* row, EndRow end_row) const;

    static constexpr std::uint32_t kNoText = UINT32_MAX; // an empty field whose column has no default

    ::IFileIO* file_io_ = nullptr; // null if memory ran out for the object's own service
    bool owns_file_io_ = false;
    std::uint32_t flags_ = 0;
    cstr path_ = nullptr; // the path of the last Open, in path form
    std::uint32_t row_count_ = 0;
    std::uint32_t column_count_ = 0;
    char* text_ = nullptr; // has no NUL at its end; it needs none, as an unclosed last field isn't used
    std::uint32_t text_size_ = 0;
    std::uint32_t* cells_ = nullptr;       // row by row
    std::uint32_t* row_starts_ = nullptr;  // for each row the number of its first cell, and the number of all cells
    std::uint32_t* default_row_ = nullptr; // null if none is in use, and while it is being split
};

} // namespace Tessarin

#endif
