// The temporary file is in the target's folder, as a file can't be renamed to another file system. Its name begins with
// a dot, so that a command that works on the whole folder skips it.

#include "tools/atomic_output_file.h"

#include "tools/failure.h"
#include "tools/file_stream.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace Command {

namespace {

namespace fs = std::filesystem;

// The file to which a chain of links leads. A link may point to a file that doesn't exist yet.
std::string FollowLinks(const std::string& name) {
    fs::path path = name;
    for (int links = 0; links < 40 && fs::is_symlink(path); ++links) path = path.parent_path() / fs::read_symlink(path);
    if (fs::is_symlink(path)) throw Failure(name, "is a link that leads through too many others");
    return path.string();
}

// Whether the name is one that the system gives to a process's open files: not all of these links can be followed.
bool IsOpenFile(const std::string& name) {
    return name.rfind("/dev/fd/", 0) == 0 || name.rfind("/dev/std", 0) == 0 || name.rfind("/proc/", 0) == 0;
}

// Whether the name means standard output. If /dev/stdout were replaced, so would be the file to which a shell has
// redirected it.
bool IsStandardOutput(const std::string& name) { return IsDash(name) || name == "/dev/stdout"; }

} // namespace

AtomicOutputFile::AtomicOutputFile(const std::string& target) : name_(IsDash(target) ? "standard output" : target) {
    if (!IsStandardOutput(target)) target_ = IsOpenFile(target) ? target : FollowLinks(target);
    std::error_code absent;
    const bool exists = !target_.empty() && fs::exists(target_, absent);
    if (exists && fs::is_directory(target_)) throw Failure(target, "is a folder");
    is_renamed_ = !target_.empty() && !IsOpenFile(target) && (!exists || fs::is_regular_file(target_));
    if (!is_renamed_) {
        file_.CreatePrivate(name_);
        return;
    }
    // The temporary file's name isn't made from the target's name, which may already have the maximum length.
    file_.Create((fs::path(target_).parent_path() / ".tessarin").string(), name_);
    if (!exists) return;
    std::error_code ignored; // another owner's file is still replaced, as the folder allows it
    fs::permissions(Path(), fs::status(target_).permissions(), ignored);
}

void AtomicOutputFile::Write(std::string_view text) const {
    Stream stream = OpenStream(Path(), "wb", name_);
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
    if (!is_written || std::fclose(stream.release()) != 0) FailWithError(name_, errno);
}

void AtomicOutputFile::Commit() {
    if (!is_renamed_) {
        const Stream from = OpenStream(Path(), "rb", name_);
        const Stream to = target_.empty() ? nullptr : OpenStream(target_, "wb", name_);
        CopyStream(from.get(), Path(), to ? to.get() : stdout, name_);
        return;
    }
    std::error_code error;
    fs::rename(Path(), target_, error);
    if (error) throw Failure(name_, error.message());
    file_.Release();
}

} // namespace Command
