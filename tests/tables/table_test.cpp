// The operations of a table: kinds, sameness, getters, the array part, the walk, and the flat functions over them.

#include "tables/table.h"
#include "tests/support/failing_heap.h"
#include "tests/tables/recorder.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace Tessarin;
using namespace TestSupport;
using U32 = std::uint32_t;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Pointers to store, which nobody follows.
ITable* Elsewhere(int variant) {
    static unsigned char places[2][16];
    return reinterpret_cast<ITable*>(places[variant]);
}

/// 1.5, 2.5 and on, or the next ones.
template <class T>
T Filled(int variant) {
    T value;
    std::array<float, sizeof(T) / sizeof(float)> floats;
    for (float& component : floats) component = 1.5F + static_cast<float>(variant++);
    std::memcpy(&value, floats.data(), sizeof value);
    return value;
}

template <class T, U32 (ITable::*set)(const char*, const T*, U32)>
U32 StoreFloats(ITable* table, int variant, U32 notify) {
    T value = Filled<T>(variant);
    return (table->*set)("k", &value, notify);
}

template <auto set>
U32 StorePointer(ITable* table, int variant, U32 notify) {
    return (table->*set)("k", Elsewhere(variant), notify);
}

template <auto set>
U32 StoreText(ITable* table, int variant, U32 notify) {
    return (table->*set)("k", variant == 0 ? "A/B" : "Text", notify);
}

U32 HandOver(ITable* table, int, U32 notify) {
    ITable* child = CreateTable();
    const U32 taken = table->SetTable("k", child, notify);
    if (taken == 0) CloseTable(child);
    return taken;
}

/// One setter with two values to store.
struct Setter {
    const char* name;
    U32 kind;
    U32 (*set)(ITable* table, int variant, U32 notify);
};

constexpr U32 kNeverAgain = 99; // for setters that take an empty entry only

const Setter kSetters[] = {
    {"integer", VALUE_INTEGER, [](ITable* t, int v, U32 n) { return t->SetInteger("k", 3 + v, n); }},
    {"real", VALUE_REAL, [](ITable* t, int v, U32 n) { return t->SetReal("k", Filled<float>(v), n); }},
    {"string", VALUE_STRING, StoreText<&ITable::SetString>},
    {"path", VALUE_STRING, StoreText<&ITable::SetPath>},
    {"pointer", VALUE_PTR, StorePointer<&ITable::SetPtr>},
    {"handle", VALUE_HANDLE, StoreFloats<Handle, &ITable::SetHandle>},
    {"float2", VALUE_FLOAT2, StoreFloats<Float2, &ITable::SetFloat2>},
    {"float3", VALUE_FLOAT3, StoreFloats<Float3, &ITable::SetFloat3>},
    {"float4", VALUE_FLOAT4, StoreFloats<Float4, &ITable::SetFloat4>},
    {"matrix", VALUE_FLOAT4X4, StoreFloats<Float4x4, &ITable::SetFloat4x4>},
    {"external", VALUE_EXTERNAL_TABLE, StorePointer<&ITable::SetExternalTable>},
    {"reference", VALUE_REFERENCE_TABLE, StorePointer<&ITable::SetReferenceTable>},
    {"table", kNeverAgain, HandOver},
    {"child", kNeverAgain, [](ITable* t, int, U32 n) { return t->Set("k", n) == nullptr ? 0U : 1U; }},
};

/// A table and the log of its listener.
struct Watched {
    std::string log;
    Listener listener{"", &log};
    TableHolder holder = NewTable();
    ITable* table = holder.get();

    void Listen() { *table->AddRecordListener() = listener.Record(); }
};

std::array<unsigned char, 16> Words(ITable* table) {
    Float4 words{};
    table->Find("k")->GetFloat4(&words);
    std::array<unsigned char, 16> bytes;
    std::memcpy(bytes.data(), &words, bytes.size());
    return bytes;
}

