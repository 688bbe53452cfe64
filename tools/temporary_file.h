// Files that don't outlive the command: removed by their object's destructor, or when a signal ends the process.

#ifndef TESSARIN_TOOLS_TEMPORARY_FILE_H
#define TESSARIN_TOOLS_TEMPORARY_FILE_H

#include "tools/signals.h"
#include "tools/system_files.h"

#include <string>

namespace Command {

class TemporaryFile {
public:
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Creates an empty file in the system's folder for temporary files, readable and writable by its owner only.
    /// Throws Failure, whose message calls the file `name`.
    /// REQUIRES: the object has no file yet
    void CreatePrivate(const std::string& name);
    /// Takes over a file that this process has created.
    /// REQUIRES: the object has no file yet
    void Manage(CreatedFile created);
    /// Stops managing the file: it stays, or already has another name. It stays open and locked as long as the object
    /// lives.
    void Release();

    /// The file; its path is empty if the object has none.
    [[nodiscard]] CreatedFile& Created() { return created_; }
    [[nodiscard]] const std::string& Path() const { return created_.path; }
    /// Where to write and read it, see PathToWrite.
    [[nodiscard]] std::string PathToOpen() const { return PathToWrite(created_); }

private:
    CreatedFile created_;
    RemovalSlot* removal_ = nullptr;
};

} // namespace Command

#endif
