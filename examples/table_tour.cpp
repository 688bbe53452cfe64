// A tour of tables: the program opens a document of each form, prints both as trees, listens to a table while it
// changes it, saves JSON, and loads that again to see whether anything was lost.
//
//   table_tour GAME SETTINGS FOLDER
//
// GAME is a document in the readable text form, SETTINGS one in JSON; game.json and settings.json are written into
// FOLDER. Exit status: 0 if nothing was lost, 1 if something was, 2 if a step failed.
//
// Before you copy from here:
//  - A table from a factory is ended with CloseTable; Document below does it. Tables, entries and texts from a table
//  are
//    borrowed: they live as long as it does (texts longer: until the library is unloaded).
//  - Check an entry's kind before its value: an entry gives the first 32 bits of whatever it holds.
//  - A listener must be removed from its table before the listener's object ends.

#include <tessarin/tessarin.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Tessarin::IIterator;
using Tessarin::ITable;

namespace {

// ------------------------------------------------------------------------------------------------- opening and closing

// Closing a table ends the children that it owns, so only roots are held like this. Borrowed tables stay.
struct TableCloser {
    void operator()(ITable* table) const { CloseTable(table); }
};
using Document = std::unique_ptr<ITable, TableCloser>;

// An invalid JSON text opens as an empty table, so a host that expects entries must check for them.
Document Open(ITable* (*factory)(const char*), const std::string& path) {
    Document document(factory(path.c_str()));
    if (document && document->GetElementCount() == 0) document.reset();
    if (!document) std::fprintf(stderr, "%s: not a document of this form, or empty\n", path.c_str());
    return document;
}

// Saving replaces the file. Pointers, handles, the array part and listeners aren't part of a document.
bool Save(ITable* table, const std::string& path) {
    if (table->SaveFile(path.c_str()) != 0) return true;
    std::fprintf(stderr, "%s: can't be written\n", path.c_str());
    return false;
}

// ------------------------------------------------------------------------------------------------------ what is inside

// Calls `visit` for each entry. Next leaves the cursor unchanged and returns the entry after it.
template <class Visit>
void ForEach(ITable* table, Visit visit) {
    for (IIterator* entry = table->First(); entry != nullptr; entry = table->Next(&entry)) visit(entry);
}

// The kinds are numbered from 0 without a gap.
const char* KindName(std::uint32_t kind) {
    static constexpr std::array names{"empty", "string", "table",  "external", "reference", "integer", "real",
                                      "ptr",   "float2", "float3", "float4",   "float4x4",  "handle"};
    return kind < names.size() ? names[kind] : "unknown";
}

// The entry owns only a VALUE_TABLE; GetTable returns the table of all three kinds.
bool HoldsTable(std::uint32_t kind) {
    return kind == Tessarin::VALUE_TABLE || kind == Tessarin::VALUE_EXTERNAL_TABLE ||
           kind == Tessarin::VALUE_REFERENCE_TABLE;
}

// The numbers of a value that consists of floats: a vector, a matrix or a single real.
std::vector<float> Floats(IIterator* entry) {
    Float4 vector{};
    Float4x4 matrix{};
    entry->GetFloat4(&vector);
    switch (entry->GetType()) {
    case Tessarin::VALUE_REAL:
        return {entry->GetReal()};
    case Tessarin::VALUE_FLOAT2:
        return {vector.x, vector.y};
    case Tessarin::VALUE_FLOAT3:
        return {vector.x, vector.y, vector.z};
    case Tessarin::VALUE_FLOAT4:
        return {vector.x, vector.y, vector.z, vector.w};
    case Tessarin::VALUE_FLOAT4X4:
        entry->GetFloat4x4(&matrix);
        return {std::begin(matrix.m), std::end(matrix.m)};
    default:
        return {};
    }
}

// The shortest text that reads back as the same float.
std::string Text(float number) {
    std::array<char, 32> digits{};
    return {digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr};
}

// Written like a vector in a document; a single number has no brackets.
std::string Text(const std::vector<float>& numbers) {
    std::string text;
    for (const float number : numbers) text += (text.empty() ? "" : ", ") + Text(number);
    return numbers.size() == 1 ? text : "[" + text + "]";
}

// A value on one line. A string may be null, and so may a borrowed table.
std::string Text(IIterator* entry) {
    switch (entry->GetType()) {
    case Tessarin::VALUE_EMPTY:
        return "(no value yet)";
    case Tessarin::VALUE_STRING:
        return entry->GetString() ? '"' + std::string(entry->GetString()) + '"' : "null";
    case Tessarin::VALUE_INTEGER:
        return std::to_string(entry->GetInteger());
    case Tessarin::VALUE_HANDLE:
        return "#" + std::to_string(entry->GetHandle());
    case Tessarin::VALUE_PTR:
        return entry->GetPtr() ? "an address of the host's" : "null";
    default:
        break;
    }
    if (!HoldsTable(entry->GetType())) return Text(Floats(entry));
    ITable* child = entry->GetTable();
    return child ? std::to_string(child->GetElementCount()) + " entries" : "null";
}

// The width of the column of keys.
int KeyWidth(ITable* table) {
    std::size_t width = 0;
    ForEach(table, [&](IIterator* entry) { width = std::max(width, std::strlen(entry->GetKey())); });
    return static_cast<int>(width);
}

// Up to eight entries are in the order in which they were added; more are sorted by the address of their interned key,
// so a host that needs an order must sort what it shows.
//
// Borrowed tables aren't entered: they may contain this one. Each level is one call on the stack: a host that opens
// documents from unknown sources, which may be of any depth, should walk with a stack of its own.
void PrintTree(ITable* table, int indent = 2) {
    const int width = KeyWidth(table);
    ForEach(table, [&](IIterator* entry) {
        std::printf("%*s%-*s  %-9s  %s\n", indent, "", width, entry->GetKey(), KindName(entry->GetType()),
                    Text(entry).c_str());
        if (entry->GetType() == Tessarin::VALUE_TABLE) PrintTree(entry->GetTable(), indent + 2);
    });
}

// GetElementCount counts the entries of one table; this counts those of its child tables too.
int CountAll(ITable* table) {
    int count = 0;
    ForEach(table, [&](IIterator* entry) {
        count += 1 + (entry->GetType() == Tessarin::VALUE_TABLE ? CountAll(entry->GetTable()) : 0);
    });
    return count;
}

void PrintDocument(const char* path, ITable* table) {
    std::printf("== %s: %d entries\n\n", path, CountAll(table));
    PrintTree(table);
}

// ----------------------------------------------------------------------------------------------------------- listening

// Each change has two codes: the one before it is the one after it plus 9, so 8 isn't used.
const char* EventName(std::uint32_t code) {
    static constexpr std::array names{"added",
                                      "changed",
                                      "removed",
                                      "cleared",
                                      "renamed",
                                      "array created",
                                      "array destroyed",
                                      "item set",
                                      "",
                                      "adding",
                                      "changing",
                                      "removing",
                                      "clearing",
                                      "renaming",
                                      "array creating",
                                      "array destroying",
                                      "item setting"};
    return code < names.size() ? names[code] : "unknown";
}

// Prints its notifications. There is one member for each kind of listener, with the parameters of that kind.
struct Watcher {
    const char* name;

