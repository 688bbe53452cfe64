// Files are made with the `x` of fopen, so that no other process's is ever taken for one's own. A draft lies in its
// target's folder, as a rename doesn't reach over to another file system; it is hidden, so that no other command takes
// it for a file of the folder's. What a signal would leave behind is removed by its handler.

#include "tools/files.h"

#include "tools/failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

namespace Command {

namespace {

namespace fs = std::filesystem;

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Closer>;

[[noreturn]] void Fail(const std::string& name, int error) {
    throw Failure(name, std::generic_category().message(error));
}

// The files that are removed if a signal ends the process. Whoever takes a path out of its place owns it, so that the
// handler and the end of an object never meet. More than there are places for are left behind.
std::atomic<char*> passing_files[256];

std::atomic<bool> is_delayed{false};
std::atomic<int> delayed_signal{0};

extern "C" void EndBySignal(int signal) {
    if (is_delayed.exchange(false)) { // a second signal ends the process at once
        delayed_signal = signal;
        std::signal(signal, EndBySignal); // which some systems forget by now
        return;
    }
    for (std::atomic<char*>& place : passing_files) {
        if (char* const path = place.exchange(nullptr)) std::remove(path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void SetHandlers() {
    constexpr int kSignals[] = {
        SIGINT,
        SIGTERM,
#ifdef SIGHUP
        SIGHUP,
        SIGPIPE,
#endif
    };
    for (const int signal : kSignals) {
        if (std::signal(signal, EndBySignal) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is a failed write, like a full disk
#endif
}

void HandleSignals() {
    static const bool is_set = (SetHandlers(), true);
    static_cast<void>(is_set);
}

// A new, empty file whose name begins with `stem`.
std::string MakeFile(const std::string& stem, const std::string& name) {
    std::random_device random;
    for (;;) {
        std::string path = stem + '.' + std::to_string(random());
        if (const Stream made{std::fopen(path.c_str(), "wbx")}) return path;
        if (errno != EEXIST) Fail(name, errno);
    }
}

// What passes through it may be private: the file is closed to others before anything is in it.
std::string MakeTemporaryFile(const std::string& name) {
    std::string path = MakeFile((fs::temp_directory_path() / "tessarin").string(), name);
    std::error_code ignored; // not every file system knows owners
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, ignored);
    return path;
}

// A file that doesn't exist yet may be named by a link to where it shall be.
std::string FollowLinks(const std::string& name) {
    fs::path path = name;
    for (int links = 0; links < 40 && fs::is_symlink(path); ++links) path = path.parent_path() / fs::read_symlink(path);
    if (fs::is_symlink(path)) throw Failure(name, "leads from link to link without end");
    return path.string();
}

// The files that a process has open, by the names that a system gives them: links that can't all be followed.
bool IsOpenFile(const std::string& name) {
    return name.rfind("/dev/fd/", 0) == 0 || name.rfind("/dev/std", 0) == 0 || name.rfind("/proc/", 0) == 0;
}

void Copy(std::FILE* from, const std::string& from_name, std::FILE* to, const std::string& to_name) {
    std::vector<char> buffer(1 << 16);
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), from)) {
        if (std::fwrite(buffer.data(), 1, size, to) != size) Fail(to_name, errno);
    }
    if (std::ferror(from)) Fail(from_name, errno);
    if (std::fflush(to) != 0) Fail(to_name, errno);
}

Stream Open(const std::string& path, const char* mode, const std::string& name) {
    Stream stream(std::fopen(path.c_str(), mode));
    if (!stream) Fail(name, errno);
    return stream;
}

bool IsDash(const std::string& name) { return name == "-"; }

// To replace /dev/stdout would be to replace the file that a shell has sent it to.
bool IsOutput(const std::string& name) { return IsDash(name) || name == "/dev/stdout"; }

} // namespace

SignalDelay::SignalDelay() {
    HandleSignals();
    is_delayed = true;
}

SignalDelay::~SignalDelay() {
    is_delayed = false;
    if (HasCome()) std::raise(delayed_signal);
}

bool SignalDelay::HasCome() { return delayed_signal != 0; }

void PassingFile::Begin(std::string path) {
    HandleSignals();
    path_ = std::move(path);
    char* const copy = static_cast<char*>(std::malloc(path_.size() + 1));
    if (!copy) return;
    std::memcpy(copy, path_.c_str(), path_.size() + 1);
    for (std::atomic<char*>& place : passing_files) {
        char* none = nullptr;
        if (!place.compare_exchange_strong(none, copy)) continue;
        place_ = &place;
        return;
    }
    std::free(copy);
}

void PassingFile::Keep() {
    if (place_) std::free(place_->exchange(nullptr));
    place_ = nullptr;
    path_.clear();
}

PassingFile::~PassingFile() {
    if (!path_.empty()) std::remove(path_.c_str());
    Keep();
}

Input::Input(const std::string& name) : name_(IsDash(name) ? "standard input" : name), path_(name) {
    std::error_code error;
    if (!IsDash(name) && fs::is_directory(name, error)) throw Failure(name, "is a folder");
    // Opened once: whoever writes into a pipe would take a reader that closes it for the last one.
    const Stream from = IsDash(name) ? nullptr : Open(name, "rb", name);
    if (from && fs::is_regular_file(name, error)) return;
    path_ = MakeTemporaryFile(name_);
    copy_.Begin(path_);
    const Stream to = Open(path_, "wb", path_);
    Copy(from ? from.get() : stdin, name_, to.get(), path_);
}

std::uintmax_t Input::Size() const { return fs::file_size(path_); }

Draft::Draft(const std::string& target) : name_(IsDash(target) ? "standard output" : target) {
    if (!IsOutput(target)) target_ = IsOpenFile(target) ? target : FollowLinks(target);
    std::error_code absent;
    const bool is_there = !target_.empty() && fs::exists(target_, absent);
    if (is_there && fs::is_directory(target_)) throw Failure(target, "is a folder");
    is_renamed_ = !target_.empty() && !IsOpenFile(target) && (!is_there || fs::is_regular_file(target_));
    // A short name of its own, as the target's may be as long as names can be.
    const std::string stem = (fs::path(target_).parent_path() / ".tessarin").string();
    path_ = is_renamed_ ? MakeFile(stem, name_) : MakeTemporaryFile(name_);
    file_.Begin(path_);
    if (!is_renamed_ || !is_there) return;
    std::error_code ignored; // a file of another owner's is still replaced, as the folder allows it
    fs::permissions(path_, fs::status(target_).permissions(), ignored);
}

void Draft::Write(std::string_view text) const {
    Stream stream = Open(path_, "wb", name_);
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
    if (!is_written || std::fclose(stream.release()) != 0) Fail(name_, errno);
}

void Draft::Keep() {
    if (!is_renamed_) {
        const Stream from = Open(path_, "rb", name_);
        const Stream to = target_.empty() ? nullptr : Open(target_, "wb", name_);
        Copy(from.get(), path_, to ? to.get() : stdout, name_);
        return;
    }
    std::error_code error;
    fs::rename(path_, target_, error);
    if (error) throw Failure(name_, error.message());
    file_.Keep();
}

} // namespace Command
