// Setters and removals in orders that a host's keys may have, beside those at the end and beside absl's map.

#include "bench/texts.h"

#include <tessarin/tables.h>

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>

#include <ctime>
#include <functional>

namespace {

/// Counts as an iteration's time the processor time of `task` alone.
template <class Task>
void TimeOnly(benchmark::State& state, Task task) {
    const std::clock_t start = std::clock();
    task();
    state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
}

enum class Order { kAscending, kDescending, kNone };

/// Interned keys by their addresses, which decide where an entry is put.
std::vector<cstr> KeysIn(Order order, std::size_t count) {
    std::vector<cstr> keys;
    for (const std::string& key : Bench::Keys(count)) keys.push_back(cstr_string(key.c_str()));
    std::sort(keys.begin(), keys.end(), std::less<>());
    if (order == Order::kDescending) std::reverse(keys.begin(), keys.end());
    if (order == Order::kNone) std::shuffle(keys.begin(), keys.end(), std::mt19937(3));
    return keys;
}

struct SetterTable {
    SetterTable() : table(CreateTable()) {}
    ~SetterTable() { CloseTable(table); }
    SetterTable(const SetterTable&) = delete;
    SetterTable& operator=(const SetterTable&) = delete;
    void Add(cstr key) { table->SetInteger(key, 1, 0); }
    void Remove(cstr key) { table->Remove(key, 0); }
    Tessarin::ITable* table;
};

struct HashMap {
    void Add(cstr key) { map[key] = 1; }
    void Remove(cstr key) { map.erase(key); }
    absl::flat_hash_map<std::string, int> map;
};

template <class Store, Order order>
void AddKeys(benchmark::State& state) {
    const std::vector<cstr> keys = KeysIn(order, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Store store;
        TimeOnly(state, [&] {
            for (cstr key : keys) store.Add(key);
        });
    }
}

/// The friendly order of a removal is the descending one, always at the end.
template <class Store, Order order>
void RemoveKeys(benchmark::State& state) {
    const std::vector<cstr> keys = KeysIn(order, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Store store;
        for (cstr key : keys) store.Add(key);
        TimeOnly(state, [&] {
            for (cstr key : keys) store.Remove(key);
        });
    }
}

/// Adds and removes the same few keys in a table that once was large, and has kept a number of entries near which its
/// storage changes.
template <bool once_large>
void CrossAt(benchmark::State& state) {
    const auto kept = static_cast<std::size_t>(state.range(0));
    const std::vector<cstr> keys = KeysIn(Order::kNone, 100000);
    SetterTable store;
    for (std::size_t i = 0; i < (once_large ? keys.size() : kept); ++i) store.Add(keys[i]);
    for (std::size_t i = keys.size(); i-- > kept;) store.Remove(keys[i]);
    for (auto _ : state) {
        for (const std::size_t last : {kept, kept + 1}) store.Add(keys[last]);
        for (const std::size_t last : {kept, kept + 1}) store.Remove(keys[last]);
    }
}

void Numbers(benchmark::internal::Benchmark* benchmark) {
    for (const int keys : {10000, 100000, 1000000}) benchmark->Arg(keys);
    benchmark->UseManualTime();
}

BENCHMARK(AddKeys<SetterTable, Order::kAscending>)->Apply(Numbers);
BENCHMARK(AddKeys<SetterTable, Order::kDescending>)->Apply(Numbers);
BENCHMARK(AddKeys<SetterTable, Order::kNone>)->Apply(Numbers);
BENCHMARK(AddKeys<HashMap, Order::kNone>)->Apply(Numbers);
BENCHMARK(RemoveKeys<SetterTable, Order::kAscending>)->Apply(Numbers);
BENCHMARK(RemoveKeys<SetterTable, Order::kDescending>)->Apply(Numbers);
BENCHMARK(RemoveKeys<SetterTable, Order::kNone>)->Apply(Numbers);
BENCHMARK(RemoveKeys<HashMap, Order::kNone>)->Apply(Numbers);
BENCHMARK(CrossAt<false>)->Arg(8)->Arg(512)->Arg(1024);
BENCHMARK(CrossAt<true>)->Arg(8)->Arg(512)->Arg(1024);

} // namespace
