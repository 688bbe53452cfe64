// Tables and their documents without memory: every setter, every step of growth, loads and saves.

#include "tests/faults/heap_rows.h"

#include "tables/table.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;
using Tessarin::ITable;

// -------------------------------------------------------------------------------------------------------------- tables

/// "path kind value" of each entry that has a value, children's too.
void AddLines(ITable& table, const std::string& above, std::multiset<std::string>& lines) {
    EXPECT_TRUE(static_cast<Tessarin::Table&>(table).Entries().IsValid());
    for (Tessarin::IIterator* entry = table.First(); entry != nullptr; entry = table.Next(&entry)) {
        if (entry->GetType() == Tessarin::VALUE_EMPTY) continue;
        std::string line = above + entry->GetKey() + ' ' + std::to_string(entry->GetType()) + ' ';
        Float4x4 matrix;
        if (entry->GetFloat4x4(&matrix) == 1) {
            line += std::to_string(matrix.m[15]);
        } else if (entry->GetTable() != nullptr) {
            AddLines(*entry->GetTable(), above + entry->GetKey() + '.', lines);
        } else if (entry->GetType() == Tessarin::VALUE_STRING) {
            line += '\'' + std::string(entry->GetString());
        } else {
            line += std::to_string(entry->GetInteger());
        }
        lines.insert(line);
    }
}

std::multiset<std::string> Lines(ITable* table) {
    std::multiset<std::string> lines;
    if (table != nullptr) AddLines(*table, "", lines);
    return lines;
}

/// The entries, the array part with its last item, and how many listeners of an entry and of the array part there are.
std::string TableState(World& world) {
    std::string state;
    for (const std::string& line : Lines(world.table.get())) state += line + '\n';
    const std::uint32_t items = world.table->GetArrayCount();
    state += std::to_string(items) + " items";
    if (items != 0) state += ' ' + std::to_string(*static_cast<char*>(world.table->GetArrayItem(items - 1)));
    world.ear.told = 0;
    const std::int32_t value = world.table->GetInteger("key0");
    if (world.table->Find("key0") != nullptr) world.table->SetInteger("key0", value + 1, 1);
    world.table->SetArrayItem(0, nullptr, 1); // is told, and stores nothing
    state += ' ' + std::to_string(world.ear.told) + " told";
    if (world.table->Find("key0") != nullptr) world.table->SetInteger("key0", value, 0);
    return state;
}

/// A table of `entries` integers, which `listeners` listen to.
Group TableOf(int entries, int listeners, std::uint32_t item_size = 0) {
    auto prepare = [=](World& world) {
        world.table.reset(CreateTable());
        world.other.reset(CreateTable());
        for (int i = 0; i < entries; ++i) world.table->SetInteger(("key" + std::to_string(i)).c_str(), i, 0);
        for (int i = 0; i < listeners; ++i)
            *world.table->AddRecordListener() = RecordDelegate<&Ear::OnRecord>(&world.ear);
        if (item_size != 0) world.table->CreateArray(item_size);
        if (item_size != 0) *world.table->AddArrayListener() = ArrayDelegate<&Ear::OnItem>(&world.ear);
    };
    return {prepare, TableState};
}

bool NewInteger(World& world) { return world.table->SetInteger(world.Fresh(), 5, 1) == 1; }
bool NewMatrix(World& world) {
    const Float4x4 matrix{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}};
    return world.table->SetFloat4x4(world.Fresh(), &matrix, 1) == 1;
}
bool NewChild(World& world) { return world.table->Set(world.Fresh(), 1) != nullptr; }

/// Hands the listener's place its delegate, if there is one.
bool Filled(Delegate* place, Delegate delegate) {
    if (place != nullptr) *place = delegate;
    return place != nullptr;
}
bool NewListener(World& world) {
    return Filled(world.table->AddRecordListener(), RecordDelegate<&Ear::OnRecord>(&world.ear));
}

constexpr Float4 kVector = {1, 2, 3, 4};
constexpr Float2 kPair = {1, 2};
constexpr Float3 kTriple = {1, 2, 3};
constexpr Handle kHandle = 17;
constexpr std::uint64_t kItem[64] = {5, 5};

