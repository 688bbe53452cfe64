// A host's whole way with tables: it opens a document of each form, prints both as trees, listens to a table while it
// is changed, saves JSON, and loads that again to see whether anything was lost.
//
//   table_tour GAME SETTINGS FOLDER
//
// GAME is a document in the readable text form, SETTINGS one in JSON; game.json and settings.json are written into
// FOLDER. Exit status: 0 if nothing was lost, 1 if something was, 2 if a step could not be taken.
//
// What is good to know before copying from here:
//  - A table from a factory ends with CloseTable; Document below does it. Tables, entries and texts that come out of a
//    table are borrowed: they live as long as it does (texts longer: until the library is unloaded).
//  - Ask an entry for its kind before its value: an entry gives the first 32 bits of whatever it holds.
//  - A listener's object must outlive its place in the table, so that it is removed first.

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

// Closing ends the children that a table owns with it, so only roots are held this way. Borrowed tables stay.
struct TableCloser {
    void operator()(ITable* table) const { CloseTable(table); }
};
using Document = std::unique_ptr<ITable, TableCloser>;

// A JSON text with a mistake in it opens as an empty table, so a host that expects something says so itself.
Document Open(ITable* (*factory)(const char*), const std::string& path) {
    Document document(factory(path.c_str()));
    if (document && document->GetElementCount() == 0) document.reset();
    if (!document) std::fprintf(stderr, "%s: not a document of this form, or empty\n", path.c_str());
    return document;
}

// Saving replaces the file. Pointers, handles, the array part and listeners are not part of a document.
bool Save(ITable* table, const std::string& path) {
    if (table->SaveFile(path.c_str()) != 0) return true;
    std::fprintf(stderr, "%s: can't be written\n", path.c_str());
    return false;
}

// ------------------------------------------------------------------------------------------------------ what is inside

// The walk: the cursor stays as it is, and Next answers the entry behind it.
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

// Only VALUE_TABLE is owned by the entry; GetTable answers for all three.
bool HoldsTable(std::uint32_t kind) {
    return kind == Tessarin::VALUE_TABLE || kind == Tessarin::VALUE_EXTERNAL_TABLE ||
           kind == Tessarin::VALUE_REFERENCE_TABLE;
}

// The numbers of a value that is made of floats, a single real among them.
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

// As a vector is written in a document; a single number stands alone.
std::string Text(const std::vector<float>& numbers) {
    std::string text;
    for (float number : numbers) text += (text.empty() ? "" : ", ") + Text(number);
    return numbers.size() == 1 ? text : "[" + text + "]";
}

// A value on one line. A string may be null, and so may a table that was put in from outside.
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

// Keys of one table are set in one column.
int KeyWidth(ITable* table) {
    std::size_t width = 0;
    ForEach(table, [&](IIterator* entry) { width = std::max(width, std::strlen(entry->GetKey())); });
    return static_cast<int>(width);
}

// Up to eight entries come in the order in which they were added; more are kept sorted by the address of their interned
// key, so a host that needs an order of its own sorts what it shows.
//
// Tables that are only borrowed aren't entered: they may lead back here. One call a level: a host that opens
// strangers' documents, which may be of any depth, walks with a stack of its own.
void PrintTree(ITable* table, int indent = 2) {
    const int width = KeyWidth(table);
    ForEach(table, [&](IIterator* entry) {
        std::printf("%*s%-*s  %-9s  %s\n", indent, "", width, entry->GetKey(), KindName(entry->GetType()),
                    Text(entry).c_str());
        if (entry->GetType() == Tessarin::VALUE_TABLE) PrintTree(entry->GetTable(), indent + 2);
    });
}

// GetElementCount counts one table; this one counts the tables below it too.
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

// Each change is told twice: the code before it is the code after it plus 9, which leaves 8 to nobody.
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

// Prints what it is told. Each member that a delegate is made of takes what its kind of listener is called with.
struct Watcher {
    const char* name;

    // The record ends with the call; the key in it is interned and stays.
    void OnRecord(TableEvent* event) { Tell("record", event->code, event->table, event->key); }
    void OnArgument(std::uint32_t code, ITable* table, cstr key) { Tell("argument", code, table, key); }
    // Creating and destroying the array part is told with an index of 0.
    void OnItem(std::uint32_t code, ITable* table, std::uint32_t index) {
        std::printf("    %-11s %-8s  %-16s  index %u, items %u\n", name, "array", EventName(code), index,
                    table->GetArrayCount());
    }

