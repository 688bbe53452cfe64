// Everything about files that the command asks of the operating system itself: locks, private files, owners, and how
// one file takes another's place. system_files_posix.cpp and system_files_windows.cpp implement it, one for each
// system.
//
// Invariants, on which the rest of the command builds:
// - A target is locked from before it is read until its replacement is in its place, so commands on one file work one
//   after the other. The lock belongs to the file, not to its name: a command that waited opens the name again.
// - A draft is locked by the process that writes it. A draft without a lock is dead, and the next command removes it.
// - Links are followed by the system's own open, which refuses links of others in shared folders; a path is used only
//   if it names the file that was opened.

#ifndef TESSARIN_TOOLS_SYSTEM_FILES_H
#define TESSARIN_TOOLS_SYSTEM_FILES_H

#include <cstdint>
#include <string>
#include <utility>

namespace Command {

/// Holds what keeps a file open or locked; the destructor gives it up and keeps errno.
class HeldFile {
public:
    HeldFile() = default;
    explicit HeldFile(std::intptr_t handle) : handle_(handle) {}
    ~HeldFile();
    HeldFile(HeldFile&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    HeldFile& operator=(HeldFile&& other) noexcept {
        const HeldFile given_up(std::move(*this));
        handle_ = std::exchange(other.handle_, -1);
        return *this;
    }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    explicit operator bool() const { return handle_ != -1; }
    /// A file descriptor or a HANDLE.
    [[nodiscard]] std::intptr_t Handle() const { return handle_; }

private:
    std::intptr_t handle_ = -1;
};

/// What the name of an output leads to.
struct Target {
    enum class Kind { Missing, Regular, Folder, Other };
    Kind kind = Kind::Other;
    std::string path;     // of a Regular: without links; otherwise the name
    HeldFile lock;        // of a Regular
    bool is_made = false; // the name is a link that led nowhere, and an empty file was created where it leads
};

/// A temporary file that this process has created.
struct CreatedFile {
    HeldFile file;
    std::string path;
};

/// A path that leads to the open file itself, even if somebody who may write in the folder has put another one at the
/// file's own path. Where the system has no such paths (/proc on Linux), the file's own.
std::string PathToWrite(const CreatedFile& created);

/// Removes the file, unless it is open and its path leads to another one by now.
void Remove(const CreatedFile& created);

/// Opens and locks the file that an output will replace. Waits while another process has the lock; throws Failure if
/// that takes a minute, or if the file can't be opened.
Target OpenTarget(const std::string& name);

/// Creates an empty file that only its owner can open, with a name that no other file has. Throws Failure, whose
/// message calls the file `name`. stem  the path up to a number that makes it unique
CreatedFile CreatePrivateFile(const std::string& stem, const std::string& name);

/// Creates the draft of a target, which only its owner can open. There is one draft a target: a dead one is removed,
/// and the end of another process that writes one is waited for. Throws Failure, whose message calls the file `name`.
/// path  where the draft is to be; if something else is in the way, or a file of another user, it gets a number, too
CreatedFile CreateDraft(const std::string& path, const std::string& name);

/// Puts a draft in its target's place, with the target's owner, mode and access list as far as the system allows;
/// neither setuid nor setgid stays. A Missing target is created, never replaced. Both the content and the name are on
/// the disk afterwards, and the draft has no path any more. The draft may be closed by then. Throws Failure, whose
/// message calls the file `name`, if that can't be done, or if the target has been replaced by a program that doesn't
/// lock.
void PutInPlace(CreatedFile& draft, const Target& target, const std::string& name);

} // namespace Command

#endif
