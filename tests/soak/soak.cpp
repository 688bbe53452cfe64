// Random work for a long time, which checks that memory doesn't grow:  soak SECONDS [SEED]
//
// The resident memory is sampled during the whole run, each time with every object alive but empty. The first fifth of
// the time is the warm-up, in which pools and buffers reach their final sizes; after it the samples must lie within 1%
// of each other, or the exit status is 1. Runs that are too short for a verdict on memory only do the work.

#include "tests/soak/work.h"
#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include <malloc.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kSamples = 50;
constexpr double kFewestSeconds = 60;
constexpr double kTolerance = 0.01;

/// In KiB. Returns the heap's free memory to the system first, because it would be counted although its size varies.
long ResidentMemory() {
    malloc_trim(0);
    long size = 0;
    long resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    Soak::Require(file != nullptr && std::fscanf(file, "%ld %ld", &size, &resident) == 2,
                  "the memory can be asked for");
    std::fclose(file);
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::vector<std::unique_ptr<Soak::Work>> AllWorks(const std::string& folder) {
    std::vector<std::unique_ptr<Soak::Work>> works;
    works.push_back(Soak::MakeTableWork(folder));
    works.push_back(Soak::MakeConfigureWork());
    works.push_back(Soak::MakeTabWork());
    works.push_back(Soak::MakeExchangeWork());
    works.push_back(Soak::MakeStringWork());
    return works;
}

std::vector<long> Run(double seconds, std::uint32_t seed) {
    const TestSupport::TemporaryFolder folder;
    const auto works = AllWorks(folder.Path(""));
    std::vector<long> samples;
    samples.reserve(kSamples);
    Soak::Random random(seed);
    std::uint64_t steps = 0;
    for (const auto start = Clock::now(); samples.size() < kSamples;) {
        const double due = seconds * static_cast<double>(samples.size() + 1) / kSamples;
        do {
            works[random.Below(static_cast<std::uint32_t>(works.size()))]->Step(random);
            ++steps;
        } while (Seconds(Clock::now() - start).count() < due);
        for (const auto& work : works) work->Empty();
        samples.push_back(ResidentMemory());
        std::printf("%7.0f s %10llu steps %8ld KiB\n", due, static_cast<unsigned long long>(steps), samples.back());
        std::fflush(stdout);
    }
    return samples;
}

bool IsFlat(const std::vector<long>& samples) {
    const auto [least, most] = std::minmax_element(samples.begin() + kSamples / 5, samples.end());
    const double spread = static_cast<double>(*most - *least) / static_cast<double>(*least);
    std::printf("after the warm-up: %ld to %ld KiB, %.2f%%\n", *least, *most, spread * 100);
    return spread <= kTolerance;
}

} // namespace

int main(int count, char** arguments) {
    const double seconds = count > 1 ? std::atof(arguments[1]) : kFewestSeconds;
    const auto seed = static_cast<std::uint32_t>(count > 2 ? std::atoi(arguments[2]) : 1);
    try {
        const std::vector<long> samples = Run(seconds, seed);
        return seconds < kFewestSeconds || IsFlat(samples) ? 0 : 1;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "soak: not true: %s (seed %u)\n", fault.what(), seed);
        return 1;
    }
}
