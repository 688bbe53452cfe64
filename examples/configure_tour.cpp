// A tour of configuration files: the program loads one, finds everything in it by every kind of key, compiles it into
// the binary form, edits it, saves it as text, and reads both back to see whether anything was lost.
//
//   configure_tour FOLDER FILE...
//
// Each FILE is in text form. The results are written into FOLDER: the compiled file under its name with `.bin` added,
// and the edited one under its own name, so FOLDER must be another than that of the files. Exit status: 0 if nothing
// was lost, 1 if something was, 2 if a step failed.
//
// Before you copy from here:
//  - A file object owns the tables that it returns: the next Load ends them all. Texts stay.
//  - Every scalar is a text, which a getter reads as a number, truth value or interval. Text that isn't a number
//    is 0.
//  - Getters look in the default table too, Find and iteration never do.
//  - A composite key ends with `:` in a file of text form, but not in a compiled one.

#include <tessarin/tessarin.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Configure::IArray;
using Configure::IFile;
using Configure::IIterator;
using Configure::ITable;

namespace {

// ------------------------------------------------------------------------------------------------- opening and closing

struct FileCloser {
    void operator()(IFile* file) const { file->Release(); }
};
using File = std::unique_ptr<IFile, FileCloser>;

// Returns a file object with its content loaded, or none if the load fails. Mistakes in the text hardly ever make it
// fail.
File Open(const std::string& path, Configure::FileAccess access) {
    File file(CreateRLFile(nullptr));
    if (file && !file->Load(path.c_str(), access, Configure::FORMAT_AUTO)) file.reset();
    if (!file) std::fprintf(stderr, "%s: can't be loaded\n", path.c_str());
    return file;
}

bool Save(const File& file, const std::string& path, Configure::FileFormat format) {
    if (file->SaveAs(path.c_str(), format)) return true;
    std::fprintf(stderr, "%s: can't be written\n", path.c_str());
    return false;
}

// ------------------------------------------------------------------------------------------------------ what is inside

// Calls `visit` for each entry of a table or an array. End isn't an entry and is never read.
template <class Container, class Visit>
void ForEach(Container* container, Visit visit) {
    for (IIterator* unit = container->Begin(); unit != container->End(); unit = container->Next(unit)) visit(unit);
}

struct Summary {
    int tables = 0;
    int arrays = 0;
    int texts = 0;
    int intervals = 0; // texts with an interval in them
};

// Here and below, each level of a tree is one call on the stack. A host that opens files from unknown sources, which
// may be of any depth, should walk with a stack of its own.
template <class Container>
void Count(Container* container, Summary& summary) {
    ForEach(container, [&](IIterator* unit) {
        summary.tables += unit->IsTable() ? 1 : 0;
        summary.arrays += unit->IsArray() ? 1 : 0;
        summary.texts += unit->IsString() ? 1 : 0;
        summary.intervals += unit->IsInterval() ? 1 : 0;
        if (unit->IsTable()) Count(unit->GetTable(), summary);
        if (unit->IsArray()) Count(unit->GetArray(), summary);
    });
}

void PrintSummary(const std::string& path, ITable* root) {
    Summary summary;
    Count(root, summary);
    std::printf("\n== %s\n\n  %d tables, %d arrays, %d texts, %d of them intervals\n", path.c_str(), summary.tables,
                summary.arrays, summary.texts, summary.intervals);
}

// Keys may be looked up in any case, and paths with any separators; in the tree they are in lower case, with one `\`
// for each separator.
std::string OtherSpelling(const std::string& key) {
    std::string spelling;
    for (const char byte : key) {
        spelling += static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
        if (byte == '\\') spelling.replace(spelling.size() - 1, 1, "//");
    }
    return spelling;
}

// ---------------------------------------------------------------------------------------------------------- looking up

// Walks a tree and looks each entry up again by every kind of key that can name it.
struct Lookup {
    bool is_compiled;
    int by_text = 0;
    int by_number = 0;
    int by_path = 0;
    int by_pieces = 0;
    int by_default = 0;
    int failed = 0;

