// Interning, compared with a mutex and a hash set of views over an arena.

#include "bench/texts.h"

#include <tessarin/tables.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>

#include <absl/container/flat_hash_set.h>
#include <benchmark/benchmark.h>

namespace {

class SetOfViews {
public:
    const char* Intern(const char* text) {
        std::lock_guard guard(lock_);
        std::string_view view(text);
        auto found = views_.find(view);
        if (found != views_.end()) return found->data();
        char* copy = Take(view.size() + 1);
        std::memcpy(copy, view.data(), view.size() + 1);
        views_.insert(std::string_view(copy, view.size()));
        return copy;
    }

private:
    static constexpr std::size_t kArena = 1 << 20;

    char* Take(std::size_t bytes) {
        if (arenas_.empty() || used_ + bytes > kArena) {
            arenas_.emplace_back(new char[kArena]);
            used_ = 0;
        }
        used_ += bytes;
        return arenas_.back().get() + used_ - bytes;
    }

    std::mutex lock_;
    absl::flat_hash_set<std::string_view> views_;
    std::vector<std::unique_ptr<char[]>> arenas_;
    std::size_t used_ = 0;
};

const std::vector<std::string>& HotTexts() {
    static const std::vector<std::string> texts = Bench::Keys(10000);
    return texts;
}

void HotTessarin(benchmark::State& state) {
    for (const std::string& text : HotTexts()) cstr_string(text.c_str());
    Bench::Round<std::string> round(HotTexts());
    for (auto _ : state) benchmark::DoNotOptimize(cstr_string(round.Next().c_str()));
}

void HotPeer(benchmark::State& state) {
    static SetOfViews peer;
    for (const std::string& text : HotTexts()) peer.Intern(text.c_str());
    Bench::Round<std::string> round(HotTexts());
    for (auto _ : state) benchmark::DoNotOptimize(peer.Intern(round.Next().c_str()));
}

// One iteration interns a million new texts. Our texts are never freed, so every run needs a process of its own; a
// later run in the same process would find a full table.
constexpr std::size_t kNewTexts = 1000000;

void NewTessarin(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::string> texts = Bench::NewTexts(kNewTexts);
        state.ResumeTiming();
        for (const std::string& text : texts) benchmark::DoNotOptimize(cstr_string(text.c_str()));
    }
}

void NewPeer(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::string> texts = Bench::NewTexts(kNewTexts);
        auto peer = std::make_unique<SetOfViews>();
        state.ResumeTiming();
        for (const std::string& text : texts) benchmark::DoNotOptimize(peer->Intern(text.c_str()));
        state.PauseTiming();
        peer.reset();
        state.ResumeTiming();
    }
}

BENCHMARK(HotTessarin)->UseRealTime()->Threads(1)->Threads(2);
BENCHMARK(HotPeer)->UseRealTime()->Threads(1)->Threads(2);
BENCHMARK(NewTessarin)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(NewPeer)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
