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

/// "path kind value" of each entry that has a value, those of child tables too.
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
std::string TableState(Fixture& fixture) {
    std::string state;
    for (const std::string& line : Lines(fixture.table.get())) state += line + '\n';
    const std::uint32_t items = fixture.table->GetArrayCount();
    state += std::to_string(items) + " items";
    if (items != 0) state += ' ' + std::to_string(*static_cast<char*>(fixture.table->GetArrayItem(items - 1)));
    fixture.listener.calls = 0;
    const std::int32_t value = fixture.table->GetInteger("key0");
    if (fixture.table->Find("key0") != nullptr) fixture.table->SetInteger("key0", value + 1, 1);
    fixture.table->SetArrayItem(0, nullptr, 1); // notifies, and stores nothing
    state += ' ' + std::to_string(fixture.listener.calls) + " calls";
    if (fixture.table->Find("key0") != nullptr) fixture.table->SetInteger("key0", value, 0);
    return state;
}

/// A table of `entries` integers, with `listeners` record listeners.
Group TableOf(int entries, int listeners, std::uint32_t item_size = 0) {
    auto prepare = [=](Fixture& fixture) {
        fixture.table.reset(CreateTable());
        fixture.other.reset(CreateTable());
        for (int i = 0; i < entries; ++i) fixture.table->SetInteger(("key" + std::to_string(i)).c_str(), i, 0);
        for (int i = 0; i < listeners; ++i)
            *fixture.table->AddRecordListener() = RecordDelegate<&CountingListener::OnRecord>(&fixture.listener);
        if (item_size != 0) fixture.table->CreateArray(item_size);
        if (item_size != 0)
            *fixture.table->AddArrayListener() = ArrayDelegate<&CountingListener::OnItem>(&fixture.listener);
    };
    return {prepare, TableState};
}

bool NewInteger(Fixture& fixture) { return fixture.table->SetInteger(fixture.Fresh(), 5, 1) == 1; }
bool NewMatrix(Fixture& fixture) {
    const Float4x4 matrix{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}};
    return fixture.table->SetFloat4x4(fixture.Fresh(), &matrix, 1) == 1;
}
bool NewChild(Fixture& fixture) { return fixture.table->Set(fixture.Fresh(), 1) != nullptr; }

/// Fills a slot for a listener, if there is one.
bool Filled(Delegate* slot, Delegate delegate) {
    if (slot != nullptr) *slot = delegate;
    return slot != nullptr;
}
bool NewListener(Fixture& fixture) {
    return Filled(fixture.table->AddRecordListener(), RecordDelegate<&CountingListener::OnRecord>(&fixture.listener));
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
           {"real", [](Fixture& f) { return f.table->SetReal(f.Fresh(), 1.5F, 1) == 1; }},
           {"string", [](Fixture& f) { return f.table->SetString("key", f.Fresh(), 1) == 1; }},
           {"string under itself", [](Fixture& f) { return f.table->SetString(f.Fresh(), f.Fresh(), 1) == 1; }},
           {"path", [](Fixture& f) { return f.table->SetPath("key", f.Fresh(), 1) == 1; }},
           {"pointer", [](Fixture& f) { return f.table->SetPtr(f.Fresh(), nullptr, 1) == 1; }},
           {"handle", [](Fixture& f) { return f.table->SetHandle(f.Fresh(), &kHandle, 1) == 1; }},
           {"vector of 2", [](Fixture& f) { return f.table->SetFloat2(f.Fresh(), &kPair, 1) == 1; }},
           {"vector of 3", [](Fixture& f) { return f.table->SetFloat3(f.Fresh(), &kTriple, 1) == 1; }},
           {"vector of 4", [](Fixture& f) { return f.table->SetFloat4(f.Fresh(), &kVector, 1) == 1; }},
           {"external", [](Fixture& f) { return f.table->SetExternalTable(f.Fresh(), f.other.get(), 1) == 1; }},
           {"reference", [](Fixture& f) { return f.table->SetReferenceTable(f.Fresh(), f.other.get(), 1) == 1; }},
           {"table",
            [](Fixture& f) {
                const bool taken = f.table->SetTable(f.Fresh(), f.other.get(), 1) == 1;
                if (taken) static_cast<void>(f.other.release()); // else it is still the host's
                return taken;
            }},
           {"flat child", [](Fixture& f) { return GetTable(Set(f.table.get(), f.Fresh()), f.Fresh()) != nullptr; }},
           {"rename", [](Fixture& f) { return f.table->Rename("key3", f.Fresh(), 1) == 1; }},
           {"listener", [](Fixture& f) {
                return Filled(f.table->AddArgumentListener(), ArgumentDelegate<&CountingListener::OnKey>(&f.listener));
            }}});
}