// Each setter over an entry that each setter has made: the kind never changes, and listeners are notified if the setter
// accepts.
TEST(TableKinds, EverySetterOverEveryKind) {
    for (const Setter& first : kSetters) {
        for (const Setter& second : kSetters) {
            SCOPED_TRACE(std::string(second.name) + " over " + first.name);
            Watched watched;
            ITable* table = watched.table;
            watched.Listen();
            ASSERT_EQ(first.set(table, 0, 1), 1U);
            EXPECT_EQ(TakeLog(watched.log), "9:k 0:k ");
            const U32 kind = table->Find("k")->GetType();
            EXPECT_EQ(kind, first.kind == kNeverAgain ? U32{VALUE_TABLE} : first.kind);
            auto words = Words(table);

            const bool accepts = first.kind == second.kind && first.kind != kNeverAgain;
            EXPECT_EQ(second.set(table, 1, 1), accepts ? 1U : 0U);
            EXPECT_EQ(TakeLog(watched.log), accepts ? "10:k 1:k " : "");
            EXPECT_EQ(table->Find("k")->GetType(), kind);
            EXPECT_TRUE(accepts || Words(table) == words);
            if (!accepts) continue;
            EXPECT_EQ(second.set(table, 1, 1), 1U) << "the same again";
            EXPECT_EQ(TakeLog(watched.log), kind == VALUE_FLOAT4X4 ? "10:k 1:k " : "");
            EXPECT_EQ(second.set(table, 0, 0), 1U);
            EXPECT_EQ(TakeLog(watched.log), "") << "notified without being asked to";
        }
    }
}

TEST(TableKinds, AnEmptyEntryTakesAnyKindAsAChange) {
    for (const Setter& setter : kSetters) {
        Watched watched;
        ITable* table = watched.table;
        watched.Listen();
        bool existed = false;
        static_cast<Table*>(table)->Entries().FindOrAdd(cstr_string("k"), existed);
        EXPECT_EQ(setter.set(table, 0, 1), 1U) << setter.name;
        EXPECT_EQ(TakeLog(watched.log), "10:k 1:k ") << setter.name;
    }
}

/// Whether a vector of zeros counts as changed by another value in one component.
template <class T>
bool ComponentChanges(U32 (ITable::*set)(const char*, const T*, U32), std::size_t i, float wanted) {
    Watched watched;
    ITable* table = watched.table;
    T value{};
    EXPECT_EQ((table->*set)("k", &value, 1), 1U);
    watched.Listen();
    std::memcpy(reinterpret_cast<unsigned char*>(&value) + i * sizeof wanted, &wanted, sizeof wanted);
    EXPECT_EQ((table->*set)("k", &value, 1), 1U);
    auto words = Words(table);
    const bool stored = std::memcmp(words.data(), &value, sizeof value) == 0;
    EXPECT_EQ(stored, TakeLog(watched.log) == "10:k 1:k ") << "stored and notified go together";
    return stored;
}

TEST(TableSameness, VectorsWithinAStrictAbsoluteBound) {
    float bound = std::bit_cast<float>(0x34000000U);
    const struct {
        float difference;
        bool change;
    } cases[] = {{1e-8F, false}, {std::nextafter(bound, 0.0F), false}, {bound, true}, {1e-6F, true}, {kNaN, true}};
    for (const auto& row : cases) {
        for (const float sign : {1.0F, -1.0F}) {
            const float wanted = sign * row.difference;
            for (std::size_t i = 0; i < 4; ++i) {
                SCOPED_TRACE(std::to_string(wanted) + " in component " + std::to_string(i));
                EXPECT_TRUE(i >= 2 || ComponentChanges<Float2>(&ITable::SetFloat2, i, wanted) == row.change);
                EXPECT_TRUE(i >= 3 || ComponentChanges<Float3>(&ITable::SetFloat3, i, wanted) == row.change);
                EXPECT_EQ(ComponentChanges<Float4>(&ITable::SetFloat4, i, wanted), row.change);
            }
        }
    }
}

