// A folder of a test's own, which is removed with its content when the test ends.

#ifndef TESSARIN_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define TESSARIN_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <string>
#include <string_view>

namespace TestSupport {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The path of `name` inside the folder.
    [[nodiscard]] std::string Path(std::string_view name) const;

    /// Writes a file of those bytes and returns its path.
    [[nodiscard]] std::string File(std::string_view name, std::string_view bytes) const;

private:
    std::string path_;
};

/// All bytes of a file; empty if it can't be read.
std::string ReadWhole(const std::string& path);

} // namespace TestSupport

#endif
