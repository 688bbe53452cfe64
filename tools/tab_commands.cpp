// The commands `tessarin tab`.

#include "tools/command_line.h"
#include "tools/json_output.h"
#include "tools/tab_grid.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace Command {

namespace {

struct Arguments {
    std::string file;
    std::uint32_t row = 0;
    std::uint32_t column = 0;
    bool has_default_row = false;
    bool skips_line = false;
    bool skips_column = false;
    bool as_json = false;
    ValueOptions value;
};

Grid OpenGrid(const InputFile& input, const Arguments& arguments) {
    return OpenGrid(input, (arguments.has_default_row ? TABFILE_DEFAULT_ROW : 0U) |
                               (arguments.skips_line ? TABFILE_SKIP_FIRST_LINE : 0U) |
                               (arguments.skips_column ? TABFILE_SKIP_FIRST_COLUMN : 0U));
}

int RunShow(const Arguments& arguments) {
    const InputFile input(arguments.file);
    const Grid grid = OpenGrid(input, arguments);
    arguments.as_json ? WriteJson(ListGrid(*grid), stdout) : DrawGrid(*grid, stdout);
    return kSucceeded;
}

int RunGet(const Arguments& arguments) {
    const InputFile input(arguments.file);
    const Grid grid = OpenGrid(input, arguments);
    const char* const cell = grid->GetCell(arguments.row, arguments.column);
    const std::string place = "cell " + std::to_string(arguments.row) + ' ' + std::to_string(arguments.column);
    return PrintValue(input.Name(), place, cell ? RowList{RowOfCell(cell, 0)} : RowList{}, arguments.value);
}

void AddFileAndFlags(CLI::App& command, Arguments& arguments) {
    command.add_option("FILE", arguments.file, "The tab file; - is standard input")->required();
    command.add_flag("--default-row", arguments.has_default_row, "Take the first row as defaults for empty fields");
    command.add_flag("--skip-first-line", arguments.skips_line, "Skip the first line; it still counts the columns");
    command.add_flag("--skip-first-column", arguments.skips_column, "Skip the first field of each line");
}

} // namespace

void AddTabCommands(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("tab", "Tab-separated files");
    group->require_subcommand(1);
    const auto [show, shown] = AddCommand(*group, job, "show", "Print the grid of a file in columns", RunShow);
    AddFileAndFlags(*show, *shown);
    show->add_flag("--json", shown->as_json, "Write JSON, for scripts");
    const auto [get, requested] = AddCommand(*group, job, "get", "Print one cell", RunGet);
    AddFileAndFlags(*get, *requested);
    get->add_option("ROW", requested->row, "The row, counted from 0")->required();
    get->add_option("COLUMN", requested->column, "The column, counted from 0")->required();
    AddValueOptions(*get, requested->value);
}

} // namespace Command