TEST(TableSameness, RealsAndTexts) {
    using Step = U32 (*)(ITable*);
    const struct {
        const char* name;
        Step first, second;
        bool change;
    } cases[] = {
        {"zeros", [](ITable* t) { return SetReal(t, "k", 0); }, [](ITable* t) { return SetReal(t, "k", -0.0F); },
         false},
        {"NaN", [](ITable* t) { return SetReal(t, "k", kNaN); }, [](ITable* t) { return SetReal(t, "k", kNaN); }, true},
        {"near", [](ITable* t) { return SetReal(t, "k", 1e-9F); }, [](ITable* t) { return SetReal(t, "k", 0); }, true},
        {"path as string", [](ITable* t) { return SetPath(t, "k", "A/B"); },
         [](ITable* t) { return SetString(t, "k", "a\\b"); }, false},
        {"string as path", [](ITable* t) { return SetString(t, "k", "a\\b"); },
         [](ITable* t) { return SetPath(t, "k", "A//B"); }, false},
        {"null text", [](ITable* t) { return SetString(t, "k", nullptr); },
         [](ITable* t) { return SetPath(t, "k", nullptr); }, false},
        {"null, then empty", [](ITable* t) { return SetString(t, "k", nullptr); },
         [](ITable* t) { return SetString(t, "k", ""); }, true},
    };
    for (const auto& row : cases) {
        Watched watched;
        ITable* table = watched.table;
        EXPECT_EQ(row.first(table), 1U) << row.name;
        watched.Listen();
        auto words = Words(table);
        EXPECT_EQ(row.second(table), 1U) << row.name;
        EXPECT_EQ(TakeLog(watched.log), row.change ? "10:k 1:k " : "") << row.name;
        EXPECT_TRUE(row.change || Words(table) == words) << row.name;
    }
}

TEST(TableGetters, ReadTheWordWhateverTheKind) {
    for (const Setter& setter : kSetters) {
        SCOPED_TRACE(setter.name);
        TableHolder table = NewTable();
        setter.set(table.get(), 0, 0);
        IIterator* pair = table->Find("k");
        const U32 kind = pair->GetType();
        auto words = Words(table.get());
        std::int32_t word = 0;
        std::memcpy(&word, words.data(), sizeof word);
        EXPECT_TRUE(kind != VALUE_INTEGER || word == 3);
        EXPECT_TRUE((kind != VALUE_REAL && kind != VALUE_HANDLE) || word == 0x3FC00000);
        EXPECT_EQ(table->GetInteger("k"), word);
        EXPECT_EQ(table->GetInteger("k", 77), word);
        EXPECT_EQ(table->GetHandle("k"), static_cast<Handle>(word));
        EXPECT_EQ(std::bit_cast<std::int32_t>(table->GetReal("k", 77.0F)), word);
        EXPECT_EQ(std::bit_cast<std::int32_t>(pair->GetReal()), word);
        EXPECT_EQ(std::bit_cast<std::int32_t>(table->GetReal("k")), kind == VALUE_INTEGER ? 0x40400000 : word);
        EXPECT_EQ(pair->GetInteger(), word);
        EXPECT_EQ(pair->GetHandle(), static_cast<Handle>(word));

        const bool table_kind = kind >= VALUE_TABLE && kind <= VALUE_REFERENCE_TABLE;
        EXPECT_EQ(table->GetTable("k") != nullptr, table_kind);
        EXPECT_EQ(table->FindTable("k"), table->GetTable("k"));
        EXPECT_EQ(pair->GetTable(), table->GetTable("k"));
        EXPECT_EQ(table->GetPtr("k"), kind == VALUE_PTR ? Elsewhere(0) : nullptr);
        EXPECT_EQ(pair->GetPtr(), table->GetPtr("k"));
        const char* text = setter.name[0] == 's' ? "A/B" : "a\\b";
        EXPECT_TRUE(kind != VALUE_STRING || table->GetString("k", "f") == cstr_find(text));
        EXPECT_EQ(pair->GetString(), kind == VALUE_STRING ? table->GetString("k") : nullptr);

        Float2 two{};
        Float3 three{};
        Float4x4 matrix = Filled<Float4x4>(8);
        EXPECT_EQ(table->GetFloat2("k", &two) + table->GetFloat3("k", &three) + pair->GetFloat2(&two), 3U);
        EXPECT_EQ(std::memcmp(&two, words.data(), sizeof two), 0);
        EXPECT_EQ(std::memcmp(&three, words.data(), sizeof three), 0);
        EXPECT_EQ(table->GetFloat4x4("k", &matrix), kind == VALUE_FLOAT4X4 ? 1U : 0U);
        EXPECT_EQ(matrix.m[15], Filled<Float4x4>(kind == VALUE_FLOAT4X4 ? 0 : 8).m[15]) << "else left alone";
    }
}

