#include "tools/command_line.h"

#include "tools/failure.h"
#include "tools/terminal.h"

#include <cstdio>
#include <filesystem>
#include <new>

namespace Command {

void OfferShowing(CLI::App& command, Showing& showing) {
    command.add_flag("--json", showing.as_json, "Write JSON, for scripts");
    command.add_option("--color", showing.colour, "Colours: auto, always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    command.add_option("--depth", showing.depth, "Draw this many levels only")->check(CLI::NonNegativeNumber);
}

int Show(const Outline& rows, const Showing& showing) {
    if (showing.as_json) {
        WriteJson(rows, stdout);
    } else {
        const bool has_colour = showing.colour == "auto" ? TakesColour(stdout) : showing.colour == "always";
        Draw(rows, has_colour, stdout);
    }
    return kDone;
}

void OfferAsking(CLI::App& command, Asking& asking) {
    command.add_flag("--json", asking.as_json, "Write JSON, for scripts; tables and arrays too");
    command.add_option("--fallback", asking.fallback, "What to print if there is no value");
}

int Answer(const std::string& file, const std::string& way, const Outline& rows, const Asking& asking) {
    if (rows.empty() && !asking.fallback) throw Failure(file, "has no " + way);
    Row missing;
    missing.value = asking.fallback.value_or("");
    const Outline& answer = rows.empty() ? Outline{missing} : rows;
    const Row& row = answer.front();
    if (asking.as_json) {
        WriteJson(answer, stdout);
    } else if (row.shape == Shape::Table || row.shape == Shape::Array) {
        throw Failure(file, way + " is no plain value: " + Describe(row));
    } else {
        std::fwrite(row.value.data(), 1, row.value.size(), stdout);
        std::fputc('\n', stdout);
    }
    return kDone;
}

KeyPath ParseWay(const std::string& way) {
    std::optional<KeyPath> pieces = SplitKeys(way);
    if (!pieces) throw CLI::ValidationError("KEY", "a quote is open, or something stands behind one: " + way);
    return *pieces;
}

std::string MessageOf(const std::exception& failure) {
    if (const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&failure)) {
        return Printable(file->path1().string() + ": " + file->code().message());
    }
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "memory ran out";
    return Printable(failure.what());
}

void FinishOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) throw Failure("standard output", "can't be written");
}

} // namespace Command
