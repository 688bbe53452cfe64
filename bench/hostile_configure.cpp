// Time and memory of configuration texts, edits and tab files of hostile shapes, beside friendly ones of the same size.

#include "bench/configure_texts.h"
#include "bench/memory_files.h"

#include <tessarin/configure.h>
#include <tessarin/tab_files.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>

#include <malloc.h>

#include <benchmark/benchmark.h>

// ---- Configuration texts and edited trees

namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

/// glibc maps large blocks apart until a larger one is freed. The texts below are no part of what is measured, so they
/// mustn't change that.
const bool heap_is_fresh = mallopt(M_MMAP_THRESHOLD, 128 * 1024) != 0;

std::string Repeated(const std::string& first, const std::string& piece) {
    std::string text = first;
    while (text.size() < kMegabyte) text += piece;
    return text;
}

/// Times `load`. Dropping what was loaded isn't timed. "peak_per_byte" is the most memory that the first load has
/// taken, for each byte of the text: it holds for rows that have a process of their own, as later loads use the holes
/// that earlier ones have left in the heap, or leave others.
template <class Load, class Drop>
void MeasureHostileLoad(benchmark::State& state, std::size_t bytes, Load load, Drop drop) {
    double peak_per_byte = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const Bench::PeakMemory peak;
        state.ResumeTiming();
        if (!load()) state.SkipWithError("not loaded");
        state.PauseTiming();
        if (peak_per_byte == 0) peak_per_byte = peak.Bytes() / static_cast<double>(bytes);
        drop();
        state.ResumeTiming();
    }
    state.counters["peak_per_byte"] = peak_per_byte;
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

/// Registers a row for times, and one for the memory of a single load.
template <class Run>
void Register(const std::string& name, Run run) {
    benchmark::RegisterBenchmark(("Hostile" + name).c_str(), run)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("FirstHostile" + name).c_str(), run)->Iterations(1)->Unit(benchmark::kMillisecond);
}

void LoadShape(benchmark::State& state, const std::string& text, std::uint32_t access) {
    Bench::MemoryFiles files;
    files.files["text"] = text;
    const Bench::FilePointer file(CreateRLFile(&files));
    MeasureHostileLoad(
        state, text.size(), [&] { return file->Load("text", access, Configure::FORMAT_TEXT) != nullptr; },
        [&] { file->Reset(); });
}

/// Friendly is the text of the other benchmarks, of the same size.
void RegisterShapes() {
    const struct {
        const char* name;
        std::string text;
    } shapes[] = {
        {"Friendly", ""}, // made when it is needed, as that leaves holes in the heap
        {"Tables", Repeated("", "a={")},
        {"ClosedTables", Repeated("", "a={}")},
        {"Arrays", Repeated("a=", "{")},
        {"ArraysOfTwo", Repeated("a=", "{,")},
        {"TablesInArray", Repeated("a={", "{}")},
        {"TablesInArrays", Repeated("a=", "{{}")},
        {"ArraysInArray", Repeated("a={", "{,}")},
        {"TablesAndArrays", Repeated("a=", "{{a=")},
        {"Elements", Repeated("a={", ",")},
        {"Entries", Repeated("", "a=")},
        {"Quotes", Repeated("a={", "\"\"")},
        {"Comments", Repeated("", "--\n")},
    };
    for (const auto& shape : shapes) {
        for (const auto& [access, name] :
             {std::pair{Configure::ACCESS_READ, "Read"}, {Configure::ACCESS_EDIT, "Edit"}}) {
            const auto run = [text = shape.text, access = access](benchmark::State& state) {
                LoadShape(state, text.empty() ? Bench::Written(1, Bench::kOurs).text : text, access);
            };
            Register(std::string("Text") + name + "/" + shape.name, run);
        }
    }
}
const bool shapes_are_registered = (RegisterShapes(), true);

enum class Order { kFront, kBack, kMiddle, kAny };

/// An edited array to which Units have been added.
struct EditedArray {
    explicit EditedArray(std::int64_t count) {
        io.files["text"] = "a = { x }";
        Configure::ITable* const root = file->Load("text", Configure::ACCESS_EDIT, Configure::FORMAT_TEXT);
        array = root->GetArray("a");
        while (array->GetCount() < count) array->AddString(0, "x");
    }

    Bench::MemoryFiles io;
    Bench::FilePointer file{CreateRLFile(&io)};
    Configure::IArray* array;
};

void AddUnits(benchmark::State& state) {
    for (auto _ : state) {
        const EditedArray edited(state.range(0));
        benchmark::DoNotOptimize(edited.array);
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// Removes all Units but one, each found by its position.
template <Order kOrder>
void RemoveUnits(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        EditedArray edited(state.range(0));
        std::mt19937 random(3);
        state.ResumeTiming();
        for (std::uint32_t count = edited.array->GetCount(); count != 1; --count) {
            std::uint32_t place = 0;
            if (kOrder == Order::kBack) place = count - 1;
            if (kOrder == Order::kMiddle) place = count / 2;
            if (kOrder == Order::kAny) place = static_cast<std::uint32_t>(random()) % count;
            edited.array->Remove(edited.array->At(place));
        }
        state.PauseTiming();
        if (edited.array->GetCount() != 1) state.SkipWithError("not removed");
        edited.file.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

/// A queue: each Unit that is added at the end follows a removal at the front.
void AddAndRemoveUnits(benchmark::State& state) {
    const EditedArray edited(state.range(0));
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            edited.array->Remove(edited.array->Begin());
            edited.array->AddString(0, "x");
        }
    }
    state.SetItemsProcessed(state.range(0) * state.iterations());
}

BENCHMARK(AddUnits)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveUnits<Order::kFront>)->Name("RemoveUnitsFront")->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveUnits<Order::kBack>)->Name("RemoveUnitsBack")->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveUnits<Order::kMiddle>)->Name("RemoveUnitsMiddle")->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(RemoveUnits<Order::kAny>)->Name("RemoveUnitsAnywhere")->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(AddAndRemoveUnits)->Arg(50000)->Unit(benchmark::kMillisecond);

} // namespace

// ---- Tab files

namespace {

void OpenGrid(benchmark::State& state, const std::string& text) {
    Bench::MemoryFiles files;
    files.files["tab"] = text;
    ITabFile* const file = CreateTabFile(&files);
    MeasureHostileLoad(
        state, text.size(), [&] { return file->Open("tab", 0); }, [&] { file->Open("", 0); });
    file->Release();
}

/// Friendly has 12 columns of 7 bytes, as an ordinary file has.
void RegisterGrids() {
    const struct {
        const char* name;
        std::string text;
    } grids[] = {
        {"Friendly", Repeated("", "item_1\t1234567\t\t99\tlantern\t1\t2\ta barrel\t12345\t7\trope\theron\n")},
        {"WideAndEmpty", std::string(kMegabyte / 2, '\t') + std::string(kMegabyte / 2, '\n')},
        {"WideAndUncounted", std::string(kMegabyte / 2, '\t') + "\n" + std::string(kMegabyte / 2, '\xFF')},
        {"Empty", "x" + std::string(kMegabyte, '\n')},
        {"Tabs", std::string(kMegabyte, '\t') + "\n"},
        {"TwoColumns", Repeated("\t\n", "\n")},
        {"Surplus", Repeated("x\n", "\t")},
    };
    for (const auto& grid : grids) {
        const auto run = [text = grid.text](benchmark::State& state) { OpenGrid(state, text); };
        Register(std::string("Grid/") + grid.name, run);
    }
}
const bool grids_are_registered = (RegisterGrids(), true);

} // namespace