    // Before a change the entry still has the old value, after it the new one.
    void Tell(const char* kind, std::uint32_t code, ITable* table, cstr key) {
        IIterator* entry = key ? table->Find(key) : nullptr;
        const std::string value = entry ? KindName(entry->GetType()) + (' ' + Text(entry)) : "no entry";
        std::printf("    %-11s %-8s  %-16s  %s: %s\n", name, kind, EventName(code), key ? key : "all", value.c_str());
    }
};

// A table answers an empty place for the delegate, to be filled at once; null for a key that has no entry.
bool Listen(Delegate* place, Delegate listener) {
    if (place != nullptr) *place = listener;
    return place != nullptr;
}

// Says what is done, does it, and says what it answered; what the listeners hear comes in between.
template <class Change>
void Do(const char* what, Change change) {
    std::printf("  %s\n", what);
    const std::uint32_t answer = change();
    std::printf("    -> %u\n", answer);
}

// The last argument of a setter decides whether the listeners are told.
void ChangeEntries(ITable* ship) {
    Do("SetInteger crew 7", [&] { return ship->SetInteger("crew", 7, 1); });
    Do("SetInteger crew 7, which it is already", [&] { return ship->SetInteger("crew", 7, 1); });
    Do("SetReal crew 2.5, which is of another kind", [&] { return ship->SetReal("crew", 2.5F, 1); });
    Do("SetReal speed 5.25", [&] { return ship->SetReal("speed", 5.25F, 1); });
    Do("SetReal speed 5.5, without a word", [&] { return ship->SetReal("speed", 5.5F, 0); });
    Do("SetString flag, a new entry", [&] { return ship->SetString("flag", "two herons, one asleep", 1); });
    Do("Rename crew to hands", [&] { return ship->Rename("crew", "hands", 1); });
    Do("Remove speed", [&] { return ship->Remove("speed", 1); });
}

// The array part: items of the host's own making, beside the entries.
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

// Needs a table with an integer `crew` and a real `speed`. What is added here is removed here: the watchers end with
// the function, the table goes on.
bool ShowListeners(ITable* ship) {
    Watcher table{"the table"}, crew{"crew alone"}, speed{"speed alone"};
    const Delegate records = RecordDelegate<&Watcher::OnRecord>(&table);
    const Delegate arguments = ArgumentDelegate<&Watcher::OnArgument>(&table);
    const Delegate items = ArrayDelegate<&Watcher::OnItem>(&table);
    const Delegate crew_records = RecordDelegate<&Watcher::OnRecord>(&crew);
    // A listener of one entry hears of that entry only, up to its removal; one of the table hears of all entries.
    const bool heard = Listen(ship->AddRecordListener(), records) && Listen(ship->AddArgumentListener(), arguments) &&
                       Listen(ship->AddArrayListener(), items) &&
                       Listen(ship->AddRecordListener("crew"), crew_records) &&
                       Listen(ship->AddArgumentListener("speed"), ArgumentDelegate<&Watcher::OnArgument>(&speed));
    if (heard) {
        ChangeEntries(ship);
        ChangeArray(ship);
    }
    // The listener of `crew` went along with the rename; that of `speed` ended with its entry.
    ship->RemoveRecordListener(ship->Find("hands") ? "hands" : "crew", &crew_records);
    ship->RemoveArrayListener(&items);
    ship->RemoveArgumentListener(&arguments);
    Do("SetInteger hands 5, with the record listener alone left", [&] { return ship->SetInteger("hands", 5, 1); });
    ship->RemoveRecordListener(&records);
    Do("SetInteger hands 6, with nobody left", [&] { return ship->SetInteger("hands", 6, 1); });
    return heard;
}

// The table of the document that is to be listened to, made where it is missing; null if something else stands there.
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

// What documents can't say but a host can: a pointer and a handle, which are not saved; a matrix; and tables that
// belong elsewhere, which are saved in full. They must not end before the last use of the entry.
ITable* AddHostValues(ITable* game, ITable* ship, ITable* settings) {
    static int window = 0;
    const Handle sound = 4711;
    const Float2 size{1280.0F, 720.5F};
    const Float4x4 view{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 412.5F, 6.25F, -88.25F, 1}};
    // Every setter answers 0 if the entry holds another kind already, so the first refusal ends the chain.
    ITable* host = Child(game, "host");
    const bool added = host && host->SetPtr("window", &window, 0) && host->SetHandle("sound", &sound, 0) &&
                       host->SetFloat2("size", &size, 0) && host->SetFloat4x4("view", &view, 0) &&
                       host->SetReferenceTable("follows", ship, 0) && host->SetExternalTable("settings", settings, 0);
    return added ? host : nullptr;
}

