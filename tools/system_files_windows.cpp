// The lock of a target is a mutex of the system named after the file's final path, as a file can't be replaced while it
// is open here. The lock of a draft is the open draft itself: opening it for this process alone fails as long as its
// writer lives. Both end with the process, however it ends.

#include "tools/system_files.h"

#include "tools/failure.h"
#include "tools/signals.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <system_error>
#include <thread>

namespace Command {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE HandleOf(const HeldFile& file) { return reinterpret_cast<HANDLE>(file.Handle()); }
HeldFile Hold(HANDLE handle) { return HeldFile(reinterpret_cast<std::intptr_t>(handle)); }

[[noreturn]] void Fail(const std::string& name, DWORD error) {
    throw Failure(name, std::system_category().message(static_cast<int>(error)));
}

// Tries until it succeeds, for a minute at most. Throws Failure after that, or when the process is to end.
template <class Try>
void WaitUntil(const std::string& name, Try succeeds) {
    using namespace std::chrono_literals;
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!succeeds()) {
        if (std::chrono::steady_clock::now() > end || SignalDelay::IsSignalPending()) {
            throw Failure(name, "is in use by another process");
        }
        std::this_thread::sleep_for(5ms);
    }
}

// ------------------------------------------------------------------------------------------------------------- targets

// Opens a file only to ask about it, which disturbs nobody.
HeldFile OpenToAsk(const std::string& name) {
    HeldFile file = Hold(CreateFileA(name.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    const DWORD error = file ? ERROR_SUCCESS : GetLastError();
    if (file || error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return file;
    Fail(name, error);
}

// The path of an open file without links, or of a file that is missing.
std::string PathOf(const HeldFile& file, const std::string& name) {
    char path[32768];
    const DWORD size = file ? GetFinalPathNameByHandleA(HandleOf(file), path, sizeof path, FILE_NAME_NORMALIZED)
                            : GetFullPathNameA(name.c_str(), sizeof path, path, nullptr);
    if (size == 0 || size >= sizeof path) Fail(name, GetLastError());
    const std::string found(path, size);
    return found.rfind("\\\\?\\", 0) == 0 && found[5] == ':' ? found.substr(4) : found;
}

// Paths that differ in case only are one file. Two files whose hashes are equal merely wait for each other.
HeldFile LockPath(std::string path, const std::string& name) {
    CharLowerA(path.data());
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (const char c : path) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    const std::string mutex_name = "Global\\tessarin-" + std::to_string(hash);
    HANDLE const mutex = CreateMutexA(nullptr, FALSE, mutex_name.c_str());
    if (!mutex) Fail(name, GetLastError());
    HeldFile lock = Hold(mutex);
    WaitUntil(name, [mutex] { return WaitForSingleObject(mutex, 0) != WAIT_TIMEOUT; });
    return lock;
}

// -------------------------------------------------------------------------------------------------------------- drafts

// The description of an access list with which only the user of this process may do anything.
std::string PrivateAccess(const std::string& name) {
    alignas(TOKEN_USER) char user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = 0;
    HANDLE token = nullptr;
    char* text = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) Fail(name, GetLastError());
    const HeldFile held = Hold(token);
    if (!GetTokenInformation(token, TokenUser, user, sizeof user, &size) ||
        !ConvertSidToStringSidA(reinterpret_cast<const TOKEN_USER*>(user)->User.Sid, &text)) {
        Fail(name, GetLastError());
    }
    const std::string access = std::string("D:P(A;;FA;;;") + text + ')';
    LocalFree(text);
    return access;
}

// Creates a file that nobody else can open. The object is empty if the path is taken.
HeldFile CreateExclusively(const std::string& path, const std::string& name) {
    SECURITY_ATTRIBUTES access{sizeof access, nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(PrivateAccess(name).c_str(), SDDL_REVISION_1,
                                                              &access.lpSecurityDescriptor, nullptr)) {
        Fail(name, GetLastError());
    }
    HANDLE const file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, &access, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    const DWORD error = GetLastError();
    LocalFree(access.lpSecurityDescriptor);
    if (file == INVALID_HANDLE_VALUE && error != ERROR_FILE_EXISTS) Fail(name, error);
    return Hold(file);
}

// Waits until the draft at the path is finished, and removes it if it is dead.
// returns  whether the path may be free now
bool RemoveDeadDraft(const std::string& path, const std::string& name) {
    DWORD error = 0;
    WaitUntil(name, [&] {
        const HeldFile draft = Hold(CreateFileA(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
        error = draft ? ERROR_SUCCESS : GetLastError();
        return error != ERROR_SHARING_VIOLATION;
    });
    return error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND;
}

// Gives a new file the access that its folder gives to all files in it.
bool InheritAccess(std::string path) {
    ACL none{};
    if (!InitializeAcl(&none, sizeof none, ACL_REVISION)) return false;
    return SetNamedSecurityInfoA(path.data(), SE_FILE_OBJECT,
                                 DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                 &none, nullptr) == ERROR_SUCCESS;
}

} // namespace

HeldFile::~HeldFile() {
    if (handle_ == -1) return;
    ReleaseMutex(HandleOf(*this)); // fails for what isn't a mutex
    CloseHandle(HandleOf(*this));
}

Target OpenTarget(const std::string& name) {
    const DWORD attributes = GetFileAttributesA(name.c_str());
    const bool is_found = attributes != INVALID_FILE_ATTRIBUTES;
    for (;;) {
        Target target;
        target.path = name;
        target.kind = Target::Kind::Folder;
        if (is_found && (attributes & FILE_ATTRIBUTE_DIRECTORY)) return target;
        const HeldFile found = OpenToAsk(name);
        target.kind = Target::Kind::Other;
        if (found && GetFileType(HandleOf(found)) != FILE_TYPE_DISK) return target;
        // A missing file is locked, too: a replacement takes the old file away before it puts the new one there.
        target.path = PathOf(found, name);
        target.lock = LockPath(target.path, name);
        const HeldFile file = OpenToAsk(name);
        target.kind = file ? Target::Kind::Regular : Target::Kind::Missing;
        if (PathOf(file, name) == target.path) return target;
    }
}

std::string PathToWrite(const CreatedFile& created) { return created.path; }

void Remove(const CreatedFile& created) { std::remove(created.path.c_str()); }

CreatedFile CreatePrivateFile(const std::string& stem, const std::string& name) {
    std::random_device random;
    for (;;) {
        const std::string path = stem + '.' + std::to_string(random());
        CreatedFile created{CreateExclusively(path, name), path};
        if (created.file) return created;
    }
}

CreatedFile CreateDraft(const std::string& path, const std::string& name) {
    for (;;) {
        CreatedFile created{CreateExclusively(path, name), path};
        if (created.file) return created;
        if (!RemoveDeadDraft(path, name)) return CreatePrivateFile(path, name);
    }
}

void PutInPlace(CreatedFile& draft, const Target& target, const std::string& name) {
    const char* const from = draft.path.c_str();
    const char* const to = target.path.c_str();
    const bool is_new = target.kind == Target::Kind::Missing;
    if (!FlushFileBuffers(HandleOf(draft.file))) Fail(name, GetLastError());
    if (is_new && !InheritAccess(draft.path)) throw Failure(name, "can't be given its folder's access");
    draft.file = HeldFile(); // the system replaces a file only by one that nobody has open
    DWORD error = 0;
    WaitUntil(name, [&] { // for those who are just reading the target
        // The system's own replacement keeps the target's attributes and access list.
        const bool is_put = is_new ? MoveFileExA(from, to, MOVEFILE_WRITE_THROUGH) != 0
                                   : ReplaceFileA(to, from, nullptr, 0, nullptr, nullptr) != 0;
        error = is_put ? ERROR_SUCCESS : GetLastError();
        return error != ERROR_SHARING_VIOLATION;
    });
    if (error == ERROR_SUCCESS) return;
    if (is_new && (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS)) {
        throw Failure(name, "is not written: another program has created it");
    }
    Fail(name, error);
}

} // namespace Command
