// Runs a target without a fuzzer:  replay_TARGET [--mutants N] [--seconds S] PATH...
//
// Each PATH is an input or a folder of inputs. With --mutants each input is followed by N changed copies of it, which
// are the same in every run and on every host: bits flipped, bytes inserted, erased and repeated, parts of other inputs
// spliced in. A failure ends the program; the last line before its message names the input and the mutant.
//
// With --seconds all of that is repeated for so long, at least three times. As no round brings a text that the one
// before it hasn't interned, the resident memory must then stay within 1% from the second round on.

#include "fuzz/check.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

namespace {

using Bytes = std::vector<std::uint8_t>;
using Path = std::filesystem::path;

struct Input {
    std::string name;
    Bytes bytes;
};

struct Options {
    std::uint32_t mutants = 0; // of each input
    double seconds = 0;        // 0 runs all once
    std::vector<Path> paths;
};

/// The inputs in a file or a folder, sorted by name. Ends the program if one can't be read.
void AddInputs(const Path& path, std::vector<Input>& inputs) {
    std::vector<Path> files = {path};
    if (std::filesystem::is_directory(path)) {
        files.clear();
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
            if (entry.is_regular_file()) files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
    }
    for (const Path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        Fuzz::Require(static_cast<bool>(stream), file.string().c_str());
        inputs.push_back({file.string(), std::move(bytes)});
    }
}

/// Makes changed copies of inputs. The numbers are those of the generator alone, not of a library's distributions.
class Mutator {
public:
    explicit Mutator(const std::vector<Input>& inputs) : inputs_(inputs) {}

    Bytes Mutant(const Bytes& input) {
        Bytes bytes = input;
        for (std::size_t changes = 1 + Below(4); changes != 0; --changes) Change(bytes);
        return bytes;
    }

private:
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

    void Change(Bytes& bytes) {
        const std::size_t at = Below(bytes.size() + 1);
        const std::size_t count = Below(std::min<std::size_t>(bytes.size() - at, 8) + 1);
        const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        switch (Below(5)) {
        case 0:
            if (at < bytes.size()) *place = static_cast<std::uint8_t>(*place ^ (1U << Below(8)));
            break;
        case 1:
            bytes.insert(place, static_cast<std::uint8_t>(random_()));
            break;
        case 2:
            bytes.erase(place, place + static_cast<std::ptrdiff_t>(count));
            break;
        case 3:
            Insert(bytes, at, Bytes(place, place + static_cast<std::ptrdiff_t>(count)));
            break;
        default:
            const Bytes& other = inputs_[Below(inputs_.size())].bytes;
            const std::size_t first = Below(other.size());
            const std::size_t last = first + Below(std::min<std::size_t>(other.size() - first, 64) + 1);
            Insert(bytes, at,
                   Bytes(other.begin() + static_cast<std::ptrdiff_t>(first),
                         other.begin() + static_cast<std::ptrdiff_t>(last)));
        }
    }

    static void Insert(Bytes& bytes, std::size_t at, const Bytes& added) {
        bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), added.begin(), added.end());
    }

    const std::vector<Input>& inputs_;
    std::mt19937 random_{1};
};

void Run(const std::string& name, const Bytes& bytes) {
    std::printf("%s\n", name.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void RunAll(const std::vector<Input>& inputs, std::uint32_t mutants) {
    Mutator mutator(inputs);
    for (const Input& input : inputs) {
        Run(input.name, input.bytes);
        for (std::uint32_t i = 0; i < mutants; ++i)
            Run(input.name + ", mutant " + std::to_string(i), mutator.Mutant(input.bytes));
    }
}

/// In pages; 0 where there is no telling. Gives the heap's free memory back first, as its size varies.
long ResidentPages() {
#if defined(M_TRIM_THRESHOLD)
    malloc_trim(0);
#endif
    long size = 0;
    long resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &size, &resident) != 2) resident = 0;
        std::fclose(file);
    }
    return resident;
}

/// Whether memory stayed as it was.
bool RunFor(const Options& options, const std::vector<Input>& inputs) {
    const auto start = std::chrono::steady_clock::now();
    std::vector<long> pages;
    do {
        RunAll(inputs, options.mutants);
        pages.push_back(ResidentPages());
    } while (pages.size() < 3 ||
             std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() < options.seconds);
    const auto [least, most] = std::minmax_element(pages.begin() + 1, pages.end());
    std::printf("%zu rounds, %ld to %ld pages\n", pages.size(), *least, *most);
    return static_cast<double>(*most - *least) <= 0.01 * static_cast<double>(*least);
}

} // namespace

int main(int count, char** arguments) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--mutants" && i + 1 < count) {
            options.mutants = static_cast<std::uint32_t>(std::stoul(arguments[++i]));
        } else if (argument == "--seconds" && i + 1 < count) {
            options.seconds = std::stod(arguments[++i]);
        } else {
            options.paths.emplace_back(argument);
        }
    }
    std::vector<Input> inputs;
    for (const Path& path : options.paths) AddInputs(path, inputs);
    if (inputs.empty()) return 1;
    if (options.seconds > 0) return RunFor(options, inputs) ? 0 : 1;
    RunAll(inputs, options.mutants);
    std::printf("%zu inputs, %u mutants each\n", inputs.size(), options.mutants);
    return 0;
}
