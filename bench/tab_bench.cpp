// Tab files into their grids, from a file service in memory: compared with a hand-written loop that splits the same
// bytes with memchr, and with libcsv, which passes copies of the fields to a callback that only counts them.

#include "bench/memory_files.h"

#include <tessarin/tab_files.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <vector>

#include <benchmark/benchmark.h>
#include <csv.h>

namespace {

constexpr const char* kPath = "items.tab";
constexpr std::uint32_t kColumns = 12;

struct Released {
    void operator()(ITabFile* file) const { file->Release(); }
};
using TabFilePointer = std::unique_ptr<ITabFile, Released>;

/// That many megabytes of lines with 12 fields: a key, numbers and names; every eighth field is empty; 7 bytes a field.
Bench::MemoryFiles FilesOf(std::int64_t megabytes) {
    const char* words[] = {"lantern", "a barrel of salted herring", "rope", "heron statue", "bell"};
    std::mt19937 random(11);
    Bench::MemoryFiles files;
    std::string& text = files.files[kPath];
    const std::size_t size = static_cast<std::size_t>(megabytes) << 20;
    text.reserve(size + 1000);
    for (int line = 0; text.size() < size; ++line) {
        text += "item_" + std::to_string(line);
        for (std::uint32_t column = 1; column < kColumns; ++column) {
            text += '\t';
            const unsigned chance = static_cast<unsigned>(random()) % 8;
            if (chance == 1) text += words[random() % 5];
            if (chance > 1) text += std::to_string(random() % (chance > 4 ? 100 : 1000000));
        }
        text += "\r\n";
    }
    return files;
}

void SetCounters(benchmark::State& state, Bench::MemoryFiles& files) {
    state.SetBytesProcessed(static_cast<std::int64_t>(files.files[kPath].size()) * state.iterations());
}

/// Dropping the grid isn't timed, here and below.
void OpenTabFile(benchmark::State& state) {
    Bench::MemoryFiles files = FilesOf(state.range(0));
    for (auto _ : state) {
        TabFilePointer file(CreateTabFile(&files));
        if (!file->Open(kPath, static_cast<std::uint32_t>(state.range(1)))) state.SkipWithError("not opened");
        benchmark::DoNotOptimize(file->GetCell(0, 1));
        state.PauseTiming();
        file.reset();
        state.ResumeTiming();
    }
    SetCounters(state, files);
}

/// What a host would write for files that it knows: no counting, no checks, enough room from the start.
std::vector<char*> CutByHand(char* text, char* last) {
    std::vector<char*> cells;
    cells.reserve(static_cast<std::size_t>(last - text) / 4);
    while (text != last) {
        char* end = static_cast<char*>(std::memchr(text, '\n', static_cast<std::size_t>(last - text)));
        if (end == nullptr) break;
        *(end[-1] == '\r' ? end - 1 : end) = '\0';
        for (char* field = text; field != nullptr;) {
            cells.push_back(field);
            char* tab = static_cast<char*>(std::memchr(field, '\t', static_cast<std::size_t>(end - field)));
            if (tab != nullptr) *tab++ = '\0';
            field = tab;
        }
        text = end + 1;
    }
    return cells;
}

void OpenByHand(benchmark::State& state) {
    Bench::MemoryFiles files = FilesOf(state.range(0));
    for (auto _ : state) {
        void* handle = files.Open(kPath, 0);
        const auto size = static_cast<std::uint32_t>(files.GetSize(handle));
        auto* text = static_cast<char*>(std::malloc(size));
        files.Read(handle, text, size, size);
        files.Close(handle);
        std::vector<char*> cells = CutByHand(text, text + size);
        benchmark::DoNotOptimize(cells.data());
        state.PauseTiming();
        if (cells.size() % kColumns != 0) state.SkipWithError("not cut");
        std::free(text);
        cells = {};
        state.ResumeTiming();
    }
    SetCounters(state, files);
}

/// Parses the stored bytes directly: without the copy that the other two make, and without a grid.
void ParseLibcsv(benchmark::State& state) {
    Bench::MemoryFiles files = FilesOf(state.range(0));
    const std::string& text = files.files[kPath];
    std::uint64_t fields = 0;
    for (auto _ : state) {
        csv_parser parser;
        if (csv_init(&parser, 0) != 0) throw std::runtime_error("csv_init");
        csv_set_delim(&parser, '\t');
        const auto count = [](void*, std::size_t, void* counter) { ++*static_cast<std::uint64_t*>(counter); };
        if (csv_parse(&parser, text.data(), text.size(), count, nullptr, &fields) != text.size()) {
            state.SkipWithError("not parsed");
        }
        csv_free(&parser);
    }
    if (fields == 0 || fields % kColumns != 0) state.SkipWithError("not parsed");
    SetCounters(state, files);
}

/// As many columns as lines, where all lines but the first are empty: a megabyte of text asks for a grid of 2 TB.
void OpenHostile(benchmark::State& state) {
    Bench::MemoryFiles files;
    const auto side = static_cast<std::size_t>(state.range(0));
    files.files[kPath] = std::string(side, '\t') + std::string(side, '\n');
    bool opened = false;
    for (auto _ : state) {
        TabFilePointer file(CreateTabFile(&files));
        opened = file->Open(kPath, 0);
    }
    state.SetLabel(opened ? "opened" : "refused");
    SetCounters(state, files);
}

BENCHMARK(OpenTabFile)->ArgsProduct({{1, 10, 100}, {0, TABFILE_DEFAULT_ROW}})->Unit(benchmark::kMillisecond);
BENCHMARK(OpenByHand)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseLibcsv)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenHostile)->RangeMultiplier(8)->Range(1 << 10, 1 << 19)->Unit(benchmark::kMillisecond);

} // namespace