TEST(TableGetters, ReturnTheFallbackForAMissingEntryAlone) {
    TableHolder table = NewTable();
    table->SetInteger("k", 5, 0);
    for (const char* key : {"absent", "K", static_cast<const char*>(nullptr)}) {
        Float4 four{1, 2, 3, 4};
        EXPECT_EQ(table->GetInteger(key, 7), 7);
        EXPECT_EQ(table->GetReal(key, 7.5F), 7.5F);
        EXPECT_STREQ(table->GetString(key, "f"), "f");
        EXPECT_EQ(table->GetInteger(key) + static_cast<int>(table->GetHandle(key)), 0);
        EXPECT_EQ(table->GetReal(key), 0.0F);
        EXPECT_EQ(table->GetString(key), nullptr);
        EXPECT_EQ(table->GetTable(key), nullptr);
        EXPECT_EQ(table->GetPtr(key), nullptr);
        EXPECT_EQ(table->Find(key), nullptr);
        EXPECT_EQ(table->GetFloat4(key, &four), 0U);
        EXPECT_EQ(table->GetFloat3(key, reinterpret_cast<Float3*>(&four)), 0U);
        EXPECT_EQ(table->GetFloat2(key, reinterpret_cast<Float2*>(&four)), 0U);
        EXPECT_EQ(four.x, 1.0F) << "left alone";
        Float4x4 matrix = Filled<Float4x4>(8);
        EXPECT_EQ(table->GetFloat4x4(key, &matrix), 0U);
        EXPECT_EQ(matrix.m[0], Filled<Float4x4>(8).m[0]) << "left alone";
    }
    EXPECT_EQ(table->SetInteger(nullptr, 1, 1), 0U);
    EXPECT_EQ(table->Set(nullptr, 1), nullptr);
    EXPECT_EQ(table->GetElementCount(), 1U) << "reading adds no entry";
    EXPECT_NE(cstr_find("absent"), nullptr) << "but it interns the key";
}

TEST(TableSetters, TakeNoNullForAVectorOrAListener) {
    Watched watched;
    watched.Listen();
    ITable* table = watched.table;
    EXPECT_EQ(table->SetFloat2("k", nullptr, 1) + table->SetFloat3("k", nullptr, 1) +
                  table->SetFloat4("k", nullptr, 1) + table->SetFloat4x4("k", nullptr, 1) +
                  table->SetHandle("k", nullptr, 1),
              0U);
    table->RemoveRecordListener(nullptr);
    table->RemoveArgumentListener(nullptr);
    table->RemoveArrayListener(nullptr);
    table->RemoveRecordListener("k", nullptr);
    table->RemoveArgumentListener("k", nullptr);
    const Delegate listener = watched.listener.Record();
    table->RemoveRecordListener(nullptr, &listener); // of no entry, which isn't the table
    EXPECT_EQ(table->GetElementCount(), 0U);
    EXPECT_EQ(table->SetInteger("k", 1, 1), 1U);
    EXPECT_EQ(watched.log, "9:k 0:k ");
    EXPECT_EQ(table->Next(nullptr), nullptr);
}

