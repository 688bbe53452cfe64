// Both document forms: loads and saves of one content, compared with RapidJSON and nlohmann's library, and how the
// times grow.

#include "bench/texts.h"

#include <tessarin/documents.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

using Tessarin::ITable;

/// One content in both forms: groups of things with 8 members each, one of which is an object; a thing has about 200
/// bytes.
class Content {
public:
    explicit Content(int things) : random_(3) {
        json = "{";
        for (int i = 0; i < things / 2; ++i) {
            if (i % 50 == 0) Group(i);
            Thing(i);
        }
        json += "}}";
        readable += "}";
    }

    std::string json = {};
    std::string readable = {};

private:
    void Group(int number) {
        json += number == 0 ? "" : "},";
        readable += number == 0 ? "" : "}\n";
        Both("\"group_%d\":{", "group_%d {\n", number);
        first_ = true;
    }

    /// Two objects: the thing, and its body inside it.
    void Thing(int number) {
        if (!first_) json += ",";
        first_ = false;
        Both("\"thing_%d\":{", "thing_%d {\n", number);
        const char* names[] = {"a barrel of salted herring",        "the lantern from Gull Point",
                               "statue of a sleeping heron",        "a rope ladder, frayed at its end",
                               "the tide clock of the old harbour", "the ferry's second bell"};
        const char* name = names[random_() % 6];
        int health = static_cast<int>(random_() % 1000);
        double speed = static_cast<double>(random_() % 10000) / 997;
        double x = static_cast<double>(random_() % 100000) / 77;
        double y = static_cast<double>(random_() % 100000) / 77;
        Both("\"display_name\":\"%s\",\"health\":%d,\"speed\":%.4f,",
             "display_name = \"%s\" health = %d speed = %.4f\n", name, health, speed);
        Both("\"position\":[%.3f,%.3f,0.5],\"owner_id\":%d,\"team\":\"red team\",",
             "position = [%.3f,%.3f,0.5] owner_id = %d team = \"red team\"\n", x, y, number * 17 % 4096);
        Both("\"label\":\"thing number %d of the inventory, found at low tide\",",
             "label = \"thing number %d of the inventory, found at low tide\"\n", number);
        Both("\"body\":{\"mass\":%.2f,\"friction\":%.3f,\"layer\":%d,\"flags\":%d,\"mesh\":\"models/harbour/props/"
             "mesh_%d.model\",\"lod\":2,"
             "\"pivot\":[0.0,%.2f,0.0],\"shadow\":1}}",
             "body { mass = %.2f friction = %.3f layer = %d flags = %d mesh = models/harbour/props/mesh_%d.model lod = "
             "2 pivot = [0.0,%.2f,0.0] "
             "shadow = 1 }\n}\n",
             speed * 3, speed / 11, health % 32, health * 3, health % 64, y / 1000);
    }

    template <class... Values>
    void Both(const char* as_json, const char* as_readable, Values... values) {
        char text[512];
        json.append(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, as_json, values...)));
        readable.append(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, as_readable, values...)));
    }

    std::mt19937 random_;
    bool first_ = true;
};

const Content& ContentOf(int things) {
    static std::map<int, Content> contents;
    return contents.try_emplace(things, things).first->second;
}

/// A temporary file that holds a text, because the readable form loads only from files.
class File {
public:
    explicit File(const std::string& text) {
        std::FILE* file = std::fopen(path_, "wb");
        if (file == nullptr || std::fwrite(text.data(), 1, text.size(), file) != text.size())
            throw std::runtime_error(path_);
        std::fclose(file);
    }
    ~File() { std::remove(path_); }
    [[nodiscard]] const char* Path() const { return path_; }

private:
    const char* path_ = "documents_bench.table";
};

ITable* Opened(const std::string& json) {
    return OpenTableBuffer(json.data(), static_cast<std::uint32_t>(json.size()));
}

