// Each worker takes the next file from a shared counter and has its own file object; besides the counter and the
// progress, workers share only the library's interned strings. A target is up to date if its time equals its source's;
// an earlier or later time isn't: a source that was put back to an older state has changed, too.

#include "tools/compile_folder.h"

#include "tools/command_line.h"
#include "tools/compile_file.h"
#include "tools/compile_progress.h"
#include "tools/failure.h"
#include "tools/find_files.h"
#include "tools/signals.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace Command {

namespace {

namespace fs = std::filesystem;

class FolderCompiler {
public:
    FolderCompiler(fs::path from, fs::path to, bool is_forced, FoundFiles found)
        : from_(std::move(from)), to_(std::move(to)), is_forced_(is_forced), files_(std::move(found.files)),
          progress_(files_.size()) {
        for (const std::string& error : found.errors) progress_.ReportFailure(error);
    }

    CompileTotals Run() {
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        const SignalDelay delay;
        std::vector<std::thread> others;
        others.reserve(cores);
        try {
            while (others.size() + 1 < std::min(cores, files_.size())) {
                others.emplace_back(&FolderCompiler::Work, this);
            }
        } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the comment says why
            // The system refuses more threads: the existing ones do all of the work.
        }
        Work();
        for (std::thread& worker : others) worker.join();
        progress_.Finish();
        return progress_.Totals();
    }

private:
    void Work() {
        for (std::size_t i = next_++; i < files_.size() && !SignalDelay::IsSignalPending(); i = next_++) {
            try {
                CompileIfChanged(files_[i]);
            } catch (const std::exception& failure) {
                progress_.ReportFailure(MessageOf(failure));
            }
        }
    }

    void CompileIfChanged(const fs::path& file) {
        const fs::path source = from_ / file;
        const fs::path target = to_ / file;
        const auto time = fs::last_write_time(source);
        std::error_code absent;
        const bool is_changed = is_forced_ || fs::last_write_time(target, absent) != time || absent;
        // Links may lead from either folder into the other.
        if (fs::equivalent(source, target, absent)) {
            throw Failure(source.string(), "would be replaced by its own compiled form");
        }
        if (!is_changed) return progress_.ReportUnchanged(file.string());
        fs::create_directories(target.parent_path());
        CompileFile(source.string(), target.string(),
                    [this](const std::string& warning) { progress_.ReportWarning(warning); });
        fs::last_write_time(target, time);
        progress_.ReportCompiled(file.string(), fs::file_size(source), fs::file_size(target));
    }

    const fs::path from_, to_;
    const bool is_forced_;
    const std::vector<fs::path> files_;
    std::atomic<std::size_t> next_{0};
    CompileProgress progress_;
};

} // namespace

int CompileFolder(const std::string& from, const std::string& to, const CompileFolderOptions& options) {
    if (!fs::is_directory(from)) throw Failure(from, "is not a folder");
    const auto start = std::chrono::steady_clock::now();
    std::error_code absent;
    if (fs::equivalent(from, to, absent)) throw Failure(to, "holds the sources, which would be replaced");
    FoundFiles found = FindFiles(from, to, options.pattern);
    const std::size_t count = found.files.size();
    const CompileTotals totals = FolderCompiler(from, to, options.is_forced, std::move(found)).Run();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%zu files: %zu compiled, %zu unchanged, %zu failed; %ju bytes in, %ju bytes out, %.2f s\n", count,
                totals.compiled, totals.unchanged, totals.failed, totals.bytes_in, totals.bytes_out, time.count());
    return totals.failed == 0 ? kSucceeded : kFailed;
}

} // namespace Command
