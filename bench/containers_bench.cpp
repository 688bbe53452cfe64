// The exported containers and allocators, compared with those of the standard library, absl and Boost.

#include "bench/texts.h"

#include <tessarin/containers.h>

#include <climits>
#include <memory_resource>
#include <unordered_map>

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <boost/pool/pool.hpp>
#include <malloc.h>

namespace {

// The heap keeps freed memory. Otherwise it would depend on what ran before whether a run has to take its pages from
// the kernel again, which costs more than everything that is measured here.
const bool heap_keeps_pages = mallopt(M_MMAP_THRESHOLD, 1 << 30) != 0 && mallopt(M_TRIM_THRESHOLD, INT_MAX) != 0;

constexpr std::size_t kKeys = 1000000;

const std::vector<std::uintptr_t>& Keys() {
    static const std::vector<std::uintptr_t> keys = Bench::Addresses(kKeys);
    return keys;
}

/// The same keys in another order, because lookups would otherwise visit nodes in their order in memory.
const std::vector<std::uintptr_t>& Asked() {
    static const std::vector<std::uintptr_t> asked = [] {
        std::vector<std::uintptr_t> keys = Keys();
        std::shuffle(keys.begin(), keys.end(), std::mt19937(12));
        return keys;
    }();
    return asked;
}

struct OurMap {
    explicit OurMap(std::size_t room) : map(i32hm_create(room == 0 ? 16 : static_cast<std::uint32_t>(room), 8)) {}
    ~OurMap() { i32hm_destroy(map); }
    OurMap(const OurMap&) = delete;
    OurMap& operator=(const OurMap&) = delete;
    void Set(std::uintptr_t key) { i32hm_set(map, key, &key); }
    bool Has(std::uintptr_t key) { return i32hm_get(map, key) != nullptr; }
    void Erase(std::uintptr_t key) { i32hm_erase_key(map, key); }
    hm* map;
};

template <class Map>
struct PeerMap {
    explicit PeerMap(std::size_t room) { map.reserve(room); }
    void Set(std::uintptr_t key) { map[key] = key; }
    bool Has(std::uintptr_t key) { return map.find(key) != map.end(); }
    void Erase(std::uintptr_t key) { map.erase(key); }
    Map map;
};
using StdMap = PeerMap<std::unordered_map<std::uintptr_t, std::uint64_t>>;
using AbslMap = PeerMap<absl::flat_hash_map<std::uintptr_t, std::uint64_t>>;

/// The argument is the number of buckets at the start.
template <class Map>
void SetMillion(benchmark::State& state) {
    for (auto _ : state) {
        auto map = std::make_unique<Map>(static_cast<std::size_t>(state.range(0)));
        for (std::uintptr_t key : Keys()) map->Set(key);
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

template <class Map>
void GetMillion(benchmark::State& state) {
    Map map(0);
    for (std::uintptr_t key : Keys()) map.Set(key);
    auto other = static_cast<std::uintptr_t>(state.range(0)); // 0 hits; an odd number misses
    for (auto _ : state) {
        for (std::uintptr_t key : Asked()) benchmark::DoNotOptimize(map.Has(key * (other == 0 ? 1 : 3) + other));
    }
}

template <class Map>
void EraseMillion(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto map = std::make_unique<Map>(0);
        for (std::uintptr_t key : Keys()) map->Set(key);
        state.ResumeTiming();
        for (std::uintptr_t key : Asked()) map->Erase(key);
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
}

// The peers below are templates that the compiler inlines; ours is a function of a library. To show the difference that
// makes, the peers are measured behind a call, too.

constexpr std::size_t kBlocks = 10000;
constexpr std::uint32_t kBlockSize = 48;

void BlocksTessarin(benchmark::State& state) {
    omem* pool = omem_create(kBlockSize, 1024);
    std::vector<void*> blocks(kBlocks);
    for (auto _ : state) {
        for (void*& block : blocks) block = omem_alloc(pool);
        benchmark::DoNotOptimize(blocks.data());
        benchmark::ClobberMemory();
        for (void* block : blocks) omem_free(pool, block);
    }
    omem_destroy(pool);
}

[[gnu::noinline]] void* CalledMalloc(boost::pool<>& pool) { return pool.malloc(); }
[[gnu::noinline]] void CalledFree(boost::pool<>& pool, void* block) { pool.free(block); }

template <bool Inlined>
void BlocksBoost(benchmark::State& state) {
    boost::pool<> pool(kBlockSize, 1024);
    std::vector<void*> blocks(kBlocks);
    for (auto _ : state) {
        for (void*& block : blocks) block = Inlined ? pool.malloc() : CalledMalloc(pool);
        benchmark::DoNotOptimize(blocks.data());
        benchmark::ClobberMemory();
        for (void* block : blocks) Inlined ? pool.free(block) : CalledFree(pool, block);
    }
}

constexpr std::uint32_t kRun = 24;

void RunsTessarin(benchmark::State& state) {
    for (auto _ : state) {
        imem* pool = imem_create(64 * 1024);
        for (std::size_t i = 0; i < kBlocks; ++i) benchmark::DoNotOptimize(imem_alloc(pool, kRun));
        imem_destroy(pool);
    }
}

/// Called through the interface, as containers do, unless the compiler can see the implementation.
template <bool Inlined>
void RunsStd(benchmark::State& state) {
    for (auto _ : state) {
        std::pmr::monotonic_buffer_resource resource(64 * 1024);
        std::pmr::memory_resource* pool = &resource;
        if (!Inlined) benchmark::DoNotOptimize(pool);
        for (std::size_t i = 0; i < kBlocks; ++i) benchmark::DoNotOptimize(pool->allocate(kRun, 1));
    }
}

struct Element {
    std::uint64_t words[4];
};
constexpr std::size_t kElements = 100000;

void PushTessarin(benchmark::State& state) {
    for (auto _ : state) {
        farr* array = farr_create(sizeof(Element));
        for (std::size_t i = 0; i < kElements; ++i) static_cast<Element*>(farr_push(array))->words[0] = i;
        benchmark::DoNotOptimize(farr_begin(array));
        farr_destroy(array);
    }
}

[[gnu::noinline]] Element& CalledPush(std::vector<Element>& array) { return array.emplace_back(); }

template <bool Inlined>
void PushStd(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<Element> array;
        for (std::size_t i = 0; i < kElements; ++i) {
            (Inlined ? array.emplace_back() : CalledPush(array)).words[0] = i;
        }
        benchmark::DoNotOptimize(array.data());
    }
}

constexpr int kRoom = 1000003;

BENCHMARK(SetMillion<OurMap>)->Arg(0)->Arg(kRoom)->Unit(benchmark::kMillisecond);
BENCHMARK(SetMillion<StdMap>)->Arg(0)->Arg(kRoom)->Unit(benchmark::kMillisecond);
BENCHMARK(SetMillion<AbslMap>)->Arg(0)->Arg(kRoom)->Unit(benchmark::kMillisecond);
BENCHMARK(GetMillion<OurMap>)->Arg(0)->Arg(5)->Unit(benchmark::kMillisecond);
BENCHMARK(GetMillion<StdMap>)->Arg(0)->Arg(5)->Unit(benchmark::kMillisecond);
BENCHMARK(GetMillion<AbslMap>)->Arg(0)->Arg(5)->Unit(benchmark::kMillisecond);
BENCHMARK(EraseMillion<OurMap>)->Unit(benchmark::kMillisecond);
BENCHMARK(EraseMillion<StdMap>)->Unit(benchmark::kMillisecond);
BENCHMARK(EraseMillion<AbslMap>)->Unit(benchmark::kMillisecond);
BENCHMARK(BlocksTessarin);
BENCHMARK(BlocksBoost<true>);
BENCHMARK(BlocksBoost<false>);
BENCHMARK(RunsTessarin);
BENCHMARK(RunsStd<true>);
BENCHMARK(RunsStd<false>);
BENCHMARK(PushTessarin);
BENCHMARK(PushStd<true>);
BENCHMARK(PushStd<false>);

} // namespace
