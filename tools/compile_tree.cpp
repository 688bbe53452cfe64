// Workers take the next file from a shared counter, each with a file object of its own; the interned strings are the
// only thing that they share. The times of sources and targets are compared for being equal, not for order: a source
// that was put back to an old state is a change, too.

#include "tools/compile_tree.h"

#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/terminal.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace Command {

namespace {

namespace fs = std::filesystem;

// Whether a name fits a pattern; each `*` is tried at its shortest, and only the last one is ever tried again.
bool Fits(std::string_view name, std::string_view pattern) {
    std::size_t at = 0, in = 0, star = std::string_view::npos, tried = 0;
    while (at < name.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            tried = at;
        } else if (in < pattern.size() && (pattern[in] == '?' || pattern[in] == name[at])) {
            ++in, ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++tried;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + static_cast<std::ptrdiff_t>(in), pattern.end(),
                       [](char c) { return c == '*'; });
}

struct Listing {
    std::vector<fs::path> files;     // from the folder on
    std::vector<fs::path> folders;   // still to be listed
    std::vector<std::string> faults; // what couldn't be looked at; it doesn't stop the rest
};

// Links to files are followed, links to folders are not: they may lead in circles.
void Sort(Listing& listing, const fs::directory_entry& entry, const fs::path& way, const fs::path& target,
          const std::string& pattern) {
    const std::string name = entry.path().filename().string();
    std::error_code error;
    if (name.front() == '.') return;
    if (!entry.is_symlink(error) && entry.is_directory(error)) {
        if (!fs::equivalent(entry.path(), target, error)) listing.folders.push_back(way);
    } else if (Fits(name, pattern) && entry.is_regular_file(error)) {
        listing.files.push_back(way);
    }
}

Listing ListFiles(const fs::path& folder, const fs::path& target, const std::string& pattern) {
    Listing listing;
    listing.folders.emplace_back();
    while (!listing.folders.empty()) {
        const fs::path below = std::move(listing.folders.back());
        listing.folders.pop_back();
        const fs::path whole = below.empty() ? folder : folder / below;
        std::error_code error;
        for (fs::directory_iterator it(whole, error), end; !error && it != end; it.increment(error)) {
            Sort(listing, *it, below / it->path().filename(), target, pattern);
        }
        if (error) listing.faults.push_back(whole.string() + ": " + error.message());
    }
    std::sort(listing.files.begin(), listing.files.end());
    return listing;
}

struct Tally {
    std::size_t compiled = 0, unchanged = 0, failed = 0;
    std::uintmax_t bytes_in = 0, bytes_out = 0;
};

class TreeCompiler {
public:
    TreeCompiler(fs::path from, fs::path to, bool is_forced, Listing listing)
        : from_(std::move(from)), to_(std::move(to)), is_forced_(is_forced), files_(std::move(listing.files)) {
        for (const std::string& fault : listing.faults) Fail(fault);
    }

    Tally Run() {
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        const SignalDelay delay;
        std::vector<std::thread> others;
        others.reserve(cores);
        try {
            while (others.size() + 1 < std::min(cores, files_.size())) others.emplace_back(&TreeCompiler::Work, this);
        } catch (const std::system_error&) {
            // The system gives no more threads: those that there are do all of the work.
        }
        Work();
        for (std::thread& worker : others) worker.join();
        if (has_bar_) std::fputs("\r\033[K", stdout);
        return tally_;
    }

private:
    void Work() {
        for (std::size_t i = next_++; i < files_.size() && !SignalDelay::HasCome(); i = next_++) {
            try {
                CompileOne(files_[i]);
            } catch (const std::exception& failure) {
                Fail(MessageOf(failure));
            }
        }
    }

    void Fail(const std::string& what) {
        const std::lock_guard lock(mutex_);
        ++tally_.failed;
        Say(stderr, "tessarin: " + what);
    }

