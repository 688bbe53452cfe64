// The commands `tessarin table`. A new one also goes into completion.bash and tessarin.1.

#include "tools/atomic_output_file.h"
#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/table_document.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

namespace Command {

namespace {

struct Arguments {
    std::string file;
    std::string path;
    std::string output = "-";
    TreeOptions tree;
    ValueOptions value;
};

int RunShow(const Arguments& arguments) {
    const KeyPath path = ParseKeyPath(arguments.path);
    const InputFile input(arguments.file);
    const Table table = OpenTable(input);
    const std::string& title = path.empty() ? input.Name() : arguments.path;
    const RowList rows = ListEntry(table.get(), path, title, arguments.tree.depth);
    if (rows.empty()) throw Failure(input.Name(), "has no " + arguments.path);
    return PrintTree(rows, arguments.tree);
}

int RunGet(const Arguments& arguments) {
    const KeyPath path = ParseKeyPath(arguments.path);
    const InputFile input(arguments.file);
    const Table table = OpenTable(input);
    const RowList rows = ListEntry(table.get(), path, "", kUnlimitedDepth);
    return PrintValue(input.Name(), arguments.path, rows, arguments.value);
}

int RunJson(const Arguments& arguments) {
    AtomicOutputFile output(arguments.output); // first, as it may be the input, too
    const InputFile input(arguments.file);
    const Table table = OpenTable(input);
    void* data = nullptr;
    std::uint32_t size = 0;
    if (table->SaveBuffer(&data, &size) == 0) throw Failure(input.Name(), "has no JSON form, or memory ran out");
    const std::unique_ptr<void, decltype(&std::free)> block(data, &std::free);
    output.Write({static_cast<const char*>(data), size});
    output.Commit();
    return kSucceeded;
}

CLI::Option* AddKey(CLI::App& command, Arguments& arguments) {
    return command.add_option("KEY", arguments.path, "Keys with / between them; \"a/b\" in quotes is one key");
}

} // namespace

void AddTableCommands(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("table", "Tables in readable text or JSON");
    group->require_subcommand(1);
    const auto add = [&](const char* name, const char* description, int (*run)(const Arguments&)) {
        auto added = AddCommand(*group, job, name, description, run);
        added.first->add_option("FILE", added.second->file, "A readable text or a JSON document; - is standard input")
            ->required();
        return added;
    };
    const auto [show, shown] = add("show", "Draw the tree of a document, or a part of it", RunShow);
    AddKey(*show, *shown);
    AddTreeOptions(*show, shown->tree);
    const auto [get, requested] = add("get", "Print one value", RunGet);
    AddKey(*get, *requested)->required();
    AddValueOptions(*get, requested->value);
    const auto [json, written] = add("json", "Write a document as JSON", RunJson);
    json->add_option("OUT", written->output, "The JSON file; standard output if it is left out");
}

} // namespace Command