TEST(TableArrayPart, StandsBesideTheEntries) {
    TableHolder table = NewTable();
    const std::uint64_t item = 0x1122334455667788U;
    auto counts = [&table] { return std::array{table->GetCount(), table->GetElementCount(), table->GetArrayCount()}; };
    using Counts = std::array<U32, 3>;
    for (const char* key : {"a", "b", "c"}) table->SetInteger(key, 1, 0);
    EXPECT_EQ(counts(), (Counts{3, 3, 0}));
    EXPECT_EQ(table->SetArrayItem(0, &item, 1), nullptr);
    EXPECT_EQ(table->CreateArray(sizeof item), 1U);
    EXPECT_EQ(counts(), (Counts{0, 3, 0}));
    EXPECT_EQ(table->GetArrayItem(0), nullptr);
    auto* stored = static_cast<std::uint64_t*>(table->SetArrayItem(4, &item, 1));
    EXPECT_EQ(counts(), (Counts{5, 3, 5}));
    EXPECT_EQ(table->GetArrayItem(4), stored);
    EXPECT_EQ(table->GetArrayItem(5), nullptr);
    EXPECT_EQ(table->SetArrayItem(7, &item, 0), stored + 3) << "the first eight need no growth";
    // The source is an item of the same array, which moves when the array grows.
    stored = static_cast<std::uint64_t*>(table->SetArrayItem(10, stored, 0));
    EXPECT_EQ(*stored, item);
    EXPECT_EQ(table->SetArrayItem(21, &item, 0), stored + 11) << "twice the need was taken: 22";
    EXPECT_EQ(*static_cast<std::uint64_t*>(table->GetArrayItem(4)), item);
    EXPECT_EQ(table->SetArrayItem(UINT32_MAX, &item, 0), nullptr);
    EXPECT_EQ(table->SetArrayItem(UINT32_MAX / 2, &item, 0), nullptr);
    EXPECT_EQ(table->Clear(1), 1U);
    EXPECT_EQ(counts(), (Counts{22, 0, 22}));
    EXPECT_EQ(table->CreateArray(2), 1U);
    EXPECT_EQ(counts(), (Counts{0, 0, 0})) << "made anew, it has lost its items";
    EXPECT_EQ(table->DestroyArray(), 1U);
    EXPECT_EQ(table->DestroyArray(), 1U);
    EXPECT_EQ(table->SetArrayItem(0, &item, 1), nullptr);
    EXPECT_EQ(table->CreateArray(0), 1U);
    EXPECT_EQ(table->SetArrayItem(0, &item, 1), nullptr) << "items of no size have no room";
    EXPECT_EQ(counts(), (Counts{0, 0, 0}));
}

TEST(TableEntries, RenameRemoveClearAndTheWalk) {
    TableHolder table = NewTable();
    auto walk = [&table] {
        std::string keys;
        for (IIterator* pair = table->First(); pair != nullptr;) {
            keys += pair->GetKey();
            IIterator* cursor = pair;
            pair = table->Next(&cursor);
            EXPECT_NE(cursor, pair) << "the cursor is the caller's to move";
        }
        return keys;
    };
    IIterator* none = nullptr;
    EXPECT_EQ(table->First(), nullptr);
    EXPECT_EQ(table->Next(&none), nullptr);
    for (const char* key : {"c", "A", "a"}) table->SetInteger(key, key[0], 1);
    EXPECT_EQ(walk(), "cAa");
    IIterator* pair = table->Find("c");
    for (const char* refused : {"A", "c"}) EXPECT_EQ(table->Rename("c", refused, 1), 0U);
    EXPECT_EQ(table->Rename("x", "y", 1) + table->Rename("c", nullptr, 1) + table->Rename(nullptr, "y", 1), 0U);
    EXPECT_EQ(walk(), "cAa");
    EXPECT_EQ(table->Rename("c", "d", 0), 1U);
    EXPECT_EQ(walk(), "Aad");
    EXPECT_EQ(table->Find("d"), pair);
    EXPECT_STREQ(pair->GetKey(), "d");
    EXPECT_EQ(table->GetInteger("d"), 'c');
    EXPECT_EQ(table->Remove("c", 1) + table->Remove(nullptr, 1), 0U);
    EXPECT_EQ(table->Remove("a", 0), 1U);
    EXPECT_EQ(walk(), "Ad");
    EXPECT_EQ(table->SetReal("a", 1.0F, 1), 1U) << "a removed key is free for any kind";
    EXPECT_EQ(table->Clear(0), 1U);
    EXPECT_EQ(walk(), "");
    EXPECT_EQ(table->ReservedFirst(&none) + table->ReservedSecond(nullptr), 0U);
}

