/// Runs operations with each of their allocations refused in turn. A row says how to run one operation and whether its
/// answer was success. What must hold is the same for all of them: an operation that refuses has changed nothing that
/// can be seen, it works when it is asked again, and what then stands is what stands without any failure.
///
/// The pools are drained before each run, and the string table's arena is full, so that no block is there by chance.

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

/// Ends what a factory made, by whichever way its kind is ended.
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

/// Counts what it is told, by all three kinds of listener.
struct Ear {
    int told = 0;
    void OnRecord(TableEvent*) { ++told; }
    void OnKey(std::uint32_t, Tessarin::ITable*, cstr) { ++told; }
    void OnItem(std::uint32_t, Tessarin::ITable*, std::uint32_t) { ++told; }
};

/// What rows work on. Each group of rows makes what it needs of it.
struct World {
    std::string fresh = FreshText();
    Ear ear;
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

using Run = bool (*)(World&);
struct Row {
    const char* name;
    Run run;
};

struct Group {
    std::function<void(World&)> prepare;
    std::string (*state)(World&); ///< what can be seen of it
};

/// A text with each `what` in it turned into `by`.
inline std::string Replaced(std::string_view text, std::string_view what, std::string_view by) {
    std::string replaced;
    for (std::size_t at; (at = text.find(what)) != std::string_view::npos; text.remove_prefix(at + what.size())) {
        replaced.append(text.substr(0, at)).append(by);
    }
    return replaced.append(text);
}

/// What can be seen, its fresh text left out: that is another one in each run.
inline std::string StateOf(const Group& group, World& world) { return Replaced(group.state(world), world.fresh, "*"); }

/// Runs a row with its n-th allocation refused.
/// whole    the state behind a run that has all its memory; taken from the first run, for which n is kNever
/// returns  whether there was an n-th one
inline bool Attempt(const Group& group, const Row& row, std::size_t n, std::string& whole, DrainedPools& pools) {
    World world;
    group.prepare(world);
    const std::string before = StateOf(group, world);
    FillArena();
    pools.Drain();
    bool done = false, failed = false;
    {
        const FailingHeap heap(n);
        done = row.run(world);
        failed = heap.Failed();
    }
    const std::string after = StateOf(group, world);
    if (n == FailingHeap::kNever) {
        whole = after;
        EXPECT_TRUE(done);
    } else if (done) {
        EXPECT_EQ(after, whole) << "said to be done";
    } else {
        EXPECT_TRUE(failed) << "refused with all the memory that it asked for";
        EXPECT_EQ(after, before);
        EXPECT_TRUE(row.run(world)) << "refused once more, with memory";
        EXPECT_EQ(StateOf(group, world), whole);
    }
    return failed;
}

inline DrainedPools& Pools() {
    static DrainedPools pools; // what it has taken stays taken
    return pools;
}

inline void Check(const Group& group, const std::vector<Row>& rows) {
    DrainedPools& pools = Pools();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string whole;
        Attempt(group, row, FailingHeap::kNever, whole, pools);
        std::size_t n = 0;
        for (; Attempt(group, row, n, whole, pools); ++n) EXPECT_TRUE(pools.Drain()) << "a block lost, refusal " << n;
        EXPECT_TRUE(pools.Drain());
        EXPECT_GT(n, 0U) << "nothing to refuse";
    }
}

} // namespace TestSupport

#endif
