// Lookups by text key in configuration files that are loaded for reading, from the text form and from the binary one,
// compared with a JSON object, a FlexBuffers map and a hash map of strings. Values are never read.

#include "bench/memory_files.h"
#include "bench/texts.h"

#include <cstdlib>

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <flatbuffers/flexbuffers.h>
#include <nlohmann/json.hpp>

namespace {

/// As many present keys as absent ones, and the order of the lookups: random and long, so that a processor can't learn
/// the sequence of a small table's keys.
struct KeySet {
    explicit KeySet(std::size_t count) : there(Bench::Keys(2 * count)) {
        auto half = there.begin() + static_cast<std::ptrdiff_t>(count);
        absent.assign(half, there.end());
        there.erase(half, there.end());
    }

    static std::vector<const char*> Asked(const std::vector<std::string>& keys) {
        std::vector<const char*> asked;
        while (asked.size() < 4096) {
            for (const std::string& key : keys) asked.push_back(key.c_str());
        }
        std::shuffle(asked.begin(), asked.end(), std::mt19937(2));
        return asked;
    }

    std::vector<std::string> there, absent;
};

/// A text of our form that gives every key a small number.
std::string TextOf(const std::vector<std::string>& keys) {
    std::string text;
    for (std::size_t i = 0; i < keys.size(); ++i) text += keys[i] + " = " + std::to_string(i % 1000) + "\n";
    return text;
}

// One kind of store each: it is built from the keys, and looks one of them up.

/// The absent keys are interned texts, as the keys of a game's other tables are.
template <std::uint32_t kFormat>
struct OurTable {
    explicit OurTable(const KeySet& keys) {
        io.files["text"] = TextOf(keys.there);
        for (const std::string& key : keys.absent) cstr_string(key.c_str());
        root = file->Load("text", Configure::ACCESS_READ, Configure::FORMAT_TEXT);
        if (kFormat == Configure::FORMAT_BINARY) {
            file->SaveAs("binary", Configure::FORMAT_BINARY);
            root = file->Load("binary", Configure::ACCESS_READ, Configure::FORMAT_BINARY);
        }
        if (root == nullptr || root->GetCount() != keys.there.size()) std::abort();
    }
    bool Has(const char* key) { return root->Find(key) != nullptr; }

    Bench::MemoryFiles io;
    Bench::FilePointer file{CreateRLFile(&io)};
    Configure::ITable* root;
};
using TextTable = OurTable<Configure::FORMAT_TEXT>;
using BinaryTable = OurTable<Configure::FORMAT_BINARY>;

struct NlohmannObject {
    explicit NlohmannObject(const KeySet& keys) {
        for (const std::string& key : keys.there) object[key] = "1";
    }
    bool Has(const char* key) { return object.find(key) != object.end(); }
    nlohmann::json object;
};

struct FlexMap {
    explicit FlexMap(const KeySet& keys) {
        builder.Map([&] {
            for (const std::string& key : keys.there) builder.String(key.c_str(), "1");
        });
        builder.Finish();
        map = flexbuffers::GetRoot(builder.GetBuffer()).AsMap();
    }
    bool Has(const char* key) { return !map[key].IsNull(); }
    flexbuffers::Builder builder;
    flexbuffers::Map map = flexbuffers::Map::EmptyMap();
};

struct AbslMap {
    explicit AbslMap(const KeySet& keys) {
        for (const std::string& key : keys.there) map[key] = "1";
    }
    bool Has(const char* key) { return map.find(key) != map.end(); }
    absl::flat_hash_map<std::string, std::string> map;
};

template <class Store, bool kThere>
void Ask(benchmark::State& state) {
    KeySet keys(static_cast<std::size_t>(state.range(0)));
    Store store(keys);
    std::vector<const char*> asked = KeySet::Asked(kThere ? keys.there : keys.absent);
    for (const char* key : asked) {
        if (store.Has(key) != kThere) state.SkipWithError("a wrong result");
    }
    Bench::Round<const char*> round(asked);
    for (auto _ : state) benchmark::DoNotOptimize(store.Has(round.Next()));
}

template <class Store>
void Find(benchmark::State& state) {
    Ask<Store, true>(state);
}

template <class Store>
void FindNone(benchmark::State& state) {
    Ask<Store, false>(state);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (int size : {8, 64, 1000, 100000}) benchmark->Arg(size);
}

BENCHMARK(Find<TextTable>)->Apply(Sizes);
BENCHMARK(Find<BinaryTable>)->Apply(Sizes);
BENCHMARK(Find<NlohmannObject>)->Apply(Sizes);
BENCHMARK(Find<FlexMap>)->Apply(Sizes);
BENCHMARK(Find<AbslMap>)->Apply(Sizes);
BENCHMARK(FindNone<TextTable>)->Apply(Sizes);
BENCHMARK(FindNone<BinaryTable>)->Apply(Sizes);
BENCHMARK(FindNone<NlohmannObject>)->Apply(Sizes);
BENCHMARK(FindNone<FlexMap>)->Apply(Sizes);
BENCHMARK(FindNone<AbslMap>)->Apply(Sizes);

} // namespace
