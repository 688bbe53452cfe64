// Runs operations with each of their allocations failing in turn. A row runs one operation and returns whether it
// succeeded. The same must hold for all of them: an operation that fails has changed nothing that can be seen, it works
// when it is tried again, and the state is then the same as without any failure.
//
// The pools are drained before each run, and the string table's arena is full, so that no block is free by chance.

#ifndef TESSARIN_TESTS_FAULTS_HEAP_ROWS_H
#define TESSARIN_TESTS_FAULTS_HEAP_ROWS_H

#include "tests/faults/drained_pools.h"

#include "tessarin/tessarin.h"
#include "tests/support/memory_files.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace TestSupport {

/// Destroys what a factory made, each type by its own function.
struct End {
    void operator()(Tessarin::ITable* table) const { CloseTable(table); }
    void operator()(farr* arr) const { farr_destroy(arr); }
    void operator()(cmd* queue) const { cmd_destroy(queue); }
    void operator()(hm* map) const { i32hm_destroy(map); }
    void operator()(omem* pool) const { omem_destroy(pool); }
    void operator()(imem* pool) const { imem_destroy(pool); }
    template <class Object>
    void operator()(Object* object) const {
        object->Release();
    }
};
template <class T>
using Owned = std::unique_ptr<T, End>;

/// Counts its calls, as all three kinds of listener.
struct CountingListener {
    int calls = 0;
    void OnRecord(TableEvent*) { ++calls; }
    void OnKey(std::uint32_t, Tessarin::ITable*, cstr) { ++calls; }
    void OnItem(std::uint32_t, Tessarin::ITable*, std::uint32_t) { ++calls; }
};

/// What rows work on. Each group of rows makes those parts that it needs.
struct Fixture {
    std::string fresh = FreshText();
    CountingListener listener;
    Owned<Tessarin::ITable> table, other;
    MemoryFiles files;
    Owned<Configure::IFile> file;
    Owned<ITabFile> tab;
    Owned<Tessarin::IExchangeEvent> exchange;
    Owned<farr> arr;
    Owned<cmd> queue;
    Owned<hm> map;
    Owned<omem> blocks;
    Owned<imem> bytes;

    [[nodiscard]] cstr Fresh() const { return fresh.c_str(); }
    Configure::ITable& Root() { return *file->GetRoot(); }
};

using Run = bool (*)(Fixture&);
struct Row {
    const char* name;
    Run run;
};

struct Group {
    std::function<void(Fixture&)> prepare;
    std::string (*state)(Fixture&); // what can be seen of it
};

/// A text with each `what` in it replaced by `by`.
inline std::string Replaced(std::string_view text, std::string_view what, std::string_view by) {
    std::string replaced;
    for (std::size_t at; (at = text.find(what)) != std::string_view::npos; text.remove_prefix(at + what.size())) {
        replaced.append(text.substr(0, at)).append(by);
    }
    return replaced.append(text);
}

/// What can be seen, without its fresh text, which differs from run to run.
inline std::string StateOf(const Group& group, Fixture& fixture) {
    return Replaced(group.state(fixture), fixture.fresh, "*");
}

/// Runs a row with its n-th allocation failing.
/// whole    the state after a run that has all its memory; taken from the first run, for which n is kNever
/// returns  whether there was an n-th one
inline bool Attempt(const Group& group, const Row& row, std::size_t n, std::string& whole, DrainedPools& pools) {
    Fixture fixture;
    group.prepare(fixture);
    const std::string before = StateOf(group, fixture);
    FillArena();
    pools.Drain();
    bool done = false, failed = false;
    {
        const FailingHeap heap(n);
        done = row.run(fixture);
        failed = heap.Failed();
    }
    const std::string after = StateOf(group, fixture);
    if (n == FailingHeap::kNever) {
        whole = after;
        EXPECT_TRUE(done);
    } else if (done) {
        EXPECT_EQ(after, whole) << "the operation reported success";
    } else {
        EXPECT_TRUE(failed) << "failed with all the memory that it asked for";
        EXPECT_EQ(after, before);
        EXPECT_TRUE(row.run(fixture)) << "failed again, with memory";
        EXPECT_EQ(StateOf(group, fixture), whole);
    }
    return failed;
}

inline DrainedPools& Pools() {
    static DrainedPools pools; // it keeps what it has taken
    return pools;
}

inline void Check(const Group& group, const std::vector<Row>& rows) {
    DrainedPools& pools = Pools();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string whole;
        Attempt(group, row, FailingHeap::kNever, whole, pools);
        std::size_t n = 0;
        for (; Attempt(group, row, n, whole, pools); ++n) EXPECT_TRUE(pools.Drain()) << "a block lost, failure " << n;
        EXPECT_TRUE(pools.Drain());
        EXPECT_GT(n, 0U) << "no allocation to fail";
    }
}

} // namespace TestSupport

#endif
