// The draft is in the target's folder, as a file can't be renamed to another file system. Its name begins with a dot,
// so that a command that works on the whole folder skips it, and carries the target's name, so that the next command on
// that target finds it if it is dead.

#include "tools/atomic_output_file.h"

#include "tools/failure.h"
#include "tools/file_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace Command {

namespace {

namespace fs = std::filesystem;

// Whether the name is one that the system gives to a process's open files: what they lead to isn't replaced.
bool IsOpenFile(const std::string& name) {
    return name.rfind("/dev/fd/", 0) == 0 || name.rfind("/dev/std", 0) == 0 || name.rfind("/proc/", 0) == 0;
}

// Whether the name means standard output. If /dev/stdout were replaced, so would be the file to which a shell has
// redirected it.
bool IsStandardOutput(const std::string& name) { return IsDash(name) || name == "/dev/stdout"; }

Target FindTarget(const std::string& name) {
    Target target;
    if (IsStandardOutput(name)) return target;
    if (!IsOpenFile(name)) return OpenTarget(name);
    target.path = name;
    return target;
}

// Targets whose long names begin alike share one draft: their commands work one after the other.
std::string DraftOf(const std::string& target) {
    constexpr std::size_t kLongest = 255 - sizeof ".tessarin." - sizeof ".4294967295"; // of what most systems allow
    std::string name = fs::path(target).filename().string();
    std::size_t end = std::min(name.size(), kLongest);
    while (end < name.size() && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80) --end; // whole characters
    name.resize(end);
    return (fs::path(target).parent_path() / (".tessarin." + name)).string();
}

} // namespace

AtomicOutputFile::AtomicOutputFile(const std::string& target)
    : name_(IsDash(target) ? "standard output" : target), target_(FindTarget(target)) {
    if (target_.kind == Target::Kind::Folder) throw Failure(target, "is a folder");
    if (target_.is_made) made_.Manage({{}, target_.path});
    if (target_.kind == Target::Kind::Other) {
        draft_.CreatePrivate(name_);
    } else {
        draft_.Manage(CreateDraft(DraftOf(target_.path), name_));
    }
}

void AtomicOutputFile::Write(std::string_view text) const {
    Stream stream = OpenStream(Path(), "wb", name_);
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
    if (!is_written || std::fclose(stream.release()) != 0) FailWithError(name_, errno);
}

void AtomicOutputFile::Commit() {
    if (target_.kind == Target::Kind::Other) {
        const Stream from = OpenStream(Path(), "rb", name_);
        const Stream to = target_.path.empty() ? nullptr : OpenStream(target_.path, "wb", name_);
        return CopyStream(from.get(), Path(), to ? to.get() : stdout, name_);
    }
    made_.Release(); // from now on a signal must not remove it, as its name becomes that of the content
    PutInPlace(draft_.Created(), target_, name_);
    draft_.Release();
}

} // namespace Command
