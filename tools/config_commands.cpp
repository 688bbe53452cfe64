// The commands `tessarin config`. A new one also goes into completion.bash and tessarin.1.

#include "tools/command_line.h"
#include "tools/compile_file.h"
#include "tools/compile_folder.h"
#include "tools/config_diff.h"
#include "tools/config_edit.h"
#include "tools/config_tree.h"
#include "tools/draw_tree.h"
#include "tools/failure.h"
#include "tools/json_output.h"
#include "tools/terminal_text.h"

#include <cstdio>
#include <utility>

namespace Command {

namespace {

// The arguments of one command; each command uses those that it has options for.
struct Arguments {
    std::string file;
    std::string path;
    std::string text;
    std::string output;
    TreeOptions tree;
    ValueOptions value;
    CompileFolderOptions folder;
    bool is_table = false;
    bool is_array = false;
    bool creates_parents = false;
    CLI::Option* text_option = nullptr; // distinguishes an empty text from none
};

// ------------------------------------------------------------------------------------------------------------- reading

int RunShow(const Arguments& arguments) {
    const KeyPath path = ParseKeyPath(arguments.path);
    const InputFile input(arguments.file);
    const ConfigFile file = OpenConfig(input);
    const Node node = FindNode(RootOf(file), path);
    if (!node) throw Failure(input.Name(), "has no " + arguments.path);
    const std::string& title = path.empty() ? input.Name() : arguments.path;
    return PrintTree(ListNode(node, title, arguments.tree.depth), arguments.tree);
}

int RunGet(const Arguments& arguments) {
    const KeyPath path = ParseKeyPath(arguments.path);
    const InputFile input(arguments.file);
    const ConfigFile file = OpenConfig(input);
    const Node node = FindNodeOrDefault(RootOf(file), path);
    const RowList rows = node ? ListNode(node, "", kUnlimitedDepth) : RowList{};
    return PrintValue(input.Name(), arguments.path, rows, arguments.value);
}

Row DiffRow(Shape shape, std::size_t depth, const char* key, const std::string& value = "") {
    Row row;
    row.shape = shape;
    row.depth = depth;
    row.key = key;
    row.value = value;
    row.is_in_array = depth == 1;
    return row;
}

// Adds one object to the list of differences: the path, and the values in the files that have it.
void ListDifference(RowList& list, const Difference& found) {
    const auto add = [&](const char* key, const std::string& value) {
        list.push_back(DiffRow(Shape::Text, 2, key, value));
    };
    const auto add_side = [&](const char* key, const Row* row) {
        if (row) add(key, row->shape == Shape::Text ? row->value : Describe(*row));
    };
    list.push_back(DiffRow(Shape::Table, 1, ""));
    add("key", found.path);
    add_side("before", found.before);
    add_side("after", found.after);
}

int RunDiff(const Arguments& arguments) {
    if (arguments.file == "-" && arguments.output == "-") {
        throw CLI::ValidationError("AFTER", "only one of the two files can be standard input");
    }
    const InputFile before(arguments.file);
    const InputFile after(arguments.output);
    const ConfigFile first = OpenConfig(before);
    const ConfigFile second = OpenConfig(after);
    int status = kSucceeded;
    const auto print = [](char sign, const Difference& found, const Row* row) {
        if (row) std::printf("%c %s = %s\n", sign, Printable(found.path).c_str(), Describe(*row).c_str());
    };
    RowList list{DiffRow(Shape::Array, 0, "")};
    CompareTrees(RootOf(first), RootOf(second), [&](const Difference& found) {
        status = kFailed;
        if (arguments.tree.as_json) return ListDifference(list, found);
        print('-', found, found.before);
        print('+', found, found.after);
    });
    if (arguments.tree.as_json) WriteJson(list, stdout);
    return status;
}

// ------------------------------------------------------------------------------------------------------------ changing

// Changes a file in place, or writes the result to the output. A file from standard input is written to standard
// output.
template <class Change>
int ChangeFile(const Arguments& arguments, Change change) {
    const KeyPath path = ParseKeyPath(arguments.path);
    if (path.empty()) throw CLI::ValidationError("KEY", "is empty");
    // First, as this locks the file: what another command changes between the load and the save would be lost.
    AtomicOutputFile output(arguments.output.empty() ? arguments.file : arguments.output);
    const InputFile input(arguments.file);
    const ConfigFile file = OpenConfigForEditing(input);
    change(EditTarget{file, input.Name(), arguments.path, path});
    SaveAsText(file, output, arguments.path);
    return kSucceeded;
}

int RunSet(const Arguments& arguments) {
    return ChangeFile(arguments, [&](const EditTarget& target) { SetEntry(target, arguments.text); });
}

int RunAdd(const Arguments& arguments) {
    if (arguments.text_option->empty() && !arguments.is_table && !arguments.is_array) {
        throw CLI::RequiredError("VALUE, --table or --array");
    }
    const NewEntry kind = arguments.is_table ? NewEntry::Table : arguments.is_array ? NewEntry::Array : NewEntry::Text;
    return ChangeFile(arguments, [&](const EditTarget& target) {
        AddEntry(target, kind, arguments.text, arguments.creates_parents);
    });
}

int RunRemove(const Arguments& arguments) { return ChangeFile(arguments, RemoveEntry); }

// ---------------------------------------------------------------------------------------------------------- converting

int RunText(const Arguments& arguments) {
    AtomicOutputFile output(arguments.output); // first, as it may be the input, too
    const InputFile input(arguments.file);
    SaveAsText(OpenConfig(input), output, "");
    return kSucceeded;
}

int RunCompile(const Arguments& arguments) {
    if (arguments.folder.is_requested) return CompileFolder(arguments.file, arguments.output, arguments.folder);
    CompileFile(arguments.file, arguments.output,
                [](const std::string& warning) { std::fprintf(stderr, "tessarin: %s\n", warning.c_str()); });
    return kSucceeded;
}

// ------------------------------------------------------------------------------------------------------------- options

using Run = int (*)(const Arguments&);

CLI::Option* AddFile(CLI::App& command, Arguments& arguments, const char* name = "FILE") {
    return command.add_option(name, arguments.file, "The file; - is standard input")->required();
}

CLI::Option* AddKey(CLI::App& command, Arguments& arguments) {
    return command.add_option("KEY", arguments.path,
                              "Keys with / between them; \"a/b\" in quotes is one key; in an array, a position");
}

void AddReadCommands(CLI::App& group, Job& job) {
    const auto [show, shown] = AddCommand(group, job, "show", "Draw the tree of a file, or a part of it", RunShow);
    AddFile(*show, *shown);
    AddKey(*show, *shown);
    AddTreeOptions(*show, shown->tree);
    const auto [get, requested] = AddCommand(group, job, "get", "Print one value, defaults included", RunGet);
    AddFile(*get, *requested);
    AddKey(*get, *requested)->required();
    AddValueOptions(*get, requested->value);
    const auto [diff, compared] = AddCommand(group, job, "diff", "Compare the contents of two files", RunDiff);
    AddFile(*diff, *compared, "BEFORE");
    diff->add_option("AFTER", compared->output, "The other file; - is standard input")->required();
    diff->add_flag("--json", compared->tree.as_json, "Write JSON, for scripts");
}

void AddChangeCommands(CLI::App& group, Job& job) {
    const auto add_command = [&](const char* name, const char* description, Run run) {
        auto added = AddCommand(group, job, name, description, run);
        AddFile(*added.first, *added.second);
        AddKey(*added.first, *added.second)->required();
        added.first->add_option("-o,--output", added.second->output,
                                "Write here and leave FILE unchanged; - is standard output");
        return added;
    };
    const auto [set, changed] = add_command("set", "Change a value in a text file; comments are lost", RunSet);
    set->add_option("VALUE", changed->text, "The new text")->required();
    const auto [add, added] =
        add_command("add", "Add a value, a table or an array to a text file; comments are lost", RunAdd);
    added->text_option = add->add_option("VALUE", added->text, "The text");
    CLI::Option* const table = add->add_flag("--table", added->is_table, "Add an empty table");
    CLI::Option* const array = add->add_flag("--array", added->is_array, "Add an empty array");
    table->excludes(added->text_option)->excludes(array);
    array->excludes(added->text_option);
    add->add_flag("-p,--parents", added->creates_parents, "Add missing tables of the path");
    add_command("remove", "Remove an entry and everything below it from a text file; comments are lost", RunRemove);
}

void AddConversionCommands(CLI::App& group, Job& job) {
    const auto [text, written] = AddCommand(group, job, "text", "Write a file of either form as text", RunText);
    AddFile(*text, *written, "IN");
    text->add_option("OUT", written->output, "The text file; - is standard output")->required();
    const auto [compile, compiled] =
        AddCommand(group, job, "compile", "Write a file of either form in binary form", RunCompile);
    AddFile(*compile, *compiled, "IN");
    compile->add_option("OUT", compiled->output, "The compiled file; - is standard output")->required();
    CLI::Option* const tree = compile->add_flag("--tree", compiled->folder.is_requested,
                                                "Take IN and OUT as folders and compile each file that has changed");
    compile->add_option("--match", compiled->folder.pattern, "Compile only files whose name matches, such as *.txt")
        ->needs(tree);
    compile->add_flag("--force", compiled->folder.is_forced, "Compile unchanged files, too")->needs(tree);
}

} // namespace

void AddConfigCommands(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("config", "Configuration files, as text or compiled");
    group->require_subcommand(1);
    AddReadCommands(*group, job);
    AddChangeCommands(*group, job);
    AddConversionCommands(*group, job);
}

} // namespace Command
