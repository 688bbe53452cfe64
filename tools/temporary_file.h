// Files that don't outlive the command: removed by their object's destructor, or when a signal ends the process.

#ifndef TESSARIN_TOOLS_TEMPORARY_FILE_H
#define TESSARIN_TOOLS_TEMPORARY_FILE_H

#include "tools/signals.h"

#include <string>

namespace Command {

class TemporaryFile {
public:
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Creates an empty file whose path begins with `stem`. Throws Failure, whose message calls the file `name`.
    /// REQUIRES: the object has no file yet
    void Create(const std::string& stem, const std::string& name);
    /// Creates an empty file in the system's folder for temporary files, readable and writable by its owner only.
    void CreatePrivate(const std::string& name);
    /// Stops managing the file: it stays, or already has another name.
    void Release();

    /// The file's path; empty if the object has no file.
    [[nodiscard]] const std::string& Path() const { return path_; }

private:
    std::string path_;
    RemovalSlot* removal_ = nullptr;
};

} // namespace Command

#endif