std::string Saved(ITable* table) {
    void* data = nullptr;
    std::uint32_t size = 0;
    table->SaveBuffer(&data, &size);
    std::string text(static_cast<const char*>(data), size);
    std::free(data);
    return text;
}

constexpr int kThings = 50000;

// Dropping what was loaded isn't timed, ours and the peers' alike. The first load interns our keys and strings, and all
// later loads find them: the first load is a benchmark of its own, First..., which runs alone in a process.

void LoadTessarin(benchmark::State& state) {
    const std::string& text = ContentOf(static_cast<int>(state.range(0))).json;
    for (auto _ : state) {
        ITable* table = Opened(text);
        state.PauseTiming();
        if (table == nullptr || table->GetElementCount() == 0) state.SkipWithError("not loaded");
        CloseTable(table);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}

void LoadReadable(benchmark::State& state) {
    File file(ContentOf(static_cast<int>(state.range(0))).readable);
    for (auto _ : state) {
        ITable* table = OpenTableReadableFile(file.Path());
        state.PauseTiming();
        if (table == nullptr || table->GetElementCount() == 0) state.SkipWithError("not loaded");
        CloseTable(table);
        state.ResumeTiming();
    }
}

void LoadRapidJson(benchmark::State& state) {
    const std::string& text = ContentOf(static_cast<int>(state.range(0))).json;
    for (auto _ : state) {
        auto document = std::make_unique<rapidjson::Document>();
        document->Parse(text.c_str());
        state.PauseTiming();
        if (document->HasParseError()) state.SkipWithError("not loaded");
        document.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}

void LoadNlohmann(benchmark::State& state) {
    const std::string& text = ContentOf(static_cast<int>(state.range(0))).json;
    for (auto _ : state) {
        auto document = std::make_unique<nlohmann::json>(nlohmann::json::parse(text));
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
}

void SaveTessarin(benchmark::State& state) {
    ITable* table = Opened(ContentOf(kThings).json);
    for (auto _ : state) {
        void* data = nullptr;
        std::uint32_t size = 0;
        table->SaveBuffer(&data, &size);
        std::free(data);
    }
    CloseTable(table);
}

/// Over a document of exactly the text that our save writes: its reals are 32 bits wide and have more digits.
void SaveRapidJson(benchmark::State& state) {
    ITable* table = Opened(ContentOf(kThings).json);
    rapidjson::Document document;
    document.Parse(Saved(table).c_str());
    CloseTable(table);
    for (auto _ : state) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        benchmark::DoNotOptimize(buffer.GetString());
    }
}

/// One object of that many members, whose keys were interned in another order, and then all members once more.
void LoadFlat(benchmark::State& state) {
    std::vector<std::string> keys = Bench::Keys(static_cast<std::size_t>(state.range(0)), 5);
    std::sort(keys.begin(), keys.end());
    for (const std::string& key : keys) cstr_string(key.c_str());
    std::shuffle(keys.begin(), keys.end(), std::mt19937(6));
    std::string text = "{";
    for (const char* value : {"1", "true", "2"}) {
        for (const std::string& key : keys) text += "\"" + key + "\":" + value + ",";
    }
    text.back() = '}';
    for (auto _ : state) CloseTable(Opened(text));
}

BENCHMARK(LoadTessarin)->Name("FirstTessarin")->Arg(kThings)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadRapidJson)->Name("FirstRapidJson")->Arg(kThings)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadNlohmann)->Name("FirstNlohmann")->Arg(kThings)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadReadable)->Name("FirstReadable")->Arg(kThings)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadTessarin)->Arg(kThings)->Arg(kThings * 10)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadReadable)->Arg(kThings)->Arg(kThings * 10)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadRapidJson)->Arg(kThings)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadNlohmann)->Arg(kThings)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveTessarin)->Unit(benchmark::kMillisecond);
BENCHMARK(SaveRapidJson)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadFlat)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

} // namespace
