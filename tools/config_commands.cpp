// `tessarin config`. A file that is changed is written anew from its tree, and read back before it takes its place: the
// text form can't say everything, and what it would lose must not be lost in silence.

#include "tools/command_line.h"
#include "tools/compile_tree.h"
#include "tools/config_tree.h"
#include "tools/failure.h"

#include <tessarin/interned_strings.h>

#include <memory>
#include <utility>

namespace Command {

namespace {

using Configure::IIterator;

// The arguments of one command; each takes those that are its own.
struct Arguments {
    std::string file;
    std::string way;
    std::string value;
    std::string output;
    Showing showing;
    Asking asking;
    TreeJob tree;
    bool is_table = false;
    bool is_array = false;
    bool makes_parents = false;
    CLI::Option* value_option = nullptr; // tells an empty value from none
};
using Shared = std::shared_ptr<Arguments>;

// ------------------------------------------------------------------------------------------------------------- reading

int ShowCommand(const Arguments& given) {
    const KeyPath way = ParseWay(given.way);
    const Input input(given.file);
    const ConfigFile file = OpenConfig(input);
    const Place place = Find(RootOf(file), way);
    if (!place) throw Failure(input.Name(), "has no " + given.way);
    return Show(OutlineOf(place, way.empty() ? input.Name() : given.way, given.showing.depth), given.showing);
}

int GetCommand(const Arguments& given) {
    const KeyPath way = ParseWay(given.way);
    const Input input(given.file);
    const ConfigFile file = OpenConfig(input);
    const Place place = Ask(RootOf(file), way);
    const Outline rows = place ? OutlineOf(place, "", kWhole) : Outline{};
    return Answer(input.Name(), given.way, rows, given.asking);
}

Row ListRow(Shape shape, std::size_t depth, const char* key) {
    Row row;
    row.shape = shape;
    row.depth = depth;
    row.key = key;
    row.is_in_array = depth == 1;
    return row;
}

// One object of the list of differences: the way, and what stands there in the file or files that have it.
void ListDifference(Outline& list, const Difference& found) {
    const auto put = [&](const char* key, const std::string& value) {
        list.push_back(ListRow(Shape::Text, 2, key));
        list.back().value = value;
    };
    const auto side = [&](const char* key, const Row* row) {
        if (row) put(key, row->shape == Shape::Text ? row->value : Describe(*row));
    };
    list.push_back(ListRow(Shape::Table, 1, ""));
    put("key", found.way);
    side("before", found.before);
    side("after", found.after);
}

int DiffCommand(const Arguments& given) {
    if (given.file == "-" && given.output == "-") {
        throw CLI::ValidationError("AFTER", "standard input is the other file already");
    }
    const Input before(given.file);
    const Input after(given.output);
    const ConfigFile first = OpenConfig(before);
    const ConfigFile second = OpenConfig(after);
    int status = kDone;
    const auto print = [](char sign, const Difference& found, const Row* row) {
        if (row) std::printf("%c %s = %s\n", sign, Printable(found.way).c_str(), Describe(*row).c_str());
    };
    Outline list{ListRow(Shape::Array, 0, "")};
    Compare(RootOf(first), RootOf(second), [&](const Difference& found) {
        status = kFailed;
        if (given.showing.as_json) return ListDifference(list, found);
        print('-', found, found.before);
        print('+', found, found.after);
    });
    if (given.showing.as_json) WriteJson(list, stdout);
    return status;
}

// ------------------------------------------------------------------------------------------------------------- writing

// Writes a tree as text in the place of a file, unless something of it would be lost.
// way  what has been changed in it; empty if nothing has
void ReplaceByText(const ConfigFile& file, const std::string& target, const std::string& way) {
    Draft draft(target);
    const ConfigFile saved = SaveInto(draft, file, Configure::FORMAT_TEXT);
    Compare(RootOf(file), RootOf(saved), [&](const Difference& lost) {
        // A quote in a change may swallow anything behind it: what is lost first isn't what lost it.
        throw Failure(draft.Name(), "isn't written, as a text can't hold " + ToUtf8(way.empty() ? lost.way : way));
    });
    draft.Keep();
}

// Changes a file in its place, or to where the output goes; standard input goes to standard output.
template <class Change>
int ChangeCommand(const Arguments& given, Change change) {
    const KeyPath way = ParseWay(given.way);
    if (way.empty()) throw CLI::ValidationError("KEY", "no key");
    const Input input(given.file);
    const ConfigFile file = EditConfig(input);
    change(input, RootOf(file), way);
    ReplaceByText(file, given.output.empty() ? given.file : given.output, given.way);
    return kDone;
}

KeyPath Parents(const KeyPath& way) { return {way.begin(), way.end() - 1}; }

IIterator* UnitAt(const Input& input, const Arguments& given, const Place& root, const KeyPath& way) {
    IIterator* const unit = FindUnit(Find(root, Parents(way)), way.back());
    if (!unit) throw Failure(input.Name(), "has no " + given.way);
    return unit;
}

int SetCommand(const Arguments& given) {
    return ChangeCommand(given, [&](const Input& input, const Place& root, const KeyPath& way) {
        IIterator* const unit = UnitAt(input, given, root, way);
        if (unit->IsTable() || unit->IsArray()) throw Failure(input.Name(), given.way + " is no plain value");
        if (!unit->SetString(given.value.c_str())) throw Failure(input.Name(), "takes no text that long");
    });
}

int RemoveCommand(const Arguments& given) {
    return ChangeCommand(given, [&](const Input& input, const Place& root, const KeyPath& way) {
        IIterator* const unit = UnitAt(input, given, root, way);
        const Place parent = Find(root, Parents(way));
        parent.table ? parent.table->Remove(unit) : parent.array->Remove(unit);
    });
}

IIterator* AddTo(const Place& parent, const std::string& piece, const Arguments& given) {
    // The key as a file's own text would give it: in path form, if it is one.
    const bool is_path = piece.find_first_of("/\\") != std::string::npos;
    const char* const key = is_path ? cstr_path(piece.c_str()) : piece.c_str();
    Configure::ITable* const table = parent.table;
    Configure::IArray* const array = parent.array;
    if (given.is_table) return table ? table->AddTable(key) : array->AddTable(0);
    if (given.is_array) return table ? table->AddArray(key) : array->AddArray(0);
    return table ? table->AddString(key, given.value.c_str()) : array->AddString(0, given.value.c_str());
}

// The table or array that the new entry goes to.
Place MakeParents(const Input& input, Place place, const KeyPath& way, bool makes_them) {
    for (const std::string& piece : Parents(way)) {
        IIterator* unit = FindUnit(place, piece);
        if (!unit && makes_them && place.table) unit = place.table->AddTable(piece.c_str());
        if (!unit) throw Failure(input.Name(), "has no " + SpellKey(piece) + " on the way");
        place = PlaceOf(unit);
    }
    if (!place.table && !place.array) throw Failure(input.Name(), "has a text where a table is needed");
    return place;
}

void Add(const Input& input, const Place& parent, const std::string& piece, const Arguments& given) {
    if (parent.array && piece != "-" && PositionOf(piece) != parent.array->GetCount()) {
        throw Failure(input.Name(), "adds to an array at its end alone, which is `-`");
    }
    if (FindUnit(parent, piece)) throw Failure(input.Name(), "has " + given.way + " already");
    if (!AddTo(parent, piece, given)) throw Failure(input.Name(), "takes no such key or text");
}

int AddCommand(const Arguments& given) {
    if (given.value_option->empty() && !given.is_table && !given.is_array) {
        throw CLI::RequiredError("VALUE, --table or --array");
    }
    return ChangeCommand(given, [&](const Input& input, const Place& root, const KeyPath& way) {
        Add(input, MakeParents(input, root, way, given.makes_parents), way.back(), given);
    });
}

int TextCommand(const Arguments& given) {
    const Input input(given.file);
    ReplaceByText(OpenConfig(input), given.output, "");
    return kDone;
}

int CompileCommand(const Arguments& given) {
    if (given.tree.is_asked) return CompileTree(given.file, given.output, given.tree);
    CompileFile(given.file, given.output,
                [](const std::string& warning) { std::fprintf(stderr, "tessarin: %s\n", warning.c_str()); });
    return kDone;
}

// ------------------------------------------------------------------------------------------------------------ offering

using Run = int (*)(const Arguments&);

// One command with the file that it reads, or whatever else its first argument is.
std::pair<CLI::App*, Shared> Offer(CLI::App& group, Job& job, const char* name, const char* what, Run run,
                                   const char* first = "FILE") {
    CLI::App* const command = group.add_subcommand(name, what);
    auto given = std::make_shared<Arguments>();
    command->add_option(first, given->file, "The file; - is standard input")->required();
    command->callback([&job, given, run] { job = [given, run] { return run(*given); }; });
    return {command, given};
}

void OfferWay(CLI::App& command, Arguments& given, bool is_required) {
    command.add_option("KEY", given.way, "Keys with / between them; \"a/b\" is one key; in an array a position")
        ->required(is_required);
}

void OfferReading(CLI::App& group, Job& job) {
    const auto [show, shown] = Offer(group, job, "show", "Draw a file's tree, or a part of it", ShowCommand);
    OfferWay(*show, *shown, false);
    OfferShowing(*show, shown->showing);
    const auto [get, asked] = Offer(group, job, "get", "Print one value, a _default's where it serves", GetCommand);
    OfferWay(*get, *asked, true);
    OfferAsking(*get, asked->asking);
    const auto [diff, compared] =
        Offer(group, job, "diff", "Compare what two files hold, in either form", DiffCommand, "BEFORE");
    diff->add_option("AFTER", compared->output, "The other file")->required();
    diff->add_flag("--json", compared->showing.as_json, "Write JSON, for scripts");
}

void OfferChanges(CLI::App& group, Job& job) {
    const auto offer = [&](const char* name, const char* what, Run run) {
        auto offered = Offer(group, job, name, what, run);
        OfferWay(*offered.first, *offered.second, true);
        offered.first->add_option("-o,--output", offered.second->output,
                                  "Write here and leave FILE alone; - is standard output");
        return offered;
    };
    const auto [set, changed] = offer("set", "Change a value in a text file. Comments aren't kept", SetCommand);
    set->add_option("VALUE", changed->value, "The new text")->required();
    const auto [add, added] =
        offer("add", "Add a value, a table or an array to a text file. Comments aren't kept", AddCommand);
    added->value_option = add->add_option("VALUE", added->value, "The text");
    CLI::Option* const table = add->add_flag("--table", added->is_table, "Add an empty table");
    CLI::Option* const array = add->add_flag("--array", added->is_array, "Add an empty array");
    table->excludes(added->value_option)->excludes(array);
    array->excludes(added->value_option);
    add->add_flag("-p,--parents", added->makes_parents, "Add the tables on the way that are missing");
    offer("remove", "Remove an entry with all it holds from a text file. Comments aren't kept", RemoveCommand);
}

void OfferForms(CLI::App& group, Job& job) {
    const auto [text, written] = Offer(group, job, "text", "Write a file of either form as text", TextCommand, "IN");
    text->add_option("OUT", written->output, "The text file; - is standard output")->required();
    const auto [compile, made] =
        Offer(group, job, "compile", "Write a file of either form in binary form", CompileCommand, "IN");
    compile->add_option("OUT", made->output, "The compiled file; - is standard output")->required();
    CLI::Option* const tree =
        compile->add_flag("--tree", made->tree.is_asked, "IN and OUT are folders: compile each file that has changed");
    compile->add_option("--match", made->tree.pattern, "Only files whose name fits, as *.txt does")->needs(tree);
    compile->add_flag("--force", made->tree.is_forced, "Compile what hasn't changed, too")->needs(tree);
}

} // namespace

void OfferConfig(CLI::App& app, Job& job) {
    CLI::App* const group = app.add_subcommand("config", "Configuration files, as text or compiled");
    group->require_subcommand(1);
    OfferReading(*group, job);
    OfferChanges(*group, job);
    OfferForms(*group, job);
}

} // namespace Command
