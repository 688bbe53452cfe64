// Runs operations with each of their allocations failing in turn, and with each call of the host's file service failing
// in each way. A row runs one operation and returns whether it succeeded. The same must hold for all of them: an
// operation that fails has changed nothing that can be seen, it works when it is tried again, and the state is then the
// same as without any failure.
//
// A first round drains the pools before each run and fills the string table's arena, so that no block is free by
// chance. It then tries again what has failed. A second round leaves pools and arena as they are, and ends everything
// as the failure has left it: no memory may remain allocated.

#ifndef TESSARIN_TESTS_FAULTS_HEAP_ROWS_H
#define TESSARIN_TESTS_FAULTS_HEAP_ROWS_H

#include "tests/faults/drained_pools.h"
#include "tests/faults/faulty_files.h"

#include "tessarin/tessarin.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
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

/// Counts its calls, as all three kinds of listener. If asked to, it asks for another one during its next call.
struct CountingListener {
    int calls = 0;
    bool asks = false;
    void OnRecord(TableEvent* event) {
        ++calls;
        Delegate* slot = std::exchange(asks, false) ? event->table->AddArgumentListener() : nullptr;
        if (slot != nullptr) *slot = Argument();
    }
    void OnKey(std::uint32_t, Tessarin::ITable*, cstr) { ++calls; }
    void OnItem(std::uint32_t, Tessarin::ITable*, std::uint32_t) { ++calls; }
    Delegate Record() { return RecordDelegate<&CountingListener::OnRecord>(this); }
    Delegate Argument() { return ArgumentDelegate<&CountingListener::OnKey>(this); }
    Delegate Array() { return ArrayDelegate<&CountingListener::OnItem>(this); }
};

/// What rows work on. Each group of rows makes those parts that it needs.
struct Fixture {
    std::string fresh = FreshText(), text;
    CountingListener listener;
    Owned<Tessarin::ITable> table, other;
    FaultyFiles files;
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
    bool ignores_writes = false; // it succeeds even if its file can't be written
};

struct Group {
    std::function<void(Fixture&)> prepare;
    std::string (*state)(Fixture&); // what can be seen of it
    bool may_lack = false;          // an operation may succeed with some lines of the state missing
    Run fill = nullptr;             // adds what is gone after the operation, whether it succeeds or fails
};

/// A text with each `what` in it replaced by `by`.
inline std::string Replaced(std::string_view text, std::string_view what, std::string_view by) {
    std::string replaced;
    for (std::size_t at; (at = text.find(what)) != std::string_view::npos; text.remove_prefix(at + what.size())) {
        replaced.append(text.substr(0, at)).append(by);
    }
    return replaced.append(text);
}

/// The lines of what can be seen, without its fresh text, which differs from run to run.
using State = std::multiset<std::string>;

inline State StateOf(const Group& group, Fixture& fixture) {
    std::istringstream text(Replaced(group.state(fixture), fixture.fresh, "*"));
    State state;
    for (std::string line; std::getline(text, line);) state.insert(line);
    return state;
}

/// What fails in a run.
struct Trouble {
    std::size_t allocation = FailingHeap::kNever;
    int call = -1; // of the file service
    int way = 0;
};

/// One run of an operation.
struct Attempt {
    bool failed = false; // the allocation or the call was reached
    int calls = 0;       // of the file service
    long outstanding = 0;

    /// whole  the state after a run without trouble, which takes it
    /// pools  are drained; null in the second round
    Attempt(const Group& group, const Row& row, const Trouble& trouble, State& whole, DrainedPools* pools) {
        std::optional<Fixture> fixture;
        With(FailingHeap::kNever, [&] { group.prepare(fixture.emplace()); });
        FaultyFiles& files = fixture->files;
        const State before = StateOf(group, *fixture);
        if (group.fill != nullptr) {
            With(FailingHeap::kNever, [&] { EXPECT_TRUE(group.fill(*fixture)); });
        }
        if (pools != nullptr) FillArena(), pools->Drain();
        files.FailAt(trouble.call, trouble.way);
        bool done = false;
        failed = With(trouble.allocation, [&] { done = row.run(*fixture); });
        const bool struck = files.struck;
        failed = failed || struck;
        calls = files.calls;
        files.FailAt(-1, 0);
        const State after = StateOf(group, *fixture);
        if (trouble.allocation == FailingHeap::kNever && trouble.call < 0) whole = after;
        if (done) {
            const bool is_part = std::includes(whole.begin(), whole.end(), after.begin(), after.end());
            EXPECT_TRUE(failed && group.may_lack ? is_part : after == whole) << "the operation reported success";
            EXPECT_TRUE(!struck || (row.ignores_writes && trouble.call > 0)) << "and the file service a failure";
        } else {
            EXPECT_TRUE(failed) << "failed without a reason";
            EXPECT_EQ(after, before);
            if (pools != nullptr || struck) {
                EXPECT_TRUE(row.run(*fixture)) << "failed again";
                EXPECT_EQ(StateOf(group, *fixture), whole);
            }
        }
        With(FailingHeap::kNever, [&] { fixture.reset(); });
    }

private:
    template <class Step>
    bool With(std::size_t n, Step step) {
        const FailingHeap heap(n);
        step();
        outstanding += heap.Outstanding();
        return heap.Failed();
    }
};

inline void Check(const Group& group, const std::vector<Row>& rows) {
    static DrainedPools pools; // it keeps what it has taken
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        State whole;
        const int calls = Attempt(group, row, {}, whole, &pools).calls;
        for (int call = 0; call < calls; ++call) {
            SCOPED_TRACE(call);
            int way = 0;
            while (Attempt(group, row, {FailingHeap::kNever, call, way}, whole, nullptr).failed) ++way;
            EXPECT_GT(way, 0);
        }
        std::size_t n = 0;
        for (; Attempt(group, row, {n}, whole, &pools).failed; ++n) {
            EXPECT_TRUE(pools.Drain()) << "a block lost, failure " << n;
        }
        EXPECT_TRUE(pools.Drain());
        EXPECT_GT(n, 0U) << "no allocation to fail";
        // What the pools and the arena need, they get once and keep.
        for (int more = 0; Attempt(group, row, {}, whole, nullptr).outstanding != 0; ++more) {
            ASSERT_LT(more, 20) << "memory lost";
        }
        bool failed = true;
        for (n = 0; failed; ++n) {
            const Attempt attempt(group, row, {n}, whole, nullptr);
            failed = attempt.failed;
            EXPECT_TRUE(attempt.outstanding == 0 || Attempt(group, row, {n}, whole, nullptr).outstanding == 0)
                << "memory lost, failure " << n;
        }
    }
}

} // namespace TestSupport

#endif