    // The record ends with the call; the key in it is interned and stays.
    void OnRecord(TableEvent* event) { Print("record", event->code, event->table, event->key); }
    void OnArgument(std::uint32_t code, ITable* table, cstr key) { Print("argument", code, table, key); }
    // For creating and destroying the array part the index is 0.
    void OnItem(std::uint32_t code, ITable* table, std::uint32_t index) {
        std::printf("    %-11s %-8s  %-16s  index %u, items %u\n", name, "array", EventName(code), index,
                    table->GetArrayCount());
    }

    // Before a change the entry still has the old value, after it the new one.
    void Print(const char* kind, std::uint32_t code, ITable* table, cstr key) {
        IIterator* entry = key ? table->Find(key) : nullptr;
        const std::string value = entry ? KindName(entry->GetType()) + (' ' + Text(entry)) : "no entry";
        std::printf("    %-11s %-8s  %-16s  %s: %s\n", name, kind, EventName(code), key ? key : "all", value.c_str());
    }
};

// A table returns an empty delegate, to be filled in at once; null for a key without an entry.
bool Listen(Delegate* slot, Delegate listener) {
    if (slot != nullptr) *slot = listener;
    return slot != nullptr;
}

// Prints what is done, does it, and prints the result; the notifications come in between.
template <class Change>
void Do(const char* what, Change change) {
    std::printf("  %s\n", what);
    const std::uint32_t result = change();
    std::printf("    -> %u\n", result);
}

// The last argument of a setter decides whether the listeners are notified.
void ChangeEntries(ITable* ship) {
    Do("SetInteger crew 7", [&] { return ship->SetInteger("crew", 7, 1); });
    Do("SetInteger crew 7, the same value again", [&] { return ship->SetInteger("crew", 7, 1); });
    Do("SetReal crew 2.5, which is of another kind", [&] { return ship->SetReal("crew", 2.5F, 1); });
    Do("SetReal speed 5.25", [&] { return ship->SetReal("speed", 5.25F, 1); });
    Do("SetReal speed 5.5, without notification", [&] { return ship->SetReal("speed", 5.5F, 0); });
    Do("SetString flag, a new entry", [&] { return ship->SetString("flag", "two herons, one asleep", 1); });
    Do("Rename crew to hands", [&] { return ship->Rename("crew", "hands", 1); });
    Do("Remove speed", [&] { return ship->Remove("speed", 1); });
}

// The array part: items whose bytes the host defines, beside the entries.
void ChangeArray(ITable* ship) {
    const Float3 buoy{118.0F, 0.0F, 402.5F};
    const Float3 berth{88.0F, 0.25F, 1502.0F};
    Do("CreateArray, a course of points", [&] { return ship->CreateArray(sizeof(Float3)); });
    Do("SetArrayItem 0", [&] { return ship->SetArrayItem(0, &buoy, 1) ? 1U : 0U; });
    Do("SetArrayItem 1", [&] { return ship->SetArrayItem(1, &berth, 1) ? 1U : 0U; });
    const auto* point = static_cast<const Float3*>(ship->GetArrayItem(1));
    if (point) std::printf("  GetArrayItem 1\n    -> %s\n", Text({point->x, point->y, point->z}).c_str());
    Do("DestroyArray", [&] { return ship->DestroyArray(); });
}

// Needs a table with an integer `crew` and a real `speed`. Listeners that are added here are removed here, because the
// watchers end with this function and the table doesn't.
bool ShowListeners(ITable* ship) {
    Watcher table{"the table"}, crew{"crew alone"}, speed{"speed alone"};
    const Delegate records = RecordDelegate<&Watcher::OnRecord>(&table);
    const Delegate arguments = ArgumentDelegate<&Watcher::OnArgument>(&table);
    const Delegate items = ArrayDelegate<&Watcher::OnItem>(&table);
    const Delegate crew_records = RecordDelegate<&Watcher::OnRecord>(&crew);
    // A listener of an entry is notified of that entry only, until it is removed; one of the table, of all entries.
    const bool listening = Listen(ship->AddRecordListener(), records) &&
                           Listen(ship->AddArgumentListener(), arguments) && Listen(ship->AddArrayListener(), items) &&
                           Listen(ship->AddRecordListener("crew"), crew_records) &&
                           Listen(ship->AddArgumentListener("speed"), ArgumentDelegate<&Watcher::OnArgument>(&speed));
    if (listening) {
        ChangeEntries(ship);
        ChangeArray(ship);
    }
    // The listener of `crew` stayed with the renamed entry; that of `speed` ended with its entry.
    ship->RemoveRecordListener(ship->Find("hands") ? "hands" : "crew", &crew_records);
    ship->RemoveArrayListener(&items);
    ship->RemoveArgumentListener(&arguments);
    Do("SetInteger hands 5, with only the record listener left", [&] { return ship->SetInteger("hands", 5, 1); });
    ship->RemoveRecordListener(&records);
    Do("SetInteger hands 6, with no listener left", [&] { return ship->SetInteger("hands", 6, 1); });
    return listening;
}

// The child table of a key, made if it is missing; null if the entry has another kind.
ITable* Child(ITable* table, const char* key) {
    if (table == nullptr) return nullptr;
    ITable* child = table->GetTable(key);
    return child ? child : table->Set(key, 0);
}

// The part of the document that the listeners watch.
ITable* FindShip(ITable* game) {
    ITable* ship = Child(Child(game, "fleet"), "heron");
    if (ship == nullptr) return nullptr;
    if (ship->Find("crew") == nullptr) ship->SetInteger("crew", 1, 0);
    if (ship->Find("speed") == nullptr) ship->SetReal("speed", 1.0F, 0);
    return ship;
}

// Values that only a host can set: a pointer and a handle, which aren't saved; a matrix; and borrowed tables, which are
// saved in full and must not end before the last use of the entry.
ITable* AddHostValues(ITable* game, ITable* ship, ITable* settings) {
    static int window = 0;
    const Handle sound = 4711;
    const Float2 size{1280.0F, 720.5F};
    const Float4x4 view{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 412.5F, 6.25F, -88.25F, 1}};
    // A setter returns 0 if the entry has another kind already; the chain ends at the first that fails.
    ITable* host = Child(game, "host");
    const bool added = host && host->SetPtr("window", &window, 0) && host->SetHandle("sound", &sound, 0) &&
                       host->SetFloat2("size", &size, 0) && host->SetFloat4x4("view", &view, 0) &&
                       host->SetReferenceTable("follows", ship, 0) && host->SetExternalTable("settings", settings, 0);
    return added ? host : nullptr;
}