    void CompileOne(const fs::path& file) {
        const fs::path source = from_ / file;
        const fs::path target = to_ / file;
        const auto time = fs::last_write_time(source);
        std::error_code absent;
        const bool is_changed = is_forced_ || fs::last_write_time(target, absent) != time || absent;
        // Links may lead from either folder into the other.
        if (fs::equivalent(source, target, absent))
            throw Failure(source.string(), "would be replaced by what it gives");
        if (is_changed) {
            fs::create_directories(target.parent_path());
            CompileFile(source.string(), target.string(), [this](const std::string& warning) {
                const std::lock_guard lock(mutex_);
                Say(stderr, "tessarin: " + warning);
            });
            fs::last_write_time(target, time);
        }
        const std::lock_guard lock(mutex_);
        ++(is_changed ? tally_.compiled : tally_.unchanged);
        if (is_changed) tally_.bytes_in += fs::file_size(source);
        if (is_changed) tally_.bytes_out += fs::file_size(target);
        if (is_changed && !has_bar_) Say(stdout, "compiled " + file.string());
        if (has_bar_) DrawBar(file.string());
    }

    // A whole line; on a terminal the bar makes room for it.
    void Say(std::FILE* out, const std::string& line) const {
        if (has_bar_) std::fputs("\r\033[K", stdout);
        std::fflush(stdout);
        std::fprintf(out, "%s\n", Printable(line).c_str());
    }

    void DrawBar(const std::string& name) const {
        constexpr std::size_t kWidth = 30;
        const std::size_t done = tally_.compiled + tally_.unchanged + tally_.failed;
        const std::size_t filled = done * kWidth / files_.size();
        const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
        // What is wider than a terminal couldn't be taken back: this fits into 80 columns with a million files.
        const std::string shown = name.size() <= 28 ? name : "..." + name.substr(name.size() - 25);
        std::printf("\r\033[K[%s] %zu/%zu %s", bar.c_str(), done, files_.size(), Printable(shown).c_str());
        std::fflush(stdout);
    }

    const fs::path from_, to_;
    const bool is_forced_;
    const bool has_bar_ = IsTerminal(stdout);
    const std::vector<fs::path> files_;
    std::atomic<std::size_t> next_{0};
    std::mutex mutex_; // of the tally and of what is printed
    Tally tally_;
};

} // namespace

ConfigFile SaveInto(const Draft& draft, const ConfigFile& file, Configure::FileFormat format) {
    const bool is_text = format == Configure::FORMAT_TEXT;
    if (!file->SaveAs(draft.Path().c_str(), format)) {
        throw Failure(draft.Name(), is_text ? "can't be written, or has a line that is too long for a text"
                                            : "can't be written, or a table or an array shares its key with another");
    }
    ConfigFile saved(CreateRLFile(nullptr));
    if (!saved || !saved->Load(draft.Path().c_str(), Configure::ACCESS_READ, format)) {
        throw Failure(draft.Name(), "can't be written so that it can be read again");
    }
    return saved;
}

void CompileFile(const std::string& from, const std::string& to, const Warn& warn) {
    const Input input(from);
    const ConfigFile file = OpenConfig(input);
    Draft draft(to);
    const ConfigFile saved = SaveInto(draft, file, Configure::FORMAT_BINARY);
    Compare(RootOf(file), RootOf(saved), [&](const Difference& found) {
        if (found.after) return;
        warn(Printable(input.Name() + ": warning: has " + found.way + " more than once; the last one counts"));
    });
    draft.Keep();
}

int CompileTree(const std::string& from, const std::string& to, const TreeJob& job) {
    if (!fs::is_directory(from)) throw Failure(from, "is no folder");
    const auto start = std::chrono::steady_clock::now();
    std::error_code absent;
    if (fs::equivalent(from, to, absent)) throw Failure(to, "holds the sources, which would be replaced");
    Listing listing = ListFiles(from, to, job.pattern);
    const std::size_t count = listing.files.size();
    const Tally tally = TreeCompiler(from, to, job.is_forced, std::move(listing)).Run();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%zu files: %zu compiled, %zu unchanged, %zu failed; %ju bytes in, %ju bytes out, %.2f s\n", count,
                tally.compiled, tally.unchanged, tally.failed, tally.bytes_in, tally.bytes_out, time.count());
    return tally.failed == 0 ? kDone : kFailed;
}

} // namespace Command
