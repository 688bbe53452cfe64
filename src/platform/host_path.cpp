// Matching a path's names without regard to case. A match has as many bytes as the name that it matches, so the host's
// path is made in place: in one copy of the path, each name is replaced by its match.
//
// Invariant: everything before the name that is being matched is already the host's path, so it names the folder to
// search. A matched name is final: if the names of two folders differ in case only, the second is never searched.

#include "platform/host_path.h"

#if defined(_WIN32)

namespace Tessarin {

char* HostPath(const char*) { return nullptr; }

} // namespace Tessarin

#else

#include "platform/ascii.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

namespace Tessarin {
namespace {

bool SameButForCase(const char* name, const char* other) {
    while (*name != '\0' && LowerCase(*name) == LowerCase(*other)) {
        ++name;
        ++other;
    }
    return *name == '\0' && *other == '\0';
}

bool IsFixed(const char* name) { return *name == '\0' || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0; }

/// The folder in which to look up `name`, which is a part of `path`.
DIR* OpenFolder(char* path, char* name) {
    if (name == path) return opendir(".");
    const char first = *name;
    *name = '\0';
    DIR* folder = opendir(path);
    *name = first;
    return folder;
}

/// Replaces `name` by a name in its folder that equals it except for case; if there are several, by the first in byte
/// order. Every candidate is `name` in another case, so when one has replaced it the others still match.
bool MatchInFolder(DIR* folder, char* name) {
    bool found = false;
    for (const dirent* entry = readdir(folder); entry != nullptr; entry = readdir(folder)) {
        if (!SameButForCase(name, entry->d_name) || (found && std::strcmp(entry->d_name, name) >= 0)) continue;
        std::memcpy(name, entry->d_name, std::strlen(name));
        found = true;
    }
    return found;
}

/// Replaces `name`, which `path` ends with at this moment, by the host's name. False if there is no match.
bool MatchName(char* path, char* name) {
    struct stat ignored;
    if (IsFixed(name) || lstat(path, &ignored) == 0) return true;
    DIR* folder = OpenFolder(path, name);
    if (folder == nullptr) return false;
    const bool found = MatchInFolder(folder, name);
    closedir(folder);
    return found;
}

bool MatchNames(char* path) {
    for (char* name = path;;) {
        char* separator = std::strchr(name, '/');
        if (separator == nullptr) return MatchName(path, name);
        *separator = '\0';
        const bool found = MatchName(path, name);
        *separator = '/';
        if (!found) return false;
        name = separator + 1;
    }
}

} // namespace

char* HostPath(const char* path) {
    if (std::strchr(path, '\\') == nullptr) return nullptr;
    const std::size_t length = std::strlen(path);
    auto* host = static_cast<char*>(std::malloc(length + 1));
    if (host == nullptr) return nullptr;
    std::memcpy(host, path, length + 1);
    std::replace(host, host + length, '\\', '/');
    if (MatchNames(host)) return host;
    std::free(host);
    return nullptr;
}

} // namespace Tessarin

#endif
