// Tables and their documents without memory: every operation, every step of growth, loads and saves. A document loads
// into null, or into a table that at worst lacks what there was no memory for.

#include "tests/faults/heap_rows.h"

#include "tables/table.h"
#include "tests/support/temporary_folder.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace TestSupport;
using Tessarin::ITable;

/// "path kind value" of each entry that has a value, those of child tables too, in any order.
void AddLines(ITable& table, const std::string& above, std::string& lines) {
    EXPECT_TRUE(static_cast<Tessarin::Table&>(table).Entries().IsValid());
    for (Tessarin::IIterator* entry = table.First(); entry != nullptr; entry = table.Next(&entry)) {
        if (entry->GetType() == Tessarin::VALUE_EMPTY) continue;
        lines += above + entry->GetKey() + ' ' + std::to_string(entry->GetType()) + ' ';
        Float4x4 matrix;
        if (entry->GetFloat4x4(&matrix) == 1) lines += std::to_string(matrix.m[15]);
        if (entry->GetType() == Tessarin::VALUE_STRING) lines += entry->GetString();
        if (entry->GetType() >= Tessarin::VALUE_INTEGER && entry->GetType() != Tessarin::VALUE_FLOAT4X4) {
            lines += std::to_string(entry->GetInteger());
        }
        lines += '\n';
        if (entry->GetTable() != nullptr) AddLines(*entry->GetTable(), above + entry->GetKey() + '.', lines);
    }
}

std::string Entries(Fixture& fixture) {
    std::string lines;
    if (fixture.table != nullptr) AddLines(*fixture.table, "", lines);
    return lines;
}

/// The entries, the array part with its last item, and how many listeners of an entry and of the array part there are.
std::string TableState(Fixture& fixture) {
    ITable& table = *fixture.table;
    std::string state = Entries(fixture);
    const std::uint32_t items = table.GetArrayCount();
    state += std::to_string(items) + " items";
    if (items != 0) state += ' ' + std::to_string(*static_cast<char*>(table.GetArrayItem(items - 1)));
    fixture.listener.calls = 0;
    const std::int32_t value = table.GetInteger("key0");
    if (table.Find("key0") != nullptr) table.SetInteger("key0", value + 1, 1);
    table.SetArrayItem(0, nullptr, 1); // notifies, and stores nothing
    state += ' ' + std::to_string(fixture.listener.calls) + " calls";
    if (table.Find("key0") != nullptr) table.SetInteger("key0", value, 0);
    return state;
}

/// A table of `entries` integers, with `listeners` record listeners.
Group TableOf(int entries, int listeners, std::uint32_t item_size = 0) {
    auto prepare = [=](Fixture& fixture) {
        fixture.table.reset(CreateTable());
        fixture.other.reset(CreateTable());
        for (int i = 0; i < entries; ++i) fixture.table->SetInteger(("key" + std::to_string(i)).c_str(), i, 0);
        for (int i = 0; i < listeners; ++i) *fixture.table->AddRecordListener() = fixture.listener.Record();
        if (item_size == 0) return;
        fixture.table->CreateArray(item_size);
        *fixture.table->AddArrayListener() = fixture.listener.Array();
    };
    return {prepare, TableState};
}

/// Fills a slot for a listener, if there is one.
bool Filled(Delegate* slot, Delegate delegate) {
    if (slot != nullptr) *slot = delegate;
    return slot != nullptr;
}
bool NewListener(Fixture& f) { return Filled(f.table->AddRecordListener(), f.listener.Record()); }
bool Loaded(Fixture& f, ITable* table) {
    f.table.reset(table);
    return table != nullptr;
}

template <auto Set, auto... Value>
bool Store(Fixture& f) {
    return (f.table.get()->*Set)(f.Fresh(), Value..., 1) == 1;
}

constexpr Float4 kVector = {1, 2, 3, 4};
constexpr Float2 kPair = {1, 2};
constexpr Float3 kTriple = {1, 2, 3};
constexpr Float4x4 kMatrix = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}};
constexpr Handle kHandle = 17;
constexpr std::uint64_t kItem[64] = {5, 5};

