// How tables come and go: the registry, deep trees, and what each refusal of memory leaves behind.

#include "core/table.h"
#include "core/table_lifecycle.h"
#include "tests/core/library_pools.h"
#include "tests/core/recorder.h"
#include "tests/support/failing_heap.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

namespace {

using namespace Tessarin;
using namespace TestSupport;

TEST(TableRegistry, SaysHowEachTableCameToBe) {
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

/// A chain of tables, with entries beside the children. Gives the innermost.
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

TEST(TableLifecycle, WhatOneTableLeavesTheNextOneUses) {
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
        table->SetInteger("key0", 5, 1); // and requests that wait
        if (entries % 2 == 0) table->Clear(0);
        log.clear();
    };
    for (int entries = 2; entries < 200; entries += 60) round(entries);
    for (int n = 0; n < 300; ++n) { // more rounds than a chunk has blocks: a block lost in each would show
        FailingHeap heap;
        round(2 + n % 60);
        ASSERT_EQ(heap.Outstanding(), 0) << n;
    }
}

/// Takes every free block out of the library's pools, and keeps it, so that the next one of each has to come from the
/// heap.
class DrainedPools {
public:
    /// Whether every pool's blocks make up whole chunks, as they do when nobody holds one.
    bool Drain() {
        bool whole = true;
        for (Pool& pool : pools_) {
            TakeFree(pool);
            whole = whole && pool.taken % pool.its.per_chunk == 0;
            // A pool's list of chunks grows at 8, 16 and so on. One more then, so that it doesn't grow under a test.
            std::size_t chunks = (pool.taken + pool.its.per_chunk - 1) / pool.its.per_chunk;
            if (!std::has_single_bit(chunks) || pool.its.take() == nullptr) continue;
            ++pool.taken;
            TakeFree(pool);
        }
        return whole;
    }

private:
    struct Pool {
        AnyPool its;
        std::size_t taken = 0;
    };

    static std::vector<Pool> Pools() {
        std::vector<Pool> pools;
        for (AnyPool& pool : AllPools(*library_state, *listener_pools)) pools.push_back({std::move(pool)});
        return pools;
    }

    static void TakeFree(Pool& pool) {
        for (;;) {
            FailingHeap heap(0);
            if (pool.its.take() == nullptr) return;
            ++pool.taken;
        }
    }

    std::vector<Pool> pools_ = Pools();
};

using Step = bool (*)(ITable* table);

struct Refusable {
    const char* name;
    int entries, listeners; // of the table before the step
    Step step;
    int refusals; // how many of the step's allocations its answer depends on
};

bool NewInteger(ITable* table) { return table->SetInteger("new", 5, 1) == 1; }
bool NewMatrix(ITable* table) {
    const Float4x4 matrix{};
    return table->SetFloat4x4("new", &matrix, 1) == 1;
}
bool NewListener(ITable* table) { return table->AddRecordListener() != nullptr; }
bool NewEntryListener(ITable* table) { return table->AddArgumentListener("key0") != nullptr; }
bool NewArray(ITable* table) { return table->CreateArray(8) == 1; }
bool Items(ITable* table) {
    const std::uint64_t item = 1;
    if (table->GetArrayItem(0) == nullptr) table->CreateArray(8);
    return table->SetArrayItem(0, &item, 1) != nullptr && table->SetArrayItem(20, &item, 1) != nullptr;
}

const Refusable kRefusables[] = {
    {"root", 0, 0,
     [](ITable*) {
         ITable* root = CreateTable();
         return root != nullptr && CloseTable(root) == 1;
     },
     2},
    {"entry 1", 0, 0, NewInteger, 1},
    {"entry 4", 3, 0, NewInteger, 1},
    {"entry 5", 4, 0, NewInteger, 2},
    {"entry 9", 8, 0, NewInteger, 2},
    {"entry 17", 16, 0, NewInteger, 2},
    {"entry 33", 32, 0, NewInteger, 2},
    {"entry 65", 64, 0, NewInteger, 2},
    {"entry 129", 128, 0, NewInteger, 2},
    {"matrix", 1, 0, NewMatrix, 2},
    {"child", 1, 0, [](ITable* table) { return table->Set("new", 1) != nullptr; }, 3},
    {"listener 1", 0, 0, NewListener, 2},
    {"listener 5", 0, 4, NewListener, 1},
    {"listener 17", 0, 16, NewListener, 1},
    {"listener 33", 0, 32, NewListener, 1},
    {"listener 65", 0, 64, NewListener, 1},
    {"listener 129", 0, 128, NewListener, 1},
    {"listener of an entry", 1, 0, NewEntryListener, 2},
    {"array", 0, 0, NewArray, 3},
    {"items", 0, 0, Items, 4},
};

/// Runs a step with its n-th allocation refused.
/// returns  whether there was an n-th one
bool Attempt(const Refusable& row, std::size_t n, DrainedPools& pools, int& refusals) {
    TableHolder table = NewTable();
    for (int i = 0; i < row.entries; ++i) table->SetInteger(("key" + std::to_string(i)).c_str(), i, 0);
    for (int i = 0; i < row.listeners; ++i) table->AddRecordListener();
    pools.Drain();
    bool done = false, failed = false;
    {
        FailingHeap heap(n);
        done = row.step(table.get());
        failed = heap.Failed();
    }
    auto& entries = static_cast<Table*>(table.get())->Entries();
    EXPECT_TRUE(entries.IsValid());
    for (int i = 0; i < row.entries; ++i) EXPECT_EQ(table->GetInteger(("key" + std::to_string(i)).c_str()), i);
    if (!done) {
        ++refusals;
        EXPECT_TRUE(failed) << "refused with all the memory it asked for";
        EXPECT_EQ(table->GetInteger("new"), 0);
        EXPECT_TRUE(row.step(table.get())) << "the next call is fine";
        EXPECT_TRUE(entries.IsValid());
    }
    return failed;
}

TEST(OutOfMemory, EveryAllocationOfEveryOperationMayFail) {
    static DrainedPools pools; // what it has taken stays taken, however often this runs
    for (const Refusable& row : kRefusables) {
        SCOPED_TRACE(row.name);
        int refusals = 0;
        for (std::size_t n = 0; Attempt(row, n, pools, refusals); ++n) EXPECT_TRUE(pools.Drain()) << "lost a block";
        EXPECT_TRUE(pools.Drain());
        EXPECT_EQ(refusals, row.refusals);
    }
}

TEST(OutOfMemory, RequestsThatCanNotWaitAreDropped) {
    std::string log;
    TableHolder table = NewTable();
    Listener listener{"", &log};
    listener.act = [&](std::uint32_t, ITable* t, cstr) {
        Delegate self = listener.Record();
        FailingHeap heap(0);
        EXPECT_EQ(t->AddRecordListener(), nullptr); // the set of requests
        FailingHeap queue(1);
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
        FailingHeap heap(0);
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