// ----------------------------------------------------------------------------------------------------------- comparing

// Compares a table with the one that was loaded again, entry by entry, and prints each difference with the path to it.
struct Comparison {
    int same = 0;
    int not_saved = 0;
    int different = 0;

    void CompareTables(ITable* saved, ITable* loaded, const std::string& path) {
        ForEach(saved, [&](IIterator* entry) {
            CompareEntries(entry, loaded->Find(entry->GetKey()), path + entry->GetKey());
        });
        // The loaded table must not have more entries than the saved one either.
        ForEach(loaded, [&](IIterator* entry) {
            if (!saved->Find(entry->GetKey()))
                Differ(path + entry->GetKey(), "was never there, came back as " + Text(entry));
        });
    }

    void CompareEntries(IIterator* saved, IIterator* loaded, const std::string& path) {
        const std::uint32_t kind = SavedKind(saved);
        if (kind == Tessarin::VALUE_EMPTY) {
            ++not_saved;
            if (loaded) Differ(path, "is not to be saved, but came back");
        } else if (!loaded) {
            Differ(path, "was lost");
        } else if (kind != loaded->GetType()) {
            Differ(path, std::string("was ") + KindName(kind) + ", came back as " + KindName(loaded->GetType()));
        } else if (!SameValue(saved, loaded)) {
            Differ(path, "was " + Text(saved) + ", came back as " + Text(loaded));
        } else {
            ++same;
            if (HoldsTable(kind)) CompareTables(saved->GetTable(), loaded->GetTable(), path + '.');
        }
    }

