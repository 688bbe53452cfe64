// The options that commands share, and how they print trees, values and messages. Failed writes to standard output are
// detected at the end, in FlushOutput.

#include "tools/command_line.h"

#include "tools/draw_tree.h"
#include "tools/failure.h"
#include "tools/json_output.h"
#include "tools/terminal.h"
#include "tools/terminal_text.h"

#include <cstdio>
#include <filesystem>
#include <new>

namespace Command {

void AddTreeOptions(CLI::App& command, TreeOptions& options) {
    command.add_flag("--json", options.as_json, "Write JSON, for scripts");
    command.add_option("--color", options.colour, "Use colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    command.add_option("--depth", options.depth, "Draw only this many levels")->check(CLI::NonNegativeNumber);
}

int PrintTree(const RowList& rows, const TreeOptions& options) {
    if (options.as_json) {
        WriteJson(rows, stdout);
    } else {
        const bool has_colour = options.colour == "auto" ? SupportsColour(stdout) : options.colour == "always";
        DrawTree(rows, has_colour, stdout);
    }
    return kSucceeded;
}

void AddValueOptions(CLI::App& command, ValueOptions& options) {
    command.add_flag("--json", options.as_json, "Write JSON, for scripts; also prints tables and arrays");
    command.add_option("--fallback", options.fallback, "Print this text if there is no value");
}

int PrintValue(const std::string& file, const std::string& path, const RowList& rows, const ValueOptions& options) {
    if (rows.empty() && !options.fallback) throw Failure(file, "has no " + path);
    Row fallback;
    fallback.value = options.fallback.value_or("");
    const RowList& printed = rows.empty() ? RowList{fallback} : rows;
    const Row& row = printed.front();
    if (options.as_json) {
        WriteJson(printed, stdout);
    } else if (IsContainer(row)) {
        throw Failure(file, path + " is not a plain value: " + Describe(row));
    } else {
        std::fwrite(row.value.data(), 1, row.value.size(), stdout);
        std::fputc('\n', stdout);
    }
    return kSucceeded;
}

KeyPath ParseKeyPath(const std::string& path) {
    std::optional<KeyPath> keys = SplitKeyPath(path);
    if (!keys) throw CLI::ValidationError("KEY", "a quote is not closed, or text follows its end: " + path);
    return *std::move(keys);
}

std::string MessageOf(const std::exception& failure) {
    if (const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&failure)) {
        return Printable(file->path1().string() + ": " + file->code().message());
    }
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "memory ran out";
    return Printable(failure.what());
}

void FlushOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw Failure("standard output", "can't be written");
}

} // namespace Command
