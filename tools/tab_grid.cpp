// The library passes a tab file's path to the file service normalised, in lower case, so that a host can find it in an
// archive. In a shell a path means exactly the file that it names, so the grid gets its own file service, which ignores
// paths.

#include "tools/tab_grid.h"

#include "tools/failure.h"
#include "tools/terminal_text.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Command {

namespace {

// A file service in which every path opens the same file.
class SingleFileService : public IFileIO {
public:
    explicit SingleFileService(std::string path) : path_(std::move(path)) {}

    void* Open(const char* /*path*/, std::int32_t mode) override {
        return mode == 0 ? CreateReadFile(path_.c_str()) : nullptr;
    }
    void Close(void* handle) override {
        if (handle) Reader(handle)->Release();
    }
    std::int32_t GetSize(void* handle) override { return handle ? Reader(handle)->GetSize() : 0; }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        return handle ? Reader(handle)->Read(buffer, buffer_size, count) : 0;
    }
    std::uint32_t Write(void* /*handle*/, const void* /*buffer*/, std::uint32_t /*size*/) override { return 0; }
    bool Exists(const char* /*path*/) override { return true; }

private:
    static Tessarin::IRead* Reader(void* handle) { return static_cast<Tessarin::IRead*>(handle); }

    std::string path_;
};

// A cell as a terminal can show it: in quotes if something in it needs an escape, plain otherwise.
std::string FormatCell(const char* cell) {
    if (!cell) return "";
    const std::string quoted = Quote(cell);
    const std::string plain = quoted.substr(1, quoted.size() - 2);
    return plain == cell ? plain : quoted;
}

} // namespace

Grid OpenGrid(const InputFile& input, std::uint32_t flags) {
    SingleFileService service(input.Path());
    Grid grid(CreateTabFile(&service)); // only Open uses the service
    if (!grid || !grid->Open(input.Path().c_str(), flags)) {
        throw Failure(input.Name(), "has nothing besides what is skipped, or can't be read whole");
    }
    return grid;
}

void DrawGrid(ITabFile& grid, std::FILE* out) {
    std::vector<std::size_t> widths(grid.GetColumnCount());
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        for (std::uint32_t column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths[column], DisplayWidth(FormatCell(grid.GetCell(row, column))));
        }
    }
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        std::string line;
        for (std::uint32_t column = 0; column < widths.size(); ++column) {
            const std::string cell = FormatCell(grid.GetCell(row, column));
            line += cell + std::string(widths[column] - DisplayWidth(cell) + 2, ' ');
        }
        line.resize(line.find_last_not_of(' ') + 1);
        std::fprintf(out, "%s\n", line.c_str());
    }
}

Row RowOfCell(const char* cell, std::size_t depth) {
    Row row;
    row.shape = cell ? Shape::Text : Shape::Literal;
    row.value = cell ? cell : "null";
    row.depth = depth;
    row.is_in_array = true;
    return row;
}

RowList ListGrid(ITabFile& grid) {
    const auto array = [](std::size_t depth) {
        Row row = RowOfCell("", depth);
        row.shape = Shape::Array;
        return row;
    };
    RowList rows{array(0)};
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        rows.push_back(array(1));
        for (std::uint32_t column = 0; column < grid.GetColumnCount(); ++column) {
            rows.push_back(RowOfCell(grid.GetCell(row, column), 2));
        }
    }
    return rows;
}

} // namespace Command