    // The kind that an entry has after it was saved and loaded; VALUE_EMPTY if it isn't saved.
    static std::uint32_t SavedKind(IIterator* entry) {
        const std::uint32_t kind = entry->GetType();
        if (HoldsTable(kind)) return Tessarin::VALUE_TABLE;
        const bool is_saved = kind != Tessarin::VALUE_PTR && kind != Tessarin::VALUE_HANDLE;
        return is_saved ? kind : static_cast<std::uint32_t>(Tessarin::VALUE_EMPTY);
    }

    // The caller compares the content of tables. Texts are interned: the same text is the same address.
    static bool SameValue(IIterator* saved, IIterator* loaded) {
        if (HoldsTable(loaded->GetType())) return saved->GetTable() && loaded->GetTable();
        if (loaded->GetType() == Tessarin::VALUE_INTEGER) return saved->GetInteger() == loaded->GetInteger();
        return saved->GetString() == loaded->GetString() && Floats(saved) == Floats(loaded);
    }

    void Differ(const std::string& path, const std::string& how) {
        ++different;
        std::printf("  %s: %s\n", path.c_str(), how.c_str());
    }
};

// Saves, loads and compares. The root of every saved document begins with a marker, which is loaded as an entry like
// any other; a host that doesn't want it removes it.
int RoundTrip(ITable* table, const std::string& path) {
    if (!Save(table, path)) return 2;
    const Document loaded = Open(OpenTableFile, path);
    if (!loaded) return 1;
    if (!table->Find("__internal_type")) loaded->Remove("__internal_type", 0);
    std::printf("%s\n", path.c_str());
    Comparison comparison;
    comparison.CompareTables(table, loaded.get(), "");
    std::printf("  %d entries came back as they were, %d did not; %d were not to be saved\n", comparison.same,
                comparison.different, comparison.not_saved);
    return comparison.different == 0 ? 0 : 1;
}

