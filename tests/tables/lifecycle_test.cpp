// How tables are made and destroyed: the registry, deep trees, and what allocation failures leave undone.

#include "tables/table.h"
#include "tables/table_factory.h"
#include "tests/support/failing_heap.h"
#include "tests/support/small_stack.h"
#include "tests/tables/recorder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Tessarin;
using namespace TestSupport;

TEST(TableRegistry, SaysHowEachTableWasMade) {
    int never_a_table = 0;
    EXPECT_EQ(ValidateTable(nullptr), 0U);
    EXPECT_EQ(ValidateTable(reinterpret_cast<ITable*>(&never_a_table)), 0U);
    EXPECT_EQ(CloseTable(nullptr), 1U);

    ITable* root = CreateTable();
    EXPECT_EQ(ValidateTable(root), 1U);
    EXPECT_EQ(root->GetCount(), 0U);
    ITable* child = root->Set("child", 1);
    ITable* grandchild = child->Set("child", 0);
    ITable* removed = root->Set("removed", 0);
    EXPECT_EQ(root->Set("child", 1), nullptr);
    ITable* taken = CreateTable();
    EXPECT_EQ(root->SetInteger("number", 1, 0), 1U);
    EXPECT_EQ(root->SetTable("number", taken, 1), 0U);
    EXPECT_EQ(root->SetTable("taken", taken, 1), 1U);
    ITable* outside = CreateTable();
    root->SetExternalTable("external", outside, 1);
    root->SetReferenceTable("reference", outside, 1);
    EXPECT_EQ(root->SetTable("null", nullptr, 1), 1U);
    for (ITable* table : {child, grandchild, removed}) EXPECT_EQ(ValidateTable(table), 2U);
    EXPECT_EQ(ValidateTable(taken), 1U);
    root->Remove("removed", 1);
    EXPECT_EQ(ValidateTable(removed), 0U);
    EXPECT_EQ(CloseTable(root), 1U);
    for (ITable* table : {root, child, grandchild, taken}) EXPECT_EQ(ValidateTable(table), 0U);
    EXPECT_EQ(ValidateTable(outside), 1U);
    CloseTable(outside);
    ITable* next = CreateTable();
    EXPECT_EQ(next->GetElementCount() + next->GetArrayCount(), 0U) << "nothing of an earlier table at that address";
    CloseTable(next);
}

TEST(TableLifecycle, TablesBeginWithRoomForFourOrNone) {
    TableHolder root = NewTable();
    auto capacity = [](ITable* table) { return static_cast<Table*>(table)->Entries().Capacity(); };
    EXPECT_EQ(capacity(root.get()), 4U);
    EXPECT_EQ(capacity(root->Set("child", 0)), 4U);
    Table* bare = MakeTable();
    EXPECT_EQ(capacity(bare), 0U);
    EXPECT_EQ(bare->GetInteger("k", 3), 3);
    EXPECT_EQ(bare->Remove("k", 1) + bare->Rename("k", "l", 1), 0U);
    EXPECT_EQ(bare->Clear(1), 1U);
    EXPECT_EQ(bare->SetInteger("k", 1, 1), 1U);
    EXPECT_EQ(capacity(bare), 4U);
    DestroyTable(bare);
    DestroyTable(MakeTable());
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

TEST(TableLifecycle, BlocksOfOneTableAreReusedByTheNext) {
    std::string log;
    Listener listener{"", &log};
    listener.act = [&](std::uint32_t, ITable* table, cstr) { table->AddArrayListener(); };
    auto round = [&](int entries) {
        TableHolder table = NewTable();
        const Float4x4 matrix{};
        for (int n = 0; n < entries; ++n) table->SetInteger(("key" + std::to_string(n)).c_str(), n, 0);
        table->Set("child", 0)->SetFloat4x4("matrix", &matrix, 0);
        for (int n = 0; n < 20; ++n) *table->AddRecordListener() = listener.Record();
        for (int n = 0; n < 70; ++n) *table->AddArgumentListener("key0") = listener.Argument();
        table->CreateArray(400);
        table->SetInteger("key0", 5, 1); // and queued requests
        if (entries % 2 == 0) table->Clear(0);
        log.clear();
    };
    for (int entries = 2; entries < 200; entries += 60) round(entries);
    for (int n = 0; n < 300; ++n) { // more rounds than a chunk has blocks: a block lost in each would show
        const FailingHeap heap;
        round(2 + n % 60);
        ASSERT_EQ(heap.Outstanding(), 0) << n;
    }
}

TEST(OutOfMemory, RequestsThatCanNotBeQueuedAreDropped) {
    std::string log;
    TableHolder table = NewTable();
    Listener listener{"", &log};
    listener.act = [&](std::uint32_t, ITable* t, cstr) {
        const Delegate self = listener.Record();
        const FailingHeap heap(0);
        EXPECT_EQ(t->AddRecordListener(), nullptr); // the set of requests
        const FailingHeap queue(1);
        t->RemoveRecordListener(&self); // their queue
    };
    *table->AddRecordListener() = listener.Record();
    EXPECT_EQ(table->CreateArray(4) + table->Clear(1), 2U);
    EXPECT_EQ(log, "12:- 3:- ");
}

TEST(OutOfMemory, AKeyThatCanNotBeInternedChangesNothing) {
    TableHolder table = NewTable();
    table->SetString("k", "v", 0);
    table->AddRecordListener();
    cstr_string(std::string(0x100000 - 9, 'f').c_str()); // fills an arena: the next text needs another
    auto without = [](auto call) {
        const FailingHeap heap(0);
        return call() || !heap.Failed();
    };
    EXPECT_FALSE(without([&] { return cstr_string("unseen") != nullptr; }));
    EXPECT_FALSE(without([&] { return table->SetInteger("unseen", 1, 1) != 0; }));
    EXPECT_FALSE(without([&] { return table->GetInteger("unseen", 7) != 7; }));
    EXPECT_FALSE(without([&] { return table->Set("unseen", 1) != nullptr; }));
    EXPECT_FALSE(without([&] { return table->SetString("k", "unseen", 1) != 0; }));
    EXPECT_FALSE(without([&] { return table->SetPath("k", "unseen", 1) != 0; }));
    EXPECT_FALSE(without([&] { return table->Rename("k", "unseen", 1) != 0; }));
    EXPECT_FALSE(without([&] { return table->AddRecordListener("unseen") != nullptr; }));
    EXPECT_STREQ(table->GetString("k"), "v");
    EXPECT_EQ(table->GetElementCount(), 1U);
    EXPECT_EQ(cstr_find("unseen"), nullptr);
    EXPECT_EQ(table->SetInteger("unseen", 1, 1), 1U);
}

} // namespace