// ----------------------------------------------------------------------------------------------------------- comparing

// Compares a table with what came back of it, entry by entry, and prints each difference with the way to it.
struct Comparison {
    int same = 0;
    int not_saved = 0;
    int different = 0;

    void CompareTables(ITable* saved, ITable* loaded, const std::string& way) {
        ForEach(saved,
                [&](IIterator* entry) { CompareEntries(entry, loaded->Find(entry->GetKey()), way + entry->GetKey()); });
        // What came back must not hold more than what went out either.
        ForEach(loaded, [&](IIterator* entry) {
            if (!saved->Find(entry->GetKey()))
                Differ(way + entry->GetKey(), "was never there, came back as " + Text(entry));
        });
    }

    void CompareEntries(IIterator* saved, IIterator* loaded, const std::string& way) {
        const std::uint32_t kind = SavedKind(saved);
        if (kind == Tessarin::VALUE_EMPTY) {
            ++not_saved;
            if (loaded) Differ(way, "is not to be saved, but came back");
        } else if (!loaded) {
            Differ(way, "was lost");
        } else if (kind != loaded->GetType()) {
            Differ(way, std::string("was ") + KindName(kind) + ", came back as " + KindName(loaded->GetType()));
        } else if (!SameValue(saved, loaded)) {
            Differ(way, "was " + Text(saved) + ", came back as " + Text(loaded));
        } else {
            ++same;
            if (HoldsTable(kind)) CompareTables(saved->GetTable(), loaded->GetTable(), way + '.');
        }
    }

    // The kind that a saved entry comes back with; VALUE_EMPTY if it isn't saved.
    static std::uint32_t SavedKind(IIterator* entry) {
        const std::uint32_t kind = entry->GetType();
        if (HoldsTable(kind)) return Tessarin::VALUE_TABLE;
        const bool is_saved = kind != Tessarin::VALUE_PTR && kind != Tessarin::VALUE_HANDLE;
        return is_saved ? kind : static_cast<std::uint32_t>(Tessarin::VALUE_EMPTY);
    }

    // Tables are entered by the caller. Texts are interned: the same text is the same address.
    static bool SameValue(IIterator* saved, IIterator* loaded) {
        if (HoldsTable(loaded->GetType())) return saved->GetTable() && loaded->GetTable();
        if (loaded->GetType() == Tessarin::VALUE_INTEGER) return saved->GetInteger() == loaded->GetInteger();
        return saved->GetString() == loaded->GetString() && Floats(saved) == Floats(loaded);
    }

    void Differ(const std::string& way, const std::string& how) {
        ++different;
        std::printf("  %s: %s\n", way.c_str(), how.c_str());
    }
};

// Saves, loads and compares. The root of every saved document opens with a marker, which comes back as an entry like
// any other; a host that doesn't want it drops it.
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

// The changes go into the save: what is compared afterwards is the changed table.
bool ShowChanges(ITable* game, ITable* settings) {
    std::printf("\n== What the listeners of fleet.heron hear\n\n");
    ITable* ship = FindShip(game);
    if (!ship || !ShowListeners(ship)) return false;
    std::printf("\n== What the host adds\n\n");
    ITable* host = AddHostValues(game, ship, settings);
    if (host) PrintTree(host);
    return host != nullptr;
}

// Both documents are tried, whatever becomes of the first.
int ShowRoundTrips(ITable* game, ITable* settings, const std::string& folder) {
    std::printf("\n== Saved, and loaded again\n\n");
    const int game_status = RoundTrip(game, folder + "/game.json");
    const int settings_status = RoundTrip(settings, folder + "/settings.json");
    const int status = std::max(game_status, settings_status);
    if (status == 0) std::printf("\nNothing was lost.\n");
    if (status == 1) std::printf("\nNot all of it came back.\n");
    return status;
}

// The game borrows the settings when both end; closing a table follows nothing that it borrows.
int Run(const char* game_path, const char* settings_path, const std::string& folder) {
    const Document game = Open(OpenTableReadableFile, game_path);
    const Document settings = Open(OpenTableFile, settings_path);
    if (!game || !settings) return 2;
    PrintDocument(game_path, game.get());
    std::printf("\n");
    PrintDocument(settings_path, settings.get());
    if (!ShowChanges(game.get(), settings.get())) {
        std::fprintf(stderr, "%s: something else stands where the ship or the host's values go\n", game_path);
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