TEST(Pair, DirectSettersReleaseWhatTheEntryOwned) {
    TableHolder table = NewTable();
    ITable* child = table->Set("k", 0);
    IIterator* pair = table->Find("k");
    const Float4x4 matrix = Filled<Float4x4>(0);
    EXPECT_EQ(pair->SetFloat4x4(&matrix), 0U);
    EXPECT_EQ(pair->SetTable(child), 1U) << "handed over again it isn't to end";
    EXPECT_EQ(ValidateTable(child), 2U);
    EXPECT_EQ(pair->SetInteger(4), 1U);
    EXPECT_EQ(ValidateTable(child), 0U);
    EXPECT_EQ(pair->GetType(), VALUE_INTEGER);
    EXPECT_EQ(pair->SetFloat4x4(&matrix), 0U);
    EXPECT_EQ(pair->GetInteger(), 4);
    EXPECT_EQ(pair->SetHandle(nullptr) + pair->SetFloat2(nullptr) + pair->SetFloat3(nullptr), 0U);
    EXPECT_EQ(pair->SetFloat4(nullptr) + pair->SetFloat4x4(nullptr), 0U);
    EXPECT_EQ(pair->Set(CreateTable()), 1U);
    EXPECT_EQ(pair->Set(CreateTable()), 1U) << "in the place of another";
    EXPECT_EQ(pair->SetExternalTable(pair->GetTable()) + pair->SetReferenceTable(pair->GetTable()), 0U)
        << "what it owns it can't borrow";
    EXPECT_EQ(pair->GetType(), VALUE_TABLE);
    EXPECT_EQ(pair->SetExternalTable(nullptr), 1U);
    EXPECT_EQ(pair->GetTable(), nullptr);
    EXPECT_EQ(pair->SetPath(cstr_string("As/It/Is")), 1U);
    pair->Unassigned();
    EXPECT_STREQ(pair->GetString(), "As/It/Is");
    EXPECT_EQ(table->SetFloat4x4("m", &matrix, 0), 1U);
    EXPECT_EQ(table->Find("m")->GetFloat4x4(nullptr), 0U);
    EXPECT_EQ(table->Find("m")->SetReal(1.5F), 1U);
    EXPECT_EQ(table->Find("m")->GetType(), VALUE_REAL);
}

// ------------------------------------------------------------------------------------------------- flat functions

TEST(FlatFunctions, ANullTableReturnsNothingAndInternsNothing) {
    const char* key = "key of a null table";
    const Float4x4 matrix = Filled<Float4x4>(0);
    const Float4 four{1, 2, 3, 4};
    const Float2 two{1, 2};
    const Handle handle = 3;
    EXPECT_EQ(Empty(nullptr), 1U);
    EXPECT_EQ(GetInteger(nullptr, key), 0);
    EXPECT_EQ(GetReal(nullptr, key), 0.0F);
    EXPECT_EQ(GetString(nullptr, key), nullptr);
    EXPECT_EQ(GetTable(nullptr, key), nullptr);
    EXPECT_EQ(GetPtr(nullptr, key), nullptr);
    EXPECT_EQ(GetFloat2(nullptr, key).y + GetFloat3(nullptr, key).z + GetFloat4(nullptr, key).w, 0.0F);
    for (const float component : GetFloat4x4(nullptr, key).m) EXPECT_EQ(component, 0.0F);
    EXPECT_EQ(GetHandle(nullptr, key) + GetCount(nullptr) + GetElementCount(nullptr), 0U);
    EXPECT_EQ(Set(nullptr, key), nullptr);
    EXPECT_EQ(SetInteger(nullptr, key, 1) + SetReal(nullptr, key, 1) + SetString(nullptr, key, key), 0U);
    EXPECT_EQ(SetTable(nullptr, key, nullptr) + SetPath(nullptr, key, key) + SetPtr(nullptr, key, nullptr), 0U);
    EXPECT_EQ(SetExternalTable(nullptr, key, nullptr) + SetReferenceTable(nullptr, key, nullptr), 0U);
    EXPECT_EQ(SetFloat2(nullptr, key, &two) + SetFloat3(nullptr, key, 1, 2, 3) + SetFloat4(nullptr, key, &four), 0U);
    EXPECT_EQ(SetFloat4x4(nullptr, key, &matrix) + SetHandle(nullptr, key, &handle), 0U);
    EXPECT_EQ(Clear(nullptr) + Remove(nullptr, key) + Rename(nullptr, key, key), 0U);
    EXPECT_EQ(cstr_find(key), nullptr);
}

