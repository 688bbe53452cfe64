// How tables are made, filled in bulk and destroyed: the registry and deep trees.

#include "tables/table.h"
#include "tables/table_factory.h"
#include "tests/support/small_stack.h"
#include "tests/tables/recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace Tessarin;
using namespace TestSupport;

TEST(TableRegistry, KnowsATableFromItsMakingToItsEnd) {
    int never_a_table = 0;
    EXPECT_EQ(ValidateTable(nullptr) + ValidateTable(reinterpret_cast<ITable*>(&never_a_table)), 0U);
    EXPECT_EQ(CloseTable(nullptr), 1U);
    const TableHolder outside = NewTable();
    TableHolder root = NewTable();
    ITable* child = root->Set("child", 1);
    ITable* grandchild = child->Set("child", 0);
    ITable* taken = CreateTable();
    EXPECT_EQ(grandchild->SetTable("taken", taken, 1), 1U);
    EXPECT_EQ(root->SetTable("null", nullptr, 1), 1U);
    root->SetExternalTable("external", outside.get(), 1);
    root->SetReferenceTable("reference", outside.get(), 1);
    EXPECT_EQ(ValidateTable(grandchild), 2U);
    root.reset();
    for (ITable* table : {child, grandchild, taken}) EXPECT_EQ(ValidateTable(table), 0U);
    EXPECT_EQ(ValidateTable(outside.get()), 1U);
    const TableHolder next = NewTable();
    EXPECT_EQ(next->GetElementCount() + next->GetArrayCount(), 0U) << "nothing of an earlier table at that address";
}

TEST(TableLifecycle, ATableWithoutAnArrayOfEntriesIsUsable) {
    Table* bare = MakeTable();
    EXPECT_EQ(bare->Entries().Capacity(), 0U);
    EXPECT_EQ(bare->GetInteger("k", 3), 3);
    EXPECT_EQ(bare->Remove("k", 1) + bare->Rename("k", "l", 1), 0U);
    EXPECT_EQ(bare->Clear(1), 1U);
    EXPECT_EQ(bare->SetInteger("k", 1, 1), 1U);
    EXPECT_EQ(bare->Entries().Capacity(), 4U);
    DestroyTable(bare);
    DestroyTable(MakeTable());
}

TEST(EntryStore, ABulkLoadEndsInTheOrderOfATable) {
    std::vector<cstr> keys;
    for (int n = 0; n < 1025; ++n) keys.push_back(cstr_string(("key" + std::to_string(n)).c_str()));
    std::sort(keys.begin(), keys.end(), std::greater<>());
    for (const std::size_t size : {0U, 8U, 9U, 70U, 1024U, 1025U}) {
        EntryStore store;
        std::vector<cstr> expected(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(size)), walk;
        for (cstr key : expected) {
            bool existed = true;
            Pair* pair = store.FindOrAppend(key, existed);
            EXPECT_FALSE(existed);
            EXPECT_EQ(store.FindOrAppend(key, existed), pair);
            EXPECT_TRUE(existed);
        }
        store.FinishBulkLoad();
        if (size > 8) std::reverse(expected.begin(), expected.end());
        for (Pair* pair = store.First(); pair != nullptr; pair = pair->next) walk.push_back(pair->key);
        EXPECT_EQ(walk, expected);
        EXPECT_TRUE(store.IsValid());
        DestroyEntries(store.Dissolve(nullptr));
    }
}

/// A chain of tables, with entries beside the children. Returns the innermost.
ITable* Nest(ITable* outer, int depth) {
    for (int n = 0; n < depth; ++n) {
        ITable* inner = outer->Set("inner", 0);
        if (n % 8 == 0) outer->SetInteger("behind", n, 0);
        outer = inner;
    }
    return outer;
}

TEST(TableLifecycle, ATableAMillionDeepEndsOnASmallStack) {
    TableHolder root = NewTable();
    for (bool by_closing : {false, true}) {
        ITable* innermost = Nest(root.get(), by_closing ? 1000000 : 100000);
        ASSERT_EQ(ValidateTable(innermost), 2U);
        RunOnSmallStack([&] { by_closing ? root.reset() : static_cast<void>(root->Remove("inner", 1)); });
        EXPECT_EQ(ValidateTable(innermost), 0U);
    }
}

} // namespace