TEST(HeapFaults, EverySetterOfATable) {
    // The ninth entry is the first that needs an index.
    Check(TableOf(8, 1),
          {{"integer", NewInteger},
           {"matrix", NewMatrix},
           {"child", NewChild},
           {"real", [](World& w) { return w.table->SetReal(w.Fresh(), 1.5F, 1) == 1; }},
           {"string", [](World& w) { return w.table->SetString("key", w.Fresh(), 1) == 1; }},
           {"string under itself", [](World& w) { return w.table->SetString(w.Fresh(), w.Fresh(), 1) == 1; }},
           {"path", [](World& w) { return w.table->SetPath("key", w.Fresh(), 1) == 1; }},
           {"pointer", [](World& w) { return w.table->SetPtr(w.Fresh(), nullptr, 1) == 1; }},
           {"handle", [](World& w) { return w.table->SetHandle(w.Fresh(), &kHandle, 1) == 1; }},
           {"vector of 2", [](World& w) { return w.table->SetFloat2(w.Fresh(), &kPair, 1) == 1; }},
           {"vector of 3", [](World& w) { return w.table->SetFloat3(w.Fresh(), &kTriple, 1) == 1; }},
           {"vector of 4", [](World& w) { return w.table->SetFloat4(w.Fresh(), &kVector, 1) == 1; }},
           {"external", [](World& w) { return w.table->SetExternalTable(w.Fresh(), w.other.get(), 1) == 1; }},
           {"reference", [](World& w) { return w.table->SetReferenceTable(w.Fresh(), w.other.get(), 1) == 1; }},
           {"table",
            [](World& w) {
                const bool taken = w.table->SetTable(w.Fresh(), w.other.get(), 1) == 1;
                if (taken) static_cast<void>(w.other.release()); // else it is still the host's
                return taken;
            }},
           {"flat child", [](World& w) { return GetTable(Set(w.table.get(), w.Fresh()), w.Fresh()) != nullptr; }},
           {"rename", [](World& w) { return w.table->Rename("key3", w.Fresh(), 1) == 1; }},
           {"listener",
            [](World& w) { return Filled(w.table->AddArgumentListener(), ArgumentDelegate<&Ear::OnKey>(&w.ear)); }}});
}

TEST(HeapFaults, EveryStepOfATablesGrowth) {
    for (int entries : {0, 3, 4, 16, 32, 64, 128}) {
        SCOPED_TRACE(entries);
        Check(TableOf(entries, 0), {{"integer", NewInteger}, {"matrix", NewMatrix}, {"child", NewChild}});
    }
    for (int listeners : {0, 4, 16, 32, 64, 128}) {
        SCOPED_TRACE(listeners);
        Check(TableOf(1, listeners), {{"listener", NewListener}});
    }
    Check(
        TableOf(1, 0),
        {{"array", [](World& w) { return w.table->CreateArray(8) == 1; }},
         {"array listener",
          [](World& w) { return Filled(w.table->AddArrayListener(), ArrayDelegate<&Ear::OnItem>(&w.ear)); }},
         {"record listener of an entry",
          [](World& w) { return Filled(w.table->AddRecordListener("key0"), RecordDelegate<&Ear::OnRecord>(&w.ear)); }},
         {"argument listener of an entry", [](World& w) {
              return Filled(w.table->AddArgumentListener("key0"), ArgumentDelegate<&Ear::OnKey>(&w.ear));
          }}});
    Check(TableOf(0, 1, 8), {{"item", [](World& w) { return w.table->SetArrayItem(20, kItem, 1) != nullptr; }},
                             {"larger items", [](World& w) { return w.table->CreateArray(512) == 1; }}});
}

// The others try again; here the table ends with what it got.
TEST(HeapFaults, AnArrayPartThatWasRefusedEndsWithItsTable) {
    for (std::size_t n = 0; n < 3; ++n) {
        const Owned<ITable> table(CreateTable());
        {
            const FailingHeap heap(n);
            EXPECT_EQ(table->CreateArray(8), 0U);
        }
        EXPECT_EQ(table->SetArrayItem(0, &n, 1), nullptr);
    }
}

// ----------------------------------------------------------------------------------------------------------- documents

struct LoadCase {
    const char* name;
    const std::string* text; ///< each `*` in it is a fresh text
    ITable* (*open)(const std::string& path, const std::string& text);
};