    void Table(ITable* table) {
        // The default of the child tables: a child may leave out any entry that it has. If the table has no `_default`,
        // the getter looks for one in the table's own default.
        ITable* defaults = table->GetTable("_default");
        ForEach(table, [&](IIterator* unit) {
            Keys(table, unit);
            if (unit->IsTable() && defaults) Defaults(unit->GetTable(), defaults);
            Inside(unit);
        });
    }

    void Inside(IIterator* unit) {
        if (unit->IsTable()) Table(unit->GetTable());
        if (unit->IsArray()) ForEach(unit->GetArray(), [&](IIterator* element) { Inside(element); });
    }

    // Text keys are compared without regard to case but with their separators, so a path key needs FindPath.
    void Keys(ITable* table, IIterator* unit) {
        const std::string key = unit->GetKey();
        const std::string spelling = OtherSpelling(key);
        if (key.find('\\') != std::string::npos) {
            Expect(table->FindPath(spelling.c_str()), unit, by_path);
        } else {
            Expect(table->Find(spelling.c_str()), unit, by_text);
        }
        const std::uint32_t number = Number(key);
        if (std::to_string(number) == key) Expect(table->Find(number), unit, by_number);
        const bool ends_with_colon = !key.empty() && key.back() == ':';
        if (key.find(':') != std::string::npos && ends_with_colon != is_compiled) Pieces(table, unit, spelling);
    }

    // A text that isn't all digits gives some number with another spelling.
    static std::uint32_t Number(const std::string& digits) {
        std::uint32_t number = 0;
        for (const char digit : digits) number = number * 10 + static_cast<std::uint32_t>(digit - '0');
        return number;
    }

    // The arguments aren't checked against the format: each of its letters takes one argument, and further ones do no
    // harm. So three arguments fit any key of up to three pieces; longer keys are left out.
    void Pieces(ITable* table, IIterator* unit, const std::string& spelling) {
        std::vector<std::string> pieces = Split(spelling);
        if (!is_compiled) pieces.pop_back();
        if (pieces.size() > 3) return;
        std::string format;
        for (const std::string& piece : pieces) format += piece.find('/') == std::string::npos ? 's' : 'p';
        const std::uint32_t number = Number(pieces.back());
        const bool is_numbered = pieces.size() == 2 && std::to_string(number) == pieces.back();
        pieces.resize(3);
        const char* first = pieces[0].c_str();
        Expect(is_numbered ? table->FindFormat("si", first, static_cast<std::int32_t>(number))
                           : table->FindFormat(format.c_str(), first, pieces[1].c_str(), pieces[2].c_str()),
               unit, by_pieces);
    }

    // The pieces between the colons; a colon at the end is followed by an empty piece.
    static std::vector<std::string> Split(const std::string& key) {
        std::vector<std::string> pieces(1);
        for (const char byte : key) {
            if (byte == ':') pieces.emplace_back();
            if (byte != ':') pieces.back() += byte;
        }
        return pieces;
    }

    // Iteration over a table doesn't show its defaults, so this looks up the keys that the default table has.
    void Defaults(ITable* child, ITable* defaults) {
        ForEach(defaults, [&](IIterator* unit) {
            const char* key = unit->GetKey();
            if (child->Find(key)) return;
            // A getter returns what the default table has, or its fallback for an entry of another kind.
            const bool is_found = child->GetString(key) == unit->GetString() &&
                                  child->GetTable(key) == unit->GetTable() &&
                                  child->GetArray(key) == unit->GetArray() &&
                                  child->GetInteger(key, -1) == (unit->IsInteger() ? unit->GetInteger() : -1);
            ++(is_found ? by_default : failed);
            if (!is_found) std::printf("  the default of %s isn't found\n", key);
        });
    }

