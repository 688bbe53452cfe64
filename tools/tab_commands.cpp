// `tessarin tab`. A tab file's path goes to the file service in lower case and cut, so that a host can look it up in an
// archive; a shell means the very file that it names.

#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/files.h"

#include <tessarin/tab_files.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Command {

namespace {

struct GridReleaser {
    void operator()(ITabFile* grid) const { grid->Release(); }
};
using Grid = std::unique_ptr<ITabFile, GridReleaser>;

struct Arguments {
    std::string file;
    std::uint32_t row = 0;
    std::uint32_t column = 0;
    bool has_defaults = false;
    bool skips_line = false;
    bool skips_column = false;
    bool as_json = false;
    Asking asking;
};

// A file service that knows one file, by any name.
class OneFile : public IFileIO {
public:
    explicit OneFile(std::string path) : path_(std::move(path)) {}

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

Grid Open(const Input& input, const Arguments& given) {
    const std::uint32_t flags = (given.has_defaults ? TABFILE_DEFAULT_ROW : 0U) |
                                (given.skips_line ? TABFILE_SKIP_FIRST_LINE : 0U) |
                                (given.skips_column ? TABFILE_SKIP_FIRST_COLUMN : 0U);
    OneFile service(input.Path());
    Grid grid(CreateTabFile(&service)); // which asks it in Open alone
    if (!grid || !grid->Open(input.Path().c_str(), flags)) {
        throw Failure(input.Name(), "has nothing beside what is skipped, or can't be read whole");
    }
    return grid;
}

// A cell as a terminal can show it: plain if it can, else quoted.
std::string Shown(const char* cell) {
    if (!cell) return "";
    const std::string quoted = Quote(cell);
    const std::string plain = quoted.substr(1, quoted.size() - 2);
    return plain == cell ? plain : quoted;
}

// In characters, as far as a character is a column.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

void DrawGrid(ITabFile& grid) {
    std::vector<std::size_t> widths(grid.GetColumnCount());
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        for (std::uint32_t column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths[column], Width(Shown(grid.GetCell(row, column))));
        }
    }
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        std::string line;
        for (std::uint32_t column = 0; column < widths.size(); ++column) {
            const std::string cell = Shown(grid.GetCell(row, column));
            line += cell + std::string(widths[column] - Width(cell) + 2, ' ');
        }
        line.resize(line.find_last_not_of(' ') + 1);
        std::printf("%s\n", line.c_str());
    }
}

Row CellRow(const char* cell, std::size_t depth) {
    Row row;
    row.shape = cell ? Shape::Text : Shape::Literal;
    row.value = cell ? cell : "null";
    row.depth = depth;
    row.is_in_array = true;
    return row;
}

Row ListRow(std::size_t depth) {
    Row row = CellRow("", depth);
    row.shape = Shape::Array;
    return row;
}

// A list of lists; a cell that isn't there is null.
void WriteGrid(ITabFile& grid) {
    Outline rows{ListRow(0)};
    for (std::uint32_t row = 0; row < grid.GetRowCount(); ++row) {
        rows.push_back(ListRow(1));
        for (std::uint32_t column = 0; column < grid.GetColumnCount(); ++column) {
            rows.push_back(CellRow(grid.GetCell(row, column), 2));
        }
    }
    WriteJson(rows, stdout);
}

int ShowCommand(const Arguments& given) {
    const Input input(given.file);
    const Grid grid = Open(input, given);
    given.as_json ? WriteGrid(*grid) : DrawGrid(*grid);
    return kDone;
}

int GetCommand(const Arguments& given) {
    const Input input(given.file);
    const Grid grid = Open(input, given);
    const char* const cell = grid->GetCell(given.row, given.column);
    const std::string way = "cell " + std::to_string(given.row) + ' ' + std::to_string(given.column);
    return Answer(input.Name(), way, cell ? Outline{CellRow(cell, 0)} : Outline{}, given.asking);
}

std::shared_ptr<Arguments> OfferFile(CLI::App& command) {
    auto given = std::make_shared<Arguments>();
    command.add_option("FILE", given->file, "The tab file; - is standard input")->required();
    command.add_flag("--default-row", given->has_defaults, "The first row holds defaults for empty fields");
    command.add_flag("--skip-first-line", given->skips_line, "The first line is no row; it counts the columns");
    command.add_flag("--skip-first-column", given->skips_column, "The first field of each line is no cell");
    return given;
}

} // namespace

void OfferTab(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("tab", "Tab-separated files");
    group->require_subcommand(1);
    CLI::App* const show = group->add_subcommand("show", "Print a file's grid in columns");
    const auto shown = OfferFile(*show);
    show->add_flag("--json", shown->as_json, "Write JSON, for scripts");
    show->callback([&job, shown] { job = [shown] { return ShowCommand(*shown); }; });
    CLI::App* const get = group->add_subcommand("get", "Print one cell");
    const auto asked = OfferFile(*get);
    get->add_option("ROW", asked->row, "From 0")->required();
    get->add_option("COLUMN", asked->column, "From 0")->required();
    OfferAsking(*get, asked->asking);
    get->callback([&job, asked] { job = [asked] { return GetCommand(*asked); }; });
}

} // namespace Command
