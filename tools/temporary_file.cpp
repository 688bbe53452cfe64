// Files are created with the `x` of fopen, so that a file of another process is never mistaken for our own.

#include "tools/temporary_file.h"

#include "tools/file_stream.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

namespace Command {

namespace {

namespace fs = std::filesystem;

std::string CreateUniqueFile(const std::string& stem, const std::string& name) {
    std::random_device random;
    for (;;) {
        std::string path = stem + '.' + std::to_string(random());
        if (const Stream created{std::fopen(path.c_str(), "wbx")}) return path;
        if (errno != EEXIST) FailWithError(name, errno);
    }
}

} // namespace

void TemporaryFile::Create(const std::string& stem, const std::string& name) {
    path_ = CreateUniqueFile(stem, name);
    removal_ = RemoveOnSignal(path_);
}

void TemporaryFile::CreatePrivate(const std::string& name) {
    Create((fs::temp_directory_path() / "tessarin").string(), name);
    // The content may be private, so other users' access is removed while the file is still empty.
    std::error_code ignored; // not every file system has owners
    fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_write, ignored);
}

void TemporaryFile::Release() {
    CancelRemoval(removal_);
    removal_ = nullptr;
    path_.clear();
}

TemporaryFile::~TemporaryFile() {
    if (!path_.empty()) std::remove(path_.c_str());
    Release();
}

} // namespace Command
