// What chosen keys cost beside friendly ones of the same size: texts of one hash, texts whose addresses cluster, and
// defaults in alternation. Each attack has a row of its own and a friendly row in the same form.

#include "bench/memory_files.h"

#include <tessarin/tables.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

// An attack is a list of keys that is put into every form.

namespace {

std::uint32_t StatedHash(std::string_view text) {
    std::uint32_t hash = 0;
    for (const char byte : text) hash = hash * 131 + static_cast<unsigned char>(byte);
    return hash & 0x7FFFFFFF;
}

/// The word with a number: `length` letters of [a-z0-9_].
std::string Word(std::uint64_t number, std::size_t length) {
    std::string word(length, 'a');
    for (char& letter : word) {
        letter = "abcdefghijklmnopqrstuvwxyz0123456789_"[number % 37];
        number /= 37;
    }
    return word;
}

/// Words of ten letters with one hash: hash(left half) * 131^5 + hash(right half) is 1 for all of them.
std::vector<std::string> WordsOfOneHash(std::size_t count) {
    constexpr std::uint32_t kHalves = 12000000;
    const auto sorted_halves = [](std::uint32_t factor, std::uint32_t subtracted_from) {
        std::vector<std::pair<std::uint32_t, std::uint32_t>> halves(kHalves); // hash and number
        for (std::uint32_t n = 0; n < kHalves; ++n) {
            const std::uint32_t hash = StatedHash(Word(n, 5)) * factor;
            halves[n] = {(subtracted_from == 0 ? hash : subtracted_from - hash) & 0x7FFFFFFF, n};
        }
        std::sort(halves.begin(), halves.end());
        return halves;
    };
    const auto rights = sorted_halves(1, 0);
    const auto lefts = sorted_halves(131U * 131 * 131 * 131 * 131U, 1);
    std::vector<std::string> words;
    auto right = rights.begin();
    for (const auto& [wanted, left] : lefts) {
        while (right != rights.end() && right->first < wanted) ++right;
        for (auto match = right; match != rights.end() && match->first == wanted; ++match) {
            words.push_back(Word(left, 5) + Word(match->second, 5));
        }
    }
    if (words.size() < count) std::abort();
    words.resize(count);
    return words;
}

/// Where new texts lie in memory is a matter of their lengths: after a text come its NUL and the next one's length. So
/// the lengths can be chosen so that the addresses of all keys, times the constant that is common in hashes of
/// addresses, have the same upper bits.
std::vector<std::size_t> LengthsThatCluster(std::size_t count) {
    constexpr std::uint64_t kConstant = 0x9E3779B97F4A7C15U;
    std::vector<std::size_t> lengths;
    for (std::uint64_t address = 0; lengths.size() < count;) {
        std::size_t length = 8;
        while ((address + length + 5) * kConstant >> 60 != 0) ++length;
        lengths.push_back(length);
        address += length + 5;
    }
    return lengths;
}

constexpr std::size_t kKeys = 40000;
enum class Attack { kOneHash, kSmallGroups, kLateDifference, kClusters };
enum class Keys { kHostile, kFriendly };

/// Texts of one hash still have one if the same text is put before or behind each of them.
std::vector<std::string> HostileKeys(Attack attack, const std::string& suffix) {
    static const std::vector<std::string> of_one_hash = WordsOfOneHash(kKeys);
    static const std::vector<std::size_t> lengths = LengthsThatCluster(kKeys);
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < kKeys; ++i) {
        switch (attack) {
        case Attack::kOneHash:
            keys.push_back(of_one_hash[i] + suffix);
            break;
        case Attack::kSmallGroups: // of so few that no bucket is long, and no table has many of one hash
            keys.push_back(Word(i / 4, 5) + of_one_hash[i % 4] + suffix);
            break;
        case Attack::kLateDifference: // each differs from many of the same hash only at its end
            if (i % 10 == 0)
                keys.push_back(Word(i / 400, 5) + std::string(200, 'x') + suffix + of_one_hash[i / 10 % 40]);
            break;
        case Attack::kClusters:
            keys.push_back(Word(i, 5) + suffix + std::string(lengths[i] - 8, 'z'));
            break;
        }
    }
    return keys;
}

/// Keys that are new to the process: the string table forgets nothing, so each measured load has its own. The friendly
/// ones are as many and as long.
std::vector<std::string> NewKeys(Attack attack, Keys kind) {
    static std::uint64_t round = 0;
    const std::string suffix = Word(++round, 3);
    std::vector<std::string> keys = HostileKeys(attack, suffix);
    if (kind == Keys::kHostile) return keys;
    std::mt19937_64 random(round);
    for (std::string& key : keys) {
        const std::size_t length = key.size();
        key.clear();
        while (key.size() < length) key += Word(random(), 12);
        key.resize(length);
    }
    std::shuffle(keys.begin(), keys.end(), random);
    return keys;
}

std::string ConfigureText(const std::vector<std::string>& keys) {
    std::string text;
    for (const std::string& key : keys) text += key + "=1 ";
    return text;
}