    void Expect(IIterator* found, IIterator* unit, int& count) {
        ++(found == unit ? count : failed);
        if (found != unit) std::printf("  %s: looked up, but not found\n", unit->GetKey());
    }
};

// Whether every lookup found what it should.
bool ShowLookups(ITable* root, bool is_compiled) {
    Lookup lookup{is_compiled};
    lookup.Table(root);
    std::printf("  %-8s found by text %d, by number %d, by path %d, by pieces %d, in a default table %d\n",
                is_compiled ? "compiled" : "text", lookup.by_text, lookup.by_number, lookup.by_path, lookup.by_pieces,
                lookup.by_default);
    return lookup.failed == 0;
}

// ----------------------------------------------------------------------------------------------------------- comparing

const char* KindName(IIterator* unit) {
    if (unit->IsTable()) return "a table";
    if (unit->IsArray()) return "an array";
    return "a text";
}

// Compares a tree with the one that was loaded again, and prints each difference with the path to it.
struct Comparison {
    int same = 0;
    int different = 0;

    // Each form has an order of its own, so entries are compared by key. If two entries share a key and a form keeps
    // only one of them, the counts show it.
    void Tables(ITable* saved, ITable* loaded, const std::string& path) {
        Counts(saved->GetCount(), loaded->GetCount(), path);
        Names(saved->GetName(), loaded->GetName(), path);
        ForEach(saved,
                [&](IIterator* unit) { Units(unit, loaded->Find(unit->GetKey()), path + '.' + unit->GetKey()); });
        ForEach(loaded, [&](IIterator* unit) {
            if (!saved->Find(unit->GetKey())) Differ(path + '.' + unit->GetKey(), "was never there");
        });
    }

    void Arrays(IArray* saved, IArray* loaded, const std::string& path) {
        Counts(saved->GetCount(), loaded->GetCount(), path);
        Names(saved->GetName(), loaded->GetName(), path);
        std::uint32_t position = 0;
        ForEach(saved, [&](IIterator* unit) {
            Units(unit, loaded->At(position), path + '[' + std::to_string(position) + ']');
            ++position;
        });
    }

    void Units(IIterator* saved, IIterator* loaded, const std::string& path) {
        if (!loaded) return Differ(path, "was lost");
        if (saved->GetType() != loaded->GetType()) {
            return Differ(path, std::string("was ") + KindName(saved) + ", came back as " + KindName(loaded));
        }
        if (saved->IsString() && Text(saved) != Text(loaded)) {
            return Differ(path, "was \"" + Text(saved) + "\", came back as \"" + Text(loaded) + '"');
        }
        ++same;
        if (saved->IsTable()) Tables(saved->GetTable(), loaded->GetTable(), path);
        if (saved->IsArray()) Arrays(saved->GetArray(), loaded->GetArray(), path);
    }

    // An entry without any value, at the end of a file, has a null text, which is saved as an empty one.
    static std::string Text(IIterator* unit) { return unit->GetString() ? unit->GetString() : ""; }

    void Counts(std::uint32_t saved, std::uint32_t loaded, const std::string& path) {
        if (saved == loaded) return;
        Differ(path, "had " + std::to_string(saved) + " entries, came back with " + std::to_string(loaded));
    }

    // Names are interned: the same text is the same address. The root and the elements of an array have none.
    void Names(cstr saved, cstr loaded, const std::string& path) {
        if (saved != loaded) Differ(path, "came back with another name");
    }

