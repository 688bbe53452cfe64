// Lookups and stores by text key, and the life of a small table, compared with a hash map of strings and two JSON
// libraries.

#include "bench/texts.h"

#include <tessarin/tables.h>

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>

namespace {

using Tessarin::ITable;

/// As many present keys as absent ones. They are looked up in another order than that of their insertion, because what
/// a store has put side by side would otherwise be read side by side.
struct KeySet {
    explicit KeySet(std::size_t count) : added(Bench::Keys(2 * count)) {
        auto half = added.begin() + static_cast<std::ptrdiff_t>(count);
        misses.assign(half, added.end());
        added.erase(half, added.end());
        hits = added;
        std::shuffle(hits.begin(), hits.end(), std::mt19937(2));
    }

    std::vector<std::string> added, hits, misses;
};

// One kind of store each: it is built from the keys, and looks one of them up.

struct OurTable {
    explicit OurTable(const KeySet& keys) : table(CreateTable()) {
        for (const std::string& key : keys.added) table->SetInteger(key.c_str(), 1, 0);
        for (const std::string& key : keys.misses) cstr_string(key.c_str());
    }
    ~OurTable() { CloseTable(table); }
    int Get(const std::string& key) { return GetInteger(table, key.c_str()); }
    void Set(const std::string& key, int value) { SetInteger(table, key.c_str(), value); }
    ITable* table;
};

struct WatchedTable : OurTable {
    explicit WatchedTable(const KeySet& keys) : OurTable(keys) { *table->AddRecordListener() = {&calls, Function()}; }
    static void (*Function())() {
        return reinterpret_cast<void (*)()>(+[](void* count, TableEvent*) { ++*static_cast<int*>(count); });
    }
    int calls = 0;
};

struct AbslMap {
    explicit AbslMap(const KeySet& keys) {
        for (const std::string& key : keys.added) map[key] = 1;
    }
    int Get(const std::string& key) {
        auto found = map.find(key.c_str());
        return found == map.end() ? 0 : found->second;
    }
    void Set(const std::string& key, int value) { map[key.c_str()] = value; }
    absl::flat_hash_map<std::string, int> map;
};

struct NlohmannObject {
    explicit NlohmannObject(const KeySet& keys) {
        for (const std::string& key : keys.added) object[key] = 1;
    }
    int Get(const std::string& key) {
        auto found = object.find(key.c_str());
        return found == object.end() ? 0 : found->get<int>();
    }
    nlohmann::json object;
};

struct RapidJsonObject {
    explicit RapidJsonObject(const KeySet& keys) {
        document.SetObject();
        for (const std::string& key : keys.added) {
            rapidjson::Value name(key.c_str(), document.GetAllocator());
            document.AddMember(name, 1, document.GetAllocator());
        }
    }
    int Get(const std::string& key) {
        auto found = document.FindMember(key.c_str());
        return found == document.MemberEnd() ? 0 : found->value.GetInt();
    }
    rapidjson::Document document;
};

template <class Store>
void Hit(benchmark::State& state) {
    KeySet keys(static_cast<std::size_t>(state.range(0)));
    Store store(keys);
    Bench::Round<std::string> round(keys.hits);
    for (auto _ : state) benchmark::DoNotOptimize(store.Get(round.Next()));
}

template <class Store>
void Miss(benchmark::State& state) {
    KeySet keys(static_cast<std::size_t>(state.range(0)));
    Store store(keys);
    Bench::Round<std::string> round(keys.misses);
    for (auto _ : state) benchmark::DoNotOptimize(store.Get(round.Next()));
}

template <class Store>
void Change(benchmark::State& state) {
    KeySet keys(static_cast<std::size_t>(state.range(0)));
    Store store(keys);
    Bench::Round<std::string> round(keys.hits);
    int value = 1;
    for (auto _ : state) store.Set(round.Next(), ++value);
}

/// From an empty store to all keys, which are texts interned before, and back to an empty one.
template <class Store>
void Add(benchmark::State& state) {
    KeySet keys(static_cast<std::size_t>(state.range(0)));
    for (const std::string& key : keys.added) cstr_string(key.c_str());
    const KeySet none(0);
    for (auto _ : state) {
        Store store(none);
        for (const std::string& key : keys.hits) store.Set(key, 1);
    }
}

constexpr int kEntries = 50;

void FillTessarin(benchmark::State& state) {
    std::vector<std::string> keys = Bench::Keys(kEntries);
    Float3 vector{1, 2, 3};
    for (auto _ : state) {
        ITable* table = CreateTable();
        for (int i = 0; i < kEntries; ++i) {
            const char* key = keys[static_cast<std::size_t>(i)].c_str();
            switch (i % 4) {
            case 0:
                table->SetInteger(key, i, 1);
                break;
            case 1:
                table->SetReal(key, 0.5F, 1);
                break;
            case 2:
                table->SetString(key, "a text of some length", 1);
                break;
            default:
                table->SetFloat3(key, &vector, 1);
            }
        }
        CloseTable(table);
    }
}

void FillNlohmann(benchmark::State& state) {
    std::vector<std::string> keys = Bench::Keys(kEntries);
    for (auto _ : state) {
        nlohmann::json object = nlohmann::json::object();
        for (int i = 0; i < kEntries; ++i) {
            nlohmann::json& value = object[keys[static_cast<std::size_t>(i)]];
            switch (i % 4) {
            case 0:
                value = i;
                break;
            case 1:
                value = 0.5F;
                break;
            case 2:
                value = "a text of some length";
                break;
            default:
                value = {1.0F, 2.0F, 3.0F};
            }
        }
        benchmark::DoNotOptimize(object);
    }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (int size : {4, 8, 64, 1000, 100000}) benchmark->Arg(size);
}

BENCHMARK(Hit<OurTable>)->Apply(Sizes);
BENCHMARK(Hit<AbslMap>)->Apply(Sizes);
BENCHMARK(Hit<NlohmannObject>)->Apply(Sizes);
BENCHMARK(Hit<RapidJsonObject>)->Apply(Sizes);
BENCHMARK(Miss<OurTable>)->Apply(Sizes);
BENCHMARK(Miss<AbslMap>)->Apply(Sizes);
BENCHMARK(Miss<NlohmannObject>)->Apply(Sizes);
BENCHMARK(Miss<RapidJsonObject>)->Apply(Sizes);
BENCHMARK(Change<OurTable>)->Apply(Sizes);
BENCHMARK(Change<AbslMap>)->Apply(Sizes);
BENCHMARK(Change<WatchedTable>)->Arg(8);
BENCHMARK(Add<OurTable>)->Apply(Sizes);
BENCHMARK(Add<AbslMap>)->Apply(Sizes);
BENCHMARK(FillTessarin);
BENCHMARK(FillNlohmann);

} // namespace