template <Attack kAttack, Keys kKind>
void LoadHostileJson(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::string text = "{";
        for (const std::string& key : NewKeys(kAttack, kKind)) text += '"' + key + "\":1,";
        text.back() = '}';
        state.ResumeTiming();
        Tessarin::ITable* table = OpenTableBuffer(text.data(), static_cast<std::uint32_t>(text.size()));
        state.PauseTiming();
        if (table == nullptr || table->GetElementCount() < kKeys / 10) state.SkipWithError("not loaded whole");
        CloseTable(table);
        state.ResumeTiming();
    }
}

/// Loads a text for reading; then saves it in binary form. Only one of both is timed.
template <Attack kAttack, Keys kKind, bool kTimesSave>
void LoadOrSaveHostile(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        Bench::MemoryFiles io;
        io.files["text"] = ConfigureText(NewKeys(kAttack, kKind));
        const Bench::FilePointer file(CreateRLFile(&io));
        if (!kTimesSave) state.ResumeTiming();
        file->Load("text", Configure::ACCESS_READ, Configure::FORMAT_TEXT);
        if (kTimesSave) state.ResumeTiming();
        if (kTimesSave && !file->SaveAs("binary", Configure::FORMAT_BINARY)) state.SkipWithError("not saved");
        state.PauseTiming();
        if (file->GetRoot() == nullptr || file->GetRoot()->GetCount() < kKeys / 10) state.SkipWithError("not loaded");
        file->Reset();
        state.ResumeTiming();
    }
}

/// Looks for texts that aren't there. The hostile ones have the hash of all texts that are.
template <Keys kKind>
void FindHostile(benchmark::State& state) {
    std::vector<std::string> keys = NewKeys(Attack::kOneHash, kKind);
    const std::size_t known = keys.size() / 2;
    for (std::size_t i = 0; i < known; ++i) cstr_string(keys[i].c_str());
    for (auto _ : state) {
        for (std::size_t i = known; i < keys.size(); ++i) benchmark::DoNotOptimize(cstr_find(keys[i].c_str()));
    }
}

/// Tables that have to ask a default table of many entries for its own default, in turn with tables that ask others;
/// the friendly ones don't take turns.
template <Keys kKind>
void EditHostileDefaults(benchmark::State& state) {
    constexpr unsigned kTables = 12500, kEntries = 60000;
    std::string inner, tables[2];
    for (unsigned i = 0; i < kEntries; ++i) inner += "k" + std::to_string(i) + "=1 ";
    for (unsigned i = 0; i < kTables; ++i) {
        const std::string name = std::to_string(i);
        tables[0] += "a" + name + "={_default={} c={}} ";
        tables[kKind == Keys::kHostile ? 0 : 1] += "b" + name + "={c={}} ";
    }
    Bench::MemoryFiles io;
    io.files["text"] = "_default={_default={" + inner + "}} " + tables[0] + tables[1];
    for (auto _ : state) {
        const Bench::FilePointer file(CreateRLFile(&io));
        file->Load("text", Configure::ACCESS_EDIT, Configure::FORMAT_TEXT);
        if (file->GetRoot() == nullptr || file->GetRoot()->GetCount() != 2 * kTables + 1) {
            state.SkipWithError("not loaded whole");
        }
    }
}

template <Attack kAttack>
void RegisterForms(const std::string& attack) {
    const auto add = [&attack](const char* form, auto* hostile, auto* friendly) {
        for (const auto& [kind, run] : {std::pair("Hostile", hostile), std::pair("Friendly", friendly)}) {
            benchmark::RegisterBenchmark((form + ("/" + attack + "/") + kind).c_str(), run)
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
    };
    add("Json", LoadHostileJson<kAttack, Keys::kHostile>, LoadHostileJson<kAttack, Keys::kFriendly>);
    add("Text", LoadOrSaveHostile<kAttack, Keys::kHostile, false>, LoadOrSaveHostile<kAttack, Keys::kFriendly, false>);
    add("Save", LoadOrSaveHostile<kAttack, Keys::kHostile, true>, LoadOrSaveHostile<kAttack, Keys::kFriendly, true>);
}

[[maybe_unused]] const bool registered = [] {
    RegisterForms<Attack::kOneHash>("OneHash");
    RegisterForms<Attack::kSmallGroups>("SmallGroups");
    RegisterForms<Attack::kLateDifference>("LateDifference");
    RegisterForms<Attack::kClusters>("Clusters");
    return true;
}();
BENCHMARK(FindHostile<Keys::kHostile>)->Name("Find/OneHash/Hostile")->Unit(benchmark::kMillisecond);
BENCHMARK(FindHostile<Keys::kFriendly>)->Name("Find/OneHash/Friendly")->Unit(benchmark::kMillisecond);
BENCHMARK(EditHostileDefaults<Keys::kHostile>)->Name("Edit/Defaults/Hostile")->Unit(benchmark::kMillisecond);
BENCHMARK(EditHostileDefaults<Keys::kFriendly>)->Name("Edit/Defaults/Friendly")->Unit(benchmark::kMillisecond);

} // namespace
