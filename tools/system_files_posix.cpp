// Locks are those of flock: they end with the process, however it ends, and belong to an open file, so that two threads
// exclude each other, too. Whoever waits for a lock holds at most that of a target while waiting for that of a draft,
// and never the other way round, so nobody waits in a circle.
//
//     target   open -> lock -> does the name still lead to this file? no: open again
//     draft    create -> lock -> does the path still name this file?  no: create again
//
// Both questions are needed: between the first two steps another process may have replaced the target, or taken the new
// draft for a dead one.

#include "tools/system_files.h"

#include "tools/failure.h"
#include "tools/file_stream.h"
#include "tools/signals.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>
#include <thread>

namespace Command {

namespace {

namespace fs = std::filesystem;

constexpr int kSafely = O_CLOEXEC | O_NOCTTY | O_NONBLOCK; // no pipe or terminal that appears at the name does harm

int Descriptor(const HeldFile& file) { return static_cast<int>(file.Handle()); }

bool NamesFile(const std::string& path, const HeldFile& file, int flags = AT_SYMLINK_NOFOLLOW) {
    struct stat named {};
    struct stat held {};
    return fstatat(AT_FDCWD, path.c_str(), &named, flags) == 0 && fstat(Descriptor(file), &held) == 0 &&
           named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

// ------------------------------------------------------------------------------------------------------------- locking

// Locks an open file. Asks again and again rather than waiting in the system, so that a process that keeps its lock,
// for example of a file that it may only read, stops nobody for ever. returns  0; EWOULDBLOCK after a minute or when
// the process is to end; another error if the file takes no lock
int Lock(const HeldFile& file) {
    using namespace std::chrono_literals;
    auto pause = 1ms;
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (flock(Descriptor(file), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return errno;
        if (std::chrono::steady_clock::now() > end || SignalDelay::IsSignalPending()) return EWOULDBLOCK;
        std::this_thread::sleep_for(pause);
        pause = std::min<std::chrono::milliseconds>(pause * 2, 20ms);
    }
    return 0;
}

// Opens a file and locks it. Throws Failure if another process keeps the lock.
// returns  null if the file can't be opened, with the reason in errno. With `error` other than 0 the file is open, but
//          takes no lock: not every file system has them
HeldFile OpenLocked(const std::string& path, int flags, const std::string& name, int& error) {
    HeldFile file;
    // Only reading is tried first, as it disturbs nobody who watches the file. Some network file systems lock only a
    // file that is open for writing.
    for (const int access : {O_RDONLY, O_WRONLY}) {
        const int descriptor = open(path.c_str(), access | flags | kSafely, 0666);
        if (descriptor < 0 && errno == EACCES) continue;
        if (descriptor < 0) return {};
        file = HeldFile(descriptor);
        error = Lock(file);
        if (error == EWOULDBLOCK) throw Failure(name, "is in use by another process");
        if (error != EBADF) break;
    }
    if (!file) errno = EACCES;
    return file;
}

constexpr mode_t kPrivate = 0600;

HeldFile CreateExclusively(const std::string& path, mode_t mode) {
    return HeldFile(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
}

CreatedFile CreateUnique(const std::string& stem, const std::string& name, mode_t mode = kPrivate) {
    std::random_device random;
    for (;;) {
        CreatedFile created{{}, stem + '.' + std::to_string(random())};
        created.file = CreateExclusively(created.path, mode);
        if (created.file) return created;
        if (errno != EEXIST) FailWithError(name, errno);
    }
}

// Waits until the draft at the path is finished, and removes it if it is dead. Only a file of one's own is waited for:
// in a shared folder, another user could keep the lock of a file with that name.
// returns  whether the path may be free now
bool RemoveDeadDraft(const std::string& path, const std::string& name) {
    const HeldFile draft(open(path.c_str(), O_RDWR | O_NOFOLLOW | kSafely));
    if (!draft) return errno == ENOENT;
    struct stat found {};
    if (fstat(Descriptor(draft), &found) != 0 || !S_ISREG(found.st_mode) || found.st_uid != geteuid()) return false;
    const int error = Lock(draft);
    if (error == EWOULDBLOCK) throw Failure(name, "is in use by another process");
    return error == 0 && (!NamesFile(path, draft) || unlink(path.c_str()) == 0);
}

// ------------------------------------------------------------------------------------------------------------- opening

// What the name leads to, links included.
Target::Kind KindOf(const std::string& name, bool& is_dangling) {
    struct stat found {};
    if (stat(name.c_str(), &found) == 0) {
        if (S_ISDIR(found.st_mode)) return Target::Kind::Folder;
        return S_ISREG(found.st_mode) ? Target::Kind::Regular : Target::Kind::Other;
    }
    if (errno != ENOENT) FailWithError(name, errno);
    if (lstat(name.c_str(), &found) != 0) return Target::Kind::Missing;
    is_dangling = S_ISLNK(found.st_mode); // otherwise another program has just created a file
    return Target::Kind::Regular;
}

bool IsEmpty(const HeldFile& file) {
    struct stat found {};
    return fstat(Descriptor(file), &found) == 0 && found.st_size == 0;
}

// ----------------------------------------------------------------------------------------------------------- replacing

#ifdef __linux__
// A mode without the access list that belongs to it would mean something else: its group bits are the list's limit.
bool CopyAccessList(int from, int to) {
    constexpr const char* kName = "system.posix_acl_access";
    char list[1 << 16];
    const ssize_t size = fgetxattr(from, kName, list, sizeof list);
    if (size > 0) return fsetxattr(to, kName, list, static_cast<std::size_t>(size), 0) == 0;
    if (errno != ENODATA && errno != ENOTSUP) return false;
    return fremovexattr(to, kName) == 0 || errno == ENODATA || errno == ENOTSUP; // one that the folder gives to all
}
#else
bool CopyAccessList(int, int) { return true; }
#endif

// Gives the draft the owner and the mode of the target. Where the group or the access list can't be kept, what the
// group and all others may do is what both of them might.
void CopyAccess(const HeldFile& draft, const HeldFile& target, const std::string& name) {
    struct stat from {};
    struct stat to {};
    const int descriptor = Descriptor(draft);
    if (fstat(Descriptor(target), &from) != 0) FailWithError(name, errno);
    // Before the mode, so that a new owner never gets more than the final mode, and the old one nothing from then on.
    if (fchown(descriptor, from.st_uid, from.st_gid) != 0) {
        static_cast<void>(fchown(descriptor, static_cast<uid_t>(-1), from.st_gid) == 0); // only root gives files away
    }
    const bool has_list = CopyAccessList(Descriptor(target), descriptor);
    if (fstat(descriptor, &to) != 0) FailWithError(name, errno);
    mode_t mode = from.st_mode & 0777; // without setuid and setgid, which were meant for the old content
    if (!has_list || to.st_gid != from.st_gid) {
        const mode_t both = (mode >> 3) & mode & 07;
        mode = (mode & 0700) | both << 3 | both;
    }
    if (fchmod(descriptor, mode) != 0) FailWithError(name, errno);
}

// Gives the draft what the system gives to a new file beside it: the mask decides, or the folder's default access list.
void GiveAccessOfNewFile(const CreatedFile& draft, const std::string& name) {
    const CreatedFile example = CreateUnique(draft.path, name, 0666);
    unlink(example.path.c_str());
    CopyAccess(draft.file, example.file, name);
}

// Writes a file's content, or a folder's names, to the disk. Some file systems don't offer it.
void Synchronise(const HeldFile& file, const std::string& name) {
    if (fsync(Descriptor(file)) != 0 && errno != EINVAL && errno != ENOTSUP) FailWithError(name, errno);
}

// returns  0 or the error; EEXIST if the new name exists, but may not
int Rename(const char* from, const char* to, bool is_new) {
    if (!is_new) return std::rename(from, to) == 0 ? 0 : errno;
#ifdef RENAME_NOREPLACE
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno; // these say that the file system knows no such rename
#endif
    return link(from, to) == 0 && unlink(from) == 0 ? 0 : errno;
}

} // namespace

HeldFile::~HeldFile() {
    if (handle_ == -1) return;
    const int error = errno;
    close(static_cast<int>(handle_));
    errno = error;
}

Target OpenTarget(const std::string& name) {
    for (;;) {
        Target target;
        target.path = name;
        target.kind = KindOf(name, target.is_made);
        if (target.kind != Target::Kind::Regular) return target;
        int error = 0; // a file that takes no lock is replaced without one
        target.lock = OpenLocked(name, target.is_made ? O_CREAT : 0, name, error);
        if (!target.lock && errno == ENOENT && !target.is_made) continue; // removed meanwhile
        if (!target.lock) FailWithError(name, errno);
        target.is_made = target.is_made && IsEmpty(target.lock);
        std::error_code lost;
        target.path = fs::canonical(name, lost).string();
        if (!lost && NamesFile(target.path, target.lock)) return target;
        if (NamesFile(name, target.lock, 0)) throw Failure(name, "has no path by which it could be replaced");
    }
}

std::string PathToWrite(const CreatedFile& created) {
    const std::string path = "/proc/self/fd/" + std::to_string(Descriptor(created.file));
    return NamesFile(path, created.file, 0) ? path : created.path;
}

void Remove(const CreatedFile& created) {
    if (!created.file || NamesFile(created.path, created.file)) unlink(created.path.c_str());
}

CreatedFile CreatePrivateFile(const std::string& stem, const std::string& name) { return CreateUnique(stem, name); }

CreatedFile CreateDraft(const std::string& path, const std::string& name) {
    for (;;) {
        CreatedFile created{CreateExclusively(path, kPrivate), path};
        if (created.file) {
            if (Lock(created.file) == EWOULDBLOCK) throw Failure(name, "is in use by another process");
            if (NamesFile(path, created.file)) return created;
            continue;
        }
        if (errno != EEXIST) FailWithError(name, errno);
        if (!RemoveDeadDraft(path, name)) return CreateUnique(path, name);
    }
}

void PutInPlace(CreatedFile& draft, const Target& target, const std::string& name) {
    const bool is_new = target.kind == Target::Kind::Missing;
    if (is_new) {
        GiveAccessOfNewFile(draft, name);
    } else {
        CopyAccess(draft.file, target.lock, name);
    }
    Synchronise(draft.file, name);
    if (!NamesFile(draft.path, draft.file) || (!is_new && !NamesFile(target.path, target.lock))) {
        throw Failure(name, "is not written: another program has replaced it");
    }
    const int error = Rename(draft.path.c_str(), target.path.c_str(), is_new);
    if (error == EEXIST) throw Failure(name, "is not written: another program has created it");
    if (error != 0) FailWithError(name, error);
    draft.path.clear(); // whatever has that name from now on is another's
    const fs::path folder = fs::path(target.path).parent_path();
    const HeldFile names(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (names) Synchronise(names, name); // some folders may be changed, but not opened
}

} // namespace Command