std::multiset<std::string> LinesAndClose(ITable* table, const std::string& fresh) {
    std::multiset<std::string> lines;
    for (const std::string& line : Lines(table)) lines.insert(Replaced(line, fresh, "*"));
    if (table != nullptr) CloseTable(table);
    return lines;
}

/// Loads with the n-th allocation refused: null, or a table that at worst lacks what there was no memory for.
/// returns  whether there was an n-th one
bool LoadWithout(const LoadCase& c, std::size_t n, std::multiset<std::string>& whole) {
    const TemporaryFolder folder;
    const std::string fresh = FreshText();
    const std::string text = Replaced(*c.text, "*", fresh);
    const std::string path = folder.File("document", text);
    FillArena();
    Pools().Drain();
    ITable* root = nullptr;
    bool failed = false;
    {
        const FailingHeap heap(n);
        root = c.open(path, text);
        failed = heap.Failed();
    }
    EXPECT_TRUE(root != nullptr || failed);
    const std::multiset<std::string> lines = LinesAndClose(root, fresh);
    if (n == FailingHeap::kNever) whole = lines;
    EXPECT_TRUE(std::includes(whole.begin(), whole.end(), lines.begin(), lines.end()));
    EXPECT_TRUE(failed || lines == whole);
    EXPECT_EQ(LinesAndClose(c.open(path, text), fresh), whole) << "with memory";
    EXPECT_TRUE(Pools().Drain()) << "a block lost";
    return failed;
}

TEST(HeapFaults, EveryLoadOfATable) {
    std::string readable = "a = 1 * = \"*\" v = [1,2] deep = { x = { y = { z = 2.5 s = \"s*\" } } }";
    std::string json =
        R"({"text":"*","again":1,"again":true,"again":2,"none":[1],"none":[1,2],"b\s":1,"a":1,"*":"*","b":true,"m":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16],"d":{"e":{"f":"s*"}})";
    for (int i = 0; i < 70; ++i) {
        const std::string number = std::to_string(i);
        readable.append(" fill").append(number).append(" = ").append(number);
        json.append(",\"fill").append(number).append("\":").append(number);
        // More children than a chunk of the pool has, so that there is none for one of them.
        readable.append(" b").append(number).append(" { }");
        json.append(",\"b").append(number).append("\":{}");
    }
    json += '}';
    const LoadCase cases[] = {
        {"readable", &readable, [](auto& path, auto&) { return OpenTableReadableFile(path.c_str()); }},
        {"file", &json, [](auto& path, auto&) { return OpenTableFile(path.c_str()); }},
        {"buffer", &json,
         [](auto&, auto& text) { return OpenTableBuffer(text.data(), static_cast<std::uint32_t>(text.size())); }}};
    for (const LoadCase& c : cases) {
        SCOPED_TRACE(c.name);
        std::multiset<std::string> whole;
        LoadWithout(c, FailingHeap::kNever, whole);
        EXPECT_GT(whole.size(), 75U);
        std::size_t n = 0;
        while (LoadWithout(c, n, whole)) ++n;
        EXPECT_GT(n, 10U);
    }
}

TEST(HeapFaults, EverySaveOfATable) {
    static const TemporaryFolder folder;
    static const std::string path = folder.Path("saved");
    Group group = TableOf(20, 0);
    const auto table_alone = group.prepare;
    group.prepare = [table_alone](World& world) {
        table_alone(world);
        world.table->Set("child", 0)->Set("child", 0)->SetString("text", std::string(70000, 'x').c_str(), 0);
    };
    Check(group, {{"file", [](World& w) { return w.table->SaveFile(path.c_str()) == 1; }},
                  {"buffer", [](World& w) {
                       void* data = &w;
                       std::uint32_t size = 0;
                       const bool saved = w.table->SaveBuffer(&data, &size) == 1;
                       EXPECT_EQ(data != nullptr, saved);
                       EXPECT_TRUE(!saved || size > 70000);
                       std::free(data);
                       return saved;
                   }}});
    World world;
    group.prepare(world);
    const std::multiset<std::string> saved = Lines(world.table.get());
    const std::multiset<std::string> read = LinesAndClose(OpenTableFile(path.c_str()), world.fresh);
    EXPECT_EQ(saved.size(), 23U);
    EXPECT_TRUE(std::includes(read.begin(), read.end(), saved.begin(), saved.end()));
}

} // namespace