TEST(HeapFaults, EveryStepOfATablesGrowth) {
    for (const int entries : {0, 3, 4, 16, 32, 64, 128}) {
        SCOPED_TRACE(entries);
        Check(TableOf(entries, 0), {{"integer", NewInteger}, {"matrix", NewMatrix}, {"child", NewChild}});
    }
    for (const int listeners : {0, 4, 16, 32, 64, 128}) {
        SCOPED_TRACE(listeners);
        Check(TableOf(1, listeners), {{"listener", NewListener}});
    }
    Check(TableOf(1, 0), {{"array", [](Fixture& f) { return f.table->CreateArray(8) == 1; }},
                          {"array listener",
                           [](Fixture& f) {
                               return Filled(f.table->AddArrayListener(),
                                             ArrayDelegate<&CountingListener::OnItem>(&f.listener));
                           }},
                          {"record listener of an entry",
                           [](Fixture& f) {
                               return Filled(f.table->AddRecordListener("key0"),
                                             RecordDelegate<&CountingListener::OnRecord>(&f.listener));
                           }},
                          {"argument listener of an entry", [](Fixture& f) {
                               return Filled(f.table->AddArgumentListener("key0"),
                                             ArgumentDelegate<&CountingListener::OnKey>(&f.listener));
                           }}});
    Check(TableOf(0, 1, 8), {{"item", [](Fixture& f) { return f.table->SetArrayItem(20, kItem, 1) != nullptr; }},
                             {"larger items", [](Fixture& f) { return f.table->CreateArray(512) == 1; }}});
}

// The other tests try again; here the table is destroyed as the failure has left it.
TEST(HeapFaults, AnArrayPartThatFailedEndsWithItsTable) {
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
    const std::string* text; // each `*` in it is a fresh text
    ITable* (*open)(const std::string& path, const std::string& text);
};

std::multiset<std::string> LinesAndClose(ITable* table, const std::string& fresh) {
    std::multiset<std::string> lines;
    for (const std::string& line : Lines(table)) lines.insert(Replaced(line, fresh, "*"));
    if (table != nullptr) CloseTable(table);
    return lines;
}

/// Loads with the n-th allocation failing: null, or a table that at worst lacks what there was no memory for.
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
    group.prepare = [table_alone](Fixture& fixture) {
        table_alone(fixture);
        fixture.table->Set("child", 0)->Set("child", 0)->SetString("text", std::string(70000, 'x').c_str(), 0);
    };
    Check(group, {{"file", [](Fixture& f) { return f.table->SaveFile(path.c_str()) == 1; }},
                  {"buffer", [](Fixture& f) {
                       void* data = &f;
                       std::uint32_t size = 0;
                       const bool saved = f.table->SaveBuffer(&data, &size) == 1;
                       EXPECT_EQ(data != nullptr, saved);
                       EXPECT_TRUE(!saved || size > 70000);
                       std::free(data);
                       return saved;
                   }}});
    Fixture fixture;
    group.prepare(fixture);
    const std::multiset<std::string> saved = Lines(fixture.table.get());
    const std::multiset<std::string> read = LinesAndClose(OpenTableFile(path.c_str()), fixture.fresh);
    EXPECT_EQ(saved.size(), 23U);
    EXPECT_TRUE(std::includes(read.begin(), read.end(), saved.begin(), saved.end()));
}

} // namespace
