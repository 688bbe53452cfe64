// Configuration files: loads and saves of one content in all forms, compared with the peers' own text forms and two
// binary ones, and how the times grow. The arguments are megabytes of our text form.
//
// All files, ours and the peers', are in memory. Dropping what was loaded isn't timed. A first load interns our keys
// and values, and all later loads find them, so they are known here; the first load is a benchmark of its own,
// First..., which runs alone in a process and also reports the memory that it took.

#include "bench/configure_texts.h"
#include "bench/memory_files.h"

#include <cstdlib>
#include <optional>
#include <sstream>

#include <benchmark/benchmark.h>
#include <flatbuffers/flexbuffers.h>
#include <libconfig.h++>
#include <msgpack.hpp>
#include <toml++/toml.h>
#include <yaml-cpp/yaml.h>

namespace {

using Bench::Node;
using Bench::NodeKind;
using Bench::Written;

/// Whether a run is the first one of its process. That one measures memory; the others load once before they are timed.
enum class Run { First, Known };

void SetCounters(benchmark::State& state, std::size_t entries, std::size_t bytes) {
    state.SetItemsProcessed(static_cast<std::int64_t>(entries) * state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

/// Times `load`. Testing its result with `check` and dropping it isn't timed.
template <Run kRun, class Load, class Check>
void MeasureLoad(benchmark::State& state, Load load, Check check) {
    if (kRun == Run::Known && !check(load())) state.SkipWithError("not loaded whole");
    std::optional<Bench::PeakMemory> peak;
    if (kRun == Run::First) peak.emplace();
    for (auto _ : state) {
        auto loaded = load();
        state.PauseTiming();
        if (peak) state.counters["peak"] = peak->Bytes();
        if (!check(loaded)) state.SkipWithError("not loaded whole");
        { auto dropped = std::move(loaded); }
        state.ResumeTiming();
    }
}

// Ours.

/// A file object over a content in text form, whose file is called "text"; if `compiled`, it is loaded for reading, and
/// the file "binary" has its binary form.
struct OurFile {
    explicit OurFile(const std::string& text, bool compiled = false) {
        io.files["text"] = text;
        if (!compiled) return;
        file->Load("text", Configure::ACCESS_READ, Configure::FORMAT_TEXT);
        if (!file->SaveAs("binary", Configure::FORMAT_BINARY)) std::abort();
        file->Reset();
    }

    Bench::MemoryFiles io;
    Bench::FilePointer file{CreateRLFile(&io)};
};

/// Resets the file that the table was loaded from.
struct Reset {
    void operator()(Configure::IFile* file) const { file->Reset(); }
};

std::size_t CountOf(Configure::ITable* table);

std::size_t CountOf(Configure::IArray* array) {
    std::size_t count = array->GetCount();
    for (auto* unit = array->Begin(); unit != array->End(); unit = array->Next(unit)) {
        if (unit->IsTable()) count += CountOf(unit->GetTable());
    }
    return count;
}

std::size_t CountOf(Configure::ITable* table) {
    std::size_t count = table->GetCount();
    for (auto* unit = table->Begin(); unit != table->End(); unit = table->Next(unit)) {
        if (unit->IsTable()) count += CountOf(unit->GetTable());
        if (unit->IsArray()) count += CountOf(unit->GetArray());
    }
    return count;
}

template <std::uint32_t kAccess, std::uint32_t kFormat, Run kRun>
void LoadOurs(benchmark::State& state) {
    const Bench::WrittenContent& content = Written(state.range(0), Bench::kOurs);
    constexpr bool binary = kFormat == Configure::FORMAT_BINARY;
    OurFile ours(content.text, binary);
    MeasureLoad<kRun>(
        state,
        [&] {
            ours.file->Load(binary ? "binary" : "text", kAccess, kFormat);
            return std::unique_ptr<Configure::IFile, Reset>(ours.file.get());
        },
        [&](const auto& file) { return file->GetRoot() != nullptr && CountOf(file->GetRoot()) == content.entries; });
    SetCounters(state, content.entries, binary ? ours.io.files["binary"].size() : content.text.size());
}

template <std::uint32_t kAccess, std::uint32_t kFormat>
void SaveOurs(benchmark::State& state) {
    const Bench::WrittenContent& content = Written(state.range(0), Bench::kOurs);
    OurFile ours(content.text);
    ours.file->Load("text", kAccess, Configure::FORMAT_TEXT);
    if (!ours.file->SaveAs("saved", kFormat)) state.SkipWithError("not saved");
    for (auto _ : state) ours.file->SaveAs("saved", kFormat);
    SetCounters(state, content.entries, ours.io.files["saved"].size());
}

// The peers' text forms.

template <Run kRun>
void LoadLibconfig(benchmark::State& state) {
    const Bench::WrittenContent& content = Written(state.range(0), Bench::kLibconfig);
    MeasureLoad<kRun>(
        state,
        [&] {
            auto config = std::make_unique<libconfig::Config>();
            config->readString(content.text.c_str());
            return config;
        },
        [&](const auto& config) { return static_cast<std::size_t>(config->getRoot().getLength()) == content.groups; });
    SetCounters(state, content.entries, content.text.size());
}

template <Run kRun>
void LoadToml(benchmark::State& state) {
    const Bench::WrittenContent& content = Written(state.range(0), Bench::kToml);
    MeasureLoad<kRun>(
        state, [&] { return std::make_unique<toml::table>(toml::parse(content.text)); },
        [&](const auto& table) { return table->size() == content.groups; });
    SetCounters(state, content.entries, content.text.size());
}

template <Run kRun>
void LoadYaml(benchmark::State& state) {
    const Bench::WrittenContent& content = Written(state.range(0), Bench::kYaml);
    MeasureLoad<kRun>(
        state, [&] { return std::make_unique<YAML::Node>(YAML::Load(content.text)); },
        [&](const auto& node) { return node->size() == content.groups; });
    SetCounters(state, content.entries, content.text.size());
}

// Binary forms, for orientation: neither keeps texts beyond the life of the bytes, and FlexBuffers only checks them.

/// How the peers store a number's text, which stays a text in our form.
template <class Whole, class Real, class Flag>
void Typed(const std::string& text, Whole whole, Real real, Flag flag) {
    if (text == "true" || text == "false") {
        flag(text == "true");
    } else if (text.find('.') == std::string::npos) {
        whole(std::atoi(text.c_str()));
    } else {
        real(std::strtof(text.c_str(), nullptr));
    }
}

void Pack(msgpack::packer<msgpack::sbuffer>& packer, const Node& node) {
    auto size = static_cast<std::uint32_t>(node.children.size());
    if (node.kind == NodeKind::Table) packer.pack_map(size);
    if (node.kind == NodeKind::Array) packer.pack_array(size);
    for (const Node& child : node.children) {
        if (node.kind == NodeKind::Table) packer.pack(child.key);
        Pack(packer, child);
    }
    auto pack = [&](auto value) { packer.pack(value); };
    if (node.kind == NodeKind::Number) Typed(node.text, pack, pack, pack);
    if (node.kind == NodeKind::Text || node.kind == NodeKind::Interval) packer.pack(node.text);
}

void UnpackMsgpack(benchmark::State& state) {
    msgpack::sbuffer buffer;
    msgpack::packer<msgpack::sbuffer> packer(buffer);
    Bench::Content content(static_cast<std::size_t>(state.range(0)) * Bench::kThingsInMegabyte);
    Pack(packer, content.root);
    MeasureLoad<Run::Known>(
        state, [&] { return std::make_unique<msgpack::object_handle>(msgpack::unpack(buffer.data(), buffer.size())); },
        [&](const auto& handle) { return handle->get().via.map.size == content.root.children.size(); });
    SetCounters(state, Bench::CountEntries(content.root), buffer.size());
}

void Build(flexbuffers::Builder& builder, const Node& node) {
    const char* key = node.key.c_str();
    if (!node.key.empty()) builder.Key(key);
    auto add = [&](auto value) { builder.Add(value); };
    auto children = [&] {
        for (const Node& child : node.children) Build(builder, child);
    };
    switch (node.kind) {
    case NodeKind::Number:
        Typed(node.text, add, add, add);
        break;
    case NodeKind::Array:
        builder.Vector(children);
        break;
    case NodeKind::Table:
        builder.Map(children);
        break;
    default:
        builder.String(node.text);
    }
}

void CheckFlexBuffers(benchmark::State& state) {
    flexbuffers::Builder builder;
    Bench::Content content(static_cast<std::size_t>(state.range(0)) * Bench::kThingsInMegabyte);
    Build(builder, content.root);
    builder.Finish();
    const std::vector<std::uint8_t>& bytes = builder.GetBuffer();
    for (auto _ : state) {
        std::vector<std::uint8_t> copy(bytes), seen;
        if (!flexbuffers::VerifyBuffer(copy.data(), copy.size(), &seen)) state.SkipWithError("not sound");
    }
    SetCounters(state, Bench::CountEntries(content.root), bytes.size());
}

using Configure::ACCESS_EDIT;
using Configure::ACCESS_READ;
using Configure::FORMAT_BINARY;
using Configure::FORMAT_TEXT;

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
}

void Once(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10)->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK(LoadOurs<ACCESS_READ, FORMAT_TEXT, Run::First>)->Name("FirstRead")->Apply(Once);
BENCHMARK(LoadOurs<ACCESS_EDIT, FORMAT_TEXT, Run::First>)->Name("FirstEdit")->Apply(Once);
BENCHMARK(LoadLibconfig<Run::First>)->Name("FirstLibconfig")->Apply(Once);
BENCHMARK(LoadToml<Run::First>)->Name("FirstToml")->Apply(Once);
BENCHMARK(LoadYaml<Run::First>)->Name("FirstYaml")->Apply(Once);
BENCHMARK(LoadOurs<ACCESS_READ, FORMAT_TEXT, Run::Known>)->Name("LoadRead")->Apply(Sizes);
BENCHMARK(LoadOurs<ACCESS_EDIT, FORMAT_TEXT, Run::Known>)->Name("LoadEdit")->Apply(Sizes);
BENCHMARK(LoadOurs<ACCESS_READ, FORMAT_BINARY, Run::Known>)->Name("LoadBinary")->Apply(Sizes);
BENCHMARK(SaveOurs<ACCESS_READ, FORMAT_BINARY>)->Name("SaveBinary")->Apply(Sizes);
BENCHMARK(SaveOurs<ACCESS_EDIT, FORMAT_TEXT>)->Name("SaveText")->Apply(Sizes);
BENCHMARK(LoadLibconfig<Run::Known>)->Name("LoadLibconfig")->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadToml<Run::Known>)->Name("LoadToml")->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(LoadYaml<Run::Known>)->Name("LoadYaml")->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(UnpackMsgpack)->Arg(10)->Unit(benchmark::kMillisecond);
BENCHMARK(CheckFlexBuffers)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace
