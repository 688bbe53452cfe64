// The operations of a table at their edges: missing entries, null arguments, sizes without room; setters of entries,
// and the flat functions. Kinds, values, order and array parts in general are compared with a model in fuzz/tables.cpp.

#include "tessarin/tables.h"
#include "tests/tables/recorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

using namespace Tessarin;
using namespace TestSupport;
using U32 = std::uint32_t;

/// 1.5, 2.5 and on, or the next ones.
template <class T>
T Filled(int variant) {
    T value;
    std::array<float, sizeof(T) / sizeof(float)> floats;
    for (float& component : floats) component = 1.5F + static_cast<float>(variant++);
    std::memcpy(&value, floats.data(), sizeof value);
    return value;
}

/// A table and the log of its listener.
struct Watched {
    std::string log;
    Listener listener{"", &log};
    TableHolder holder = NewTable();
    ITable* table = holder.get();

    void Listen() { *table->AddRecordListener() = listener.Record(); }
};

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
}

TEST(TableArrayPart, RefusesWhatHasNoRoom) {
    Watched watched;
    ITable* table = watched.table;
    *table->AddArrayListener() = watched.listener.Array();
    const std::uint64_t item = 0x1122334455667788U;
    EXPECT_EQ(table->SetArrayItem(0, &item, 1), nullptr);
    EXPECT_EQ(TakeLog(watched.log), "");
    EXPECT_EQ(table->CreateArray(sizeof item), 1U);
    EXPECT_NE(table->SetArrayItem(0, &item, 0), nullptr);
    EXPECT_EQ(TakeLog(watched.log), "14:0 5:0 ");
    EXPECT_EQ(table->SetArrayItem(UINT32_MAX, &item, 1), nullptr);
    EXPECT_EQ(table->SetArrayItem(UINT32_MAX / 2, &item, 0), nullptr);
    EXPECT_EQ(TakeLog(watched.log), "16:4294967295 7:4294967295 ") << "notified although it then fails";
    EXPECT_EQ(table->GetArrayCount(), 1U);
    EXPECT_EQ(table->Clear(1), 1U);
    EXPECT_EQ(table->GetCount(), 1U) << "the array part stays";
    EXPECT_EQ(table->DestroyArray() + table->DestroyArray() + table->CreateArray(0), 3U);
    EXPECT_EQ(table->SetArrayItem(0, &item, 1), nullptr) << "items of no size have no room";
}

TEST(TableEntries, TheEdgesOfTheWalkAndOfKeys) {
    const TableHolder table = NewTable();
    IIterator* none = nullptr;
    EXPECT_EQ(table->First(), nullptr);
    EXPECT_EQ(table->Next(&none), nullptr);
    EXPECT_EQ(table->Next(nullptr), nullptr);
    table->SetInteger("a", 1, 1);
    table->SetInteger("b", 1, 1);
    IIterator* cursor = table->First();
    EXPECT_STREQ(table->Next(&cursor)->GetKey(), "b");
    EXPECT_STREQ(cursor->GetKey(), "a") << "the cursor is the caller's to move";
    EXPECT_EQ(table->Rename("a", nullptr, 1) + table->Rename(nullptr, "y", 1) + table->Remove(nullptr, 1), 0U);
    EXPECT_EQ(table->Rename("a", nullptr, 0) + table->Rename(nullptr, "y", 0) + table->Remove(nullptr, 0), 0U);
    EXPECT_EQ(table->SetInteger(nullptr, 1, 1), 0U);
    EXPECT_EQ(table->Set(nullptr, 1), nullptr);
    EXPECT_EQ(table->GetElementCount(), 2U);
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