TEST(HeapFaults, EveryOperationOfATable) {
    // The ninth entry is the first that needs an index.
    Check(TableOf(8, 1),
          {{"integer", Store<&ITable::SetInteger, 5>},
           {"handle", Store<&ITable::SetHandle, &kHandle>},
           {"vector of 2", Store<&ITable::SetFloat2, &kPair>},
           {"vector of 3", Store<&ITable::SetFloat3, &kTriple>},
           {"vector of 4", Store<&ITable::SetFloat4, &kVector>},
           {"matrix", Store<&ITable::SetFloat4x4, &kMatrix>},
           {"pointer", Store<&ITable::SetPtr, nullptr>},
           {"external", Store<&ITable::SetExternalTable, nullptr>},
           {"reference", Store<&ITable::SetReferenceTable, nullptr>},
           {"real", [](Fixture& f) { return f.table->SetReal(f.Fresh(), 1.5F, 1) == 1; }},
           {"string", [](Fixture& f) { return f.table->SetString("key", f.Fresh(), 1) == 1; }},
           {"string under itself", [](Fixture& f) { return f.table->SetString(f.Fresh(), f.Fresh(), 1) == 1; }},
           {"path", [](Fixture& f) { return f.table->SetPath("key", f.Fresh(), 1) == 1; }},
           {"child", [](Fixture& f) { return f.table->Set(f.Fresh(), 1) != nullptr; }},
           {"flat child", [](Fixture& f) { return GetTable(Set(f.table.get(), f.Fresh()), f.Fresh()) != nullptr; }},
           {"table",
            [](Fixture& f) {
                const bool taken = f.table->SetTable(f.Fresh(), f.other.get(), 1) == 1;
                if (taken) static_cast<void>(f.other.release()); // else it is still the host's
                return taken;
            }},
           {"rename", [](Fixture& f) { return f.table->Rename("key3", f.Fresh(), 1) == 1; }},
           {"getter", // interns its key
            [](Fixture& f) { return f.table->GetInteger(f.Fresh(), 7) == 7 && cstr_find(f.Fresh()) != nullptr; }},
           {"argument listener",
            [](Fixture& f) { return Filled(f.table->AddArgumentListener(), f.listener.Argument()); }},
           {"listener of a listener", // dropped if there is no memory for it
            [](Fixture& f) {
                f.listener.asks = true;
                f.table->SetInteger("key0", 1, 1);
                f.listener.calls = 0;
                f.table->SetInteger("key0", 0, 1);
                return f.listener.calls == 4;
            }},
           {"record listener of an entry",
            [](Fixture& f) { return Filled(f.table->AddRecordListener("key0"), f.listener.Record()); }},
           {"argument listener of an entry",
            [](Fixture& f) { return Filled(f.table->AddArgumentListener("key0"), f.listener.Argument()); }},
           {"array listener", [](Fixture& f) { return Filled(f.table->AddArrayListener(), f.listener.Array()); }},
           {"array", [](Fixture& f) { return f.table->CreateArray(8) == 1; }}});
    Check(TableOf(0, 1, 8), {{"item", [](Fixture& f) { return f.table->SetArrayItem(20, kItem, 1) != nullptr; }},
                             {"larger items", [](Fixture& f) { return f.table->CreateArray(512) == 1; }}});
}

TEST(HeapFaults, EveryStepOfATablesGrowth) {
    for (const int size : {0, 4, 16, 32, 64, 128}) {
        SCOPED_TRACE(size);
        Check(TableOf(size, 0), {{"integer", Store<&ITable::SetInteger, 5>}});
        Check(TableOf(1, size), {{"listener", NewListener}});
    }
}

TEST(HeapFaults, DocumentsOfTables) {
    static const TemporaryFolder folder;
    static const std::string path = folder.Path("document");
    // More entries than a size class has and more children than a chunk, keys that need unescaping, keys twice.
    static std::string readable = "a = 1 * = \"*\" v = [1,2] deep = { x = { y = { z = 2.5 s = \"s*\" } } }";
    static std::string json = R"({"text":"*","again":1,"again":true,"again":2,"none":[1],"none":[1,2],"b\s":1,"a":1,)"
                              R"("*":"*","b":true,"m":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16],"d":{"e":{"f":"s*"}})";
    for (int i = 70; i-- > 0;) {
        const std::string number = std::to_string(i);
        readable += " fill" + number + " = " + number + " b" + number + " { }";
        json += ",\"fill" + number + "\":" + number + ",\"b" + number + "\":{}";
    }
    json += '}';
    const auto prepare = [](const std::string& text) {
        return [&text](Fixture& fixture) {
            fixture.text = Replaced(text, "*", fixture.fresh);
            EXPECT_EQ(folder.File("document", fixture.text), path);
        };
    };
    Check({prepare(readable), Entries, true},
          {{"readable", [](Fixture& f) { return Loaded(f, OpenTableReadableFile(path.c_str())); }}});
    Check({prepare(json), Entries, true},
          {{"file", [](Fixture& f) { return Loaded(f, OpenTableFile(path.c_str())); }},
           {"buffer", [](Fixture& f) {
                return Loaded(f, OpenTableBuffer(f.text.data(), static_cast<std::uint32_t>(f.text.size())));
            }}});
    Group saved = TableOf(20, 0);
    saved.prepare = [table_alone = saved.prepare](Fixture& fixture) {
        table_alone(fixture);
        fixture.table->Set("child", 0)->Set("child", 0)->SetString("text", std::string(70000, 'x').c_str(), 0);
    };
    Check(saved, {{"save to a file", [](Fixture& f) { return f.table->SaveFile(path.c_str()) == 1; }},
                  {"save to a buffer", [](Fixture& f) {
                       void* data = &f;
                       std::uint32_t size = 0;
                       const bool done = f.table->SaveBuffer(&data, &size) == 1;
                       EXPECT_EQ(data != nullptr, done);
                       EXPECT_TRUE(!done || size > 70000);
                       std::free(data);
                       return done;
                   }}});
}

} // namespace
