// A file that a command reads. `-` is standard input.

#ifndef TESSARIN_TOOLS_INPUT_FILE_H
#define TESSARIN_TOOLS_INPUT_FILE_H

#include "tools/temporary_file.h"

#include <cstdint>
#include <string>

namespace Command {

/// Makes an input readable by path, as the library reads files: standard input, and anything else that has no size, a
/// pipe for example, is first copied into a temporary file.
class InputFile {
public:
    /// Throws Failure if the file can't be read.
    explicit InputFile(const std::string& name);
    ~InputFile() = default;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Where to read; valid as long as the object.
    [[nodiscard]] const std::string& Path() const { return path_; }
    /// As the user gave it, for messages.
    [[nodiscard]] const std::string& Name() const { return name_; }
    /// In bytes.
    [[nodiscard]] std::uintmax_t Size() const;

private:
    std::string name_;
    std::string path_;
    TemporaryFile copy_;
};

} // namespace Command

#endif
