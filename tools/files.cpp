// Files are made with the `x` of fopen, so that no other process's is ever taken for one's own. A draft lies in its
// target's folder, as a rename doesn't reach over to another file system.

#include "tools/files.h"

#include "tools/failure.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>
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

// A new, empty file whose name begins with `stem`.
std::string MakeFile(const std::string& stem, const std::string& name) {
    std::random_device random;
    for (;;) {
        std::string path = stem + '.' + std::to_string(random());
        if (const Stream made{std::fopen(path.c_str(), "wbx")}) return path;
        if (errno != EEXIST) Fail(name, errno);
    }
}

std::string MakeTemporaryFile(const std::string& name) {
    return MakeFile((fs::temp_directory_path() / "tessarin").string(), name);
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

} // namespace

Input::Input(const std::string& name) : name_(IsDash(name) ? "standard input" : name), path_(name) {
    if (!IsDash(name)) {
        if (fs::is_directory(name)) throw Failure(name, "is a folder");
        const Stream readable = Open(name, "rb", name);
        if (fs::is_regular_file(name)) return;
    }
    const Stream from = IsDash(name) ? nullptr : Open(name, "rb", name);
    path_ = MakeTemporaryFile(name_);
    is_copy_ = true;
    try {
        const Stream to = Open(path_, "wb", path_);
        Copy(from ? from.get() : stdin, name_, to.get(), path_);
    } catch (...) {
        std::remove(path_.c_str());
        throw;
    }
}

Input::~Input() {
    if (is_copy_) std::remove(path_.c_str());
}

std::uintmax_t Input::Size() const { return fs::file_size(path_); }

Draft::Draft(const std::string& target) : name_(IsDash(target) ? "standard output" : target), target_(target) {
    const bool is_there = !IsDash(target) && fs::exists(target);
    if (is_there && fs::is_directory(target)) throw Failure(target, "is a folder");
    if (is_there) target_ = fs::canonical(target).string();
    is_renamed_ = !IsDash(target) && (!is_there || fs::is_regular_file(target_));
    path_ = is_renamed_ ? MakeFile(target_, name_) : MakeTemporaryFile(name_);
    if (!is_renamed_ || !is_there) return;
    std::error_code ignored; // a file of another owner's is still replaced, as the folder allows it
    fs::permissions(path_, fs::status(target_).permissions(), ignored);
}

Draft::~Draft() {
    if (!path_.empty()) std::remove(path_.c_str());
}

void Draft::Write(std::string_view text) const {
    Stream stream = Open(path_, "wb", name_);
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
    if (!is_written || std::fclose(stream.release()) != 0) Fail(name_, errno);
}

void Draft::Keep() {
    if (!is_renamed_) {
        const Stream from = Open(path_, "rb", name_);
        const Stream to = IsDash(target_) ? nullptr : Open(target_, "wb", name_);
        Copy(from.get(), path_, to ? to.get() : stdout, name_);
        return;
    }
    std::error_code error;
    fs::rename(path_, target_, error);
    if (error) throw Failure(name_, error.message());
    path_.clear();
}

} // namespace Command