    void Differ(const std::string& path, const std::string& how) {
        ++different;
        std::printf("  %s: %s\n", path.c_str(), how.c_str());
    }
};

bool Compare(ITable* saved, ITable* loaded, const char* what) {
    Comparison comparison;
    comparison.Tables(saved, loaded, "root");
    std::printf("  %-8s %d entries came back as they were, %d differences\n", what, comparison.same,
                comparison.different);
    return comparison.different == 0;
}

// ------------------------------------------------------------------------------------------------------------- editing

// The first entry, depth first, for which `test` is true.
template <class Container, class Test>
IIterator* FindUnit(Container* container, Test test) {
    IIterator* found = nullptr;
    ForEach(container, [&](IIterator* unit) {
        if (!found && test(unit)) found = unit;
        if (!found && unit->IsTable()) found = FindUnit(unit->GetTable(), test);
        if (!found && unit->IsArray()) found = FindUnit(unit->GetArray(), test);
    });
    return found;
}

// Changes entries that any file may have: the first text, interval and array, and removes the last text of the root.
bool ChangeEntries(ITable* root) {
    IIterator* text = FindUnit(root, [](IIterator* unit) { return unit->IsString(); });
    if (text && !text->SetString("changed on the tour")) return false;
    IIterator* interval = FindUnit(root, [](IIterator* unit) { return unit->IsInterval(); });
    if (interval && !interval->SetString("[-2.5,7)")) return false;
    IIterator* array = FindUnit(root, [](IIterator* unit) { return unit->IsArray(); });
    // The first argument is never read. An element is added before one is removed: the text form would read an empty
    // array back as a table.
    if (array && !array->GetArray()->AddString(0, "one more")) return false;
    if (array) array->GetArray()->Remove(array->GetArray()->Begin());
    IIterator* last = nullptr;
    ForEach(root, [&](IIterator* unit) {
        if (unit->IsString()) last = unit;
    });
    const std::string key = last ? last->GetKey() : "";
    // Remove returns the entry that has taken the place, if there is one.
    if (last) root->Remove(last);
    return !last || !root->Find(key.c_str());
}

// Adds a table and returns it; null if it can't be added, for example because its key is taken.
ITable* AddTable(ITable* table, const char* key) {
    IIterator* unit = table ? table->AddTable(key) : nullptr;
    return unit ? unit->GetTable() : nullptr;
}

// There is no AddInteger in the interface: a number is set on an entry that was added as a text.
bool AddInteger(ITable* table, const char* key, std::int32_t value) {
    IIterator* unit = table->AddString(key, "");
    return unit && unit->SetInteger(value);
}

bool AddCourse(ITable* tour) {
    IIterator* unit = tour->AddArray("course");
    if (!unit) return false;
    IArray* course = unit->GetArray();
    IIterator* depth = course->AddString(0, "");
    IIterator* mark = course->AddTable(0);
    return depth && depth->SetFloat(402.5F) && course->AddString(0, "(0.5,2]") && mark &&
           mark->GetTable()->AddString("lit", "False");
}

// Adds a table of the host's. A `_default` that is added takes effect with the next load. Composite keys are added in
// both spellings, because the file will be read in both forms.
bool AddTour(ITable* root) {
    ITable* tour = AddTable(root, "tour");
    ITable* defaults = tour ? AddTable(tour, "_default") : nullptr;
    ITable* lantern = AddTable(tour, "Lantern");
    if (!defaults || !lantern || !AddTable(tour, "buoy")) return false;
    const bool shared = AddInteger(defaults, "oil", 40) && defaults->AddString("reach", "(0,12.5]") &&
                        defaults->AddString("lit", "0") && AddInteger(lantern, "oil", 12);
    const bool marked = tour->AddString("1", "tarn quay") && tour->AddString("charts\\north.map", "old") &&
                        tour->AddString("mark:7", "a wreck") && tour->AddString("mark:7:", "a wreck");
    IIterator* renamed = tour->AddString("beacon", "Gull Point");
    return shared && marked && renamed && renamed->SetKey("lamp") && AddCourse(tour);
}

// A lookup in the host's table after it was read back, and whether its result is right.
struct Result {
    const char* lookup;
    bool is_right;
};

bool Same(cstr text, const char* expected) { return text && std::strcmp(text, expected) == 0; }

std::vector<Result> LookUpTour(ITable* tour) {
    ITable* lantern = tour->GetTable("LANTERN");
    ITable* buoy = tour->GetTable("buoy");
    IArray* course = tour->GetArray("course");
    if (!lantern || !buoy || !course || course->GetCount() != 3 || !course->GetTable(1)) return {{"its tables", false}};
    return {
        {"lantern's own oil", lantern->GetInteger("oil", 1) == 12},
        {"buoy's oil, by default", buoy->GetInteger("oil", 1) == 40},
        {"buoy's rope, which is nowhere", buoy->GetInteger("rope", 3) == 3},
        {"buoy has no entries", buoy->GetCount() == 0 && !buoy->Find("oil")},
        {"reach includes 12.25", buoy->GetInterval("reach").Hit(12.25F) == 1},
        {"reach excludes 0", buoy->GetInterval("reach").Hit(0) == 0},
        {"lit is 0, so false", !buoy->GetBool("lit")},
        {"by number", Same(tour->GetString(1U), "tarn quay")},
        {"by path", tour->FindPath("Charts/NORTH.map") != nullptr},
        {"by pieces", Same(tour->GetStringFormat("si", "Mark", 7), "a wreck")},
        {"by pieces, a missing key", tour->GetIntegerFormat(-1, "si", "mark", 8) == -1},
        {"renamed", Same(tour->GetString("lamp"), "Gull Point") && !tour->Find("beacon")},
        {"402.5 as a number", course->GetFloat(0, 0.0F) == 402.5F},
        {"False is false", !course->GetTable(1)->GetBool("lit")},
        {"an interval in an array", course->At(2)->GetInterval().Clamp(3.0F) == 2.0F},
    };
}

bool CheckTour(ITable* root, const char* what) {
    ITable* tour = root->GetTable("tour");
    if (!tour) return false;
    int right = 0;
    const std::vector<Result> results = LookUpTour(tour);
    for (const Result& result : results) {
        right += result.is_right ? 1 : 0;
        if (!result.is_right) std::printf("  the added table, %s, is wrong: %s\n", what, result.lookup);
    }
    std::printf("  %-8s the added table gave %d right results of %zu\n", what, right, results.size());
    return right == static_cast<int>(results.size());
}

// ------------------------------------------------------------------------------------------------------------ the tour

// The status of a step; the highest one is the exit status.
constexpr int kKept = 0;
constexpr int kLost = 1;
constexpr int kStopped = 2;

int Status(bool is_kept) { return is_kept ? kKept : kLost; }

// Compiles a file, and reads the compiled file.
int CompileFile(const File& file, const std::string& path) {
    if (!Save(file, path, Configure::FORMAT_BINARY)) return kStopped;
    const File compiled = Open(path, Configure::ACCESS_READ);
    if (!compiled) return kStopped;
    const bool is_same = Compare(file->GetRoot(), compiled->GetRoot(), "compiled");
    return Status(ShowLookups(compiled->GetRoot(), true) && is_same);
}

// Edits a file, saves it as text under another name and reads that back; then compiles it and reads that.
int EditFile(const std::string& path, const std::string& copy) {
    const File edited = Open(path, Configure::ACCESS_EDIT);
    if (!edited) return kStopped;
    if (!ChangeEntries(edited->GetRoot()) || !AddTour(edited->GetRoot())) {
        std::fprintf(stderr, "%s: can't be edited, or has a table `tour` already\n", path.c_str());
        return kStopped;
    }
    if (!Save(edited, copy, Configure::FORMAT_TEXT)) return kStopped;
    const File text = Open(copy, Configure::ACCESS_READ);
    if (!text || !Save(text, copy + ".bin", Configure::FORMAT_BINARY)) return kStopped;
    const File compiled = Open(copy + ".bin", Configure::ACCESS_READ);
    if (!compiled) return kStopped;
    const bool is_same = Compare(edited->GetRoot(), text->GetRoot(), "edited");
    const bool text_is_right = CheckTour(text->GetRoot(), "text");
    return Status(CheckTour(compiled->GetRoot(), "compiled") && text_is_right && is_same);
}

int RunTour(const std::string& path, const std::string& folder) {
    const File file = Open(path, Configure::ACCESS_READ);
    if (!file) return kStopped;
    const std::string name = path.substr(path.rfind('/') + 1);
    PrintSummary(path, file->GetRoot());
    const int found = Status(ShowLookups(file->GetRoot(), false));
    const int compiled = CompileFile(file, folder + '/' + name + ".bin");
    const int edited = EditFile(path, folder + '/' + name);
    return std::max({found, compiled, edited});
}

} // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        std::fprintf(stderr, "usage: configure_tour FOLDER FILE...\n");
        return kStopped;
    }
    int status = kKept;
    for (int i = 2; i < count; ++i) status = std::max(status, RunTour(arguments[i], arguments[1]));
    if (status == kKept) std::printf("\nNothing was lost.\n");
    if (status == kLost) std::printf("\nNot all of it came back.\n");
    return status;
}