TEST(FlatFunctions, ForwardAndAlwaysNotify) {
    Watched watched;
    watched.Listen();
    ITable* table = watched.table;
    std::string& log = watched.log;
    const Float2 two{1, 2};
    const Float4 four{1, 2, 3, 4};
    const Float4x4 matrix = Filled<Float4x4>(0);
    const Handle handle = 0x80000001;
    EXPECT_TRUE(SetInteger(table, "i", -3) && SetReal(table, "r", 0.5F) && SetString(table, "s", "S") &&
                SetPath(table, "p", "P/") && SetPtr(table, "q", &log) && SetFloat2(table, "2", &two) &&
                SetFloat3(table, "3", 5, 6, 7) && SetFloat4(table, "4", &four) && SetFloat4x4(table, "m", &matrix) &&
                SetHandle(table, "h", &handle) && SetTable(table, "t", CreateTable()) &&
                SetExternalTable(table, "e", table) && SetReferenceTable(table, "f", table));
    EXPECT_EQ(TakeLog(log), "9:i 0:i 9:r 0:r 9:s 0:s 9:p 0:p 9:q 0:q 9:2 0:2 9:3 0:3 9:4 0:4 9:m 0:m 9:h 0:h 9:t 0:t "
                            "9:e 0:e 9:f 0:f ");
    EXPECT_EQ(Set(table, "c"), table) << "the table itself, not the child";
    EXPECT_EQ(TakeLog(log), "9:c 0:c ");
    ITable* child = GetTable(table, "c");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(Set(table, "c"), table);
    EXPECT_EQ(Set(table, "i"), table);
    EXPECT_EQ(GetTable(table, "c"), child);
    EXPECT_EQ(GetInteger(table, "i"), -3);
    EXPECT_EQ(GetReal(table, "i"), -3.0F);
    EXPECT_EQ(GetReal(table, "r"), 0.5F);
    EXPECT_STREQ(GetString(table, "s"), "S");
    EXPECT_STREQ(GetString(table, "p"), "p\\");
    EXPECT_EQ(GetPtr(table, "q"), &log);
    EXPECT_EQ(GetFloat2(table, "2").y + GetFloat3(table, "3").z + GetFloat4(table, "4").w, 13.0F);
    EXPECT_EQ(GetFloat3(table, "3").x, 5.0F);
    EXPECT_EQ(GetFloat4x4(table, "m").m[15], matrix.m[15]);
    EXPECT_EQ(GetFloat4x4(table, "4").m[0], 0.0F) << "another kind gives zeros";
    EXPECT_EQ(GetHandle(table, "h"), handle);
    EXPECT_EQ(GetTable(table, "e"), table);
    EXPECT_EQ(GetTable(table, "f"), table);
    EXPECT_EQ(GetCount(table), 14U);
    table->CreateArray(4);
    EXPECT_EQ(GetCount(table), 0U);
    EXPECT_EQ(GetElementCount(table), 14U);
    EXPECT_TRUE(Rename(table, "i", "j") && Remove(table, "j") && Clear(table));
    EXPECT_EQ(TakeLog(log), "13:i 4:j 11:j 2:j 12:- 3:- ");
    EXPECT_EQ(Empty(table), 0U);
}

} // namespace