// The changes are saved too: the table that is compared afterwards is the changed one.
bool ShowChanges(ITable* game, ITable* settings) {
    std::printf("\n== Notifications of fleet.heron\n\n");
    ITable* ship = FindShip(game);
    if (!ship || !ShowListeners(ship)) return false;
    std::printf("\n== What the host adds\n\n");
    ITable* host = AddHostValues(game, ship, settings);
    if (host) PrintTree(host);
    return host != nullptr;
}

// Saves both documents, even if the first one fails.
int ShowRoundTrips(ITable* game, ITable* settings, const std::string& folder) {
    std::printf("\n== Saved, and loaded again\n\n");
    const int game_status = RoundTrip(game, folder + "/game.json");
    const int settings_status = RoundTrip(settings, folder + "/settings.json");
    const int status = std::max(game_status, settings_status);
    if (status == 0) std::printf("\nNothing was lost.\n");
    if (status == 1) std::printf("\nNot all of it came back.\n");
    return status;
}

// The game still borrows the settings when both are closed; closing a table doesn't touch borrowed tables.
int Run(const char* game_path, const char* settings_path, const std::string& folder) {
    const Document game = Open(OpenTableReadableFile, game_path);
    const Document settings = Open(OpenTableFile, settings_path);
    if (!game || !settings) return 2;
    PrintDocument(game_path, game.get());
    std::printf("\n");
    PrintDocument(settings_path, settings.get());
    if (!ShowChanges(game.get(), settings.get())) {
        std::fprintf(stderr, "%s: an entry of another kind is where the ship or the host's values go\n", game_path);
        return 2;
    }
    return ShowRoundTrips(game.get(), settings.get(), folder);
}

} // namespace

int main(int count, char** arguments) {
    if (count == 4) return Run(arguments[1], arguments[2], arguments[3]);
    std::fprintf(stderr, "usage: table_tour GAME SETTINGS FOLDER\n");
    return 2;
}
