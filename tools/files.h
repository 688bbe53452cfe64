/// The files that a command reads and writes. `-` is standard input or output.

#ifndef TESSARIN_TOOLS_FILES_H
#define TESSARIN_TOOLS_FILES_H

#include <cstdint>
#include <string>
#include <string_view>

namespace Command {

/// A file to read, where the library can: standard input, and whatever else has no size, a pipe say, is first copied
/// into a file that ends with the object.
class Input {
public:
    /// Throws Failure if the file can't be read.
    explicit Input(const std::string& name);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    [[nodiscard]] const std::string& Path() const { return path_; }
    /// As the user gave it, for messages.
    [[nodiscard]] const std::string& Name() const { return name_; }
    /// In bytes.
    [[nodiscard]] std::uintmax_t Size() const;

private:
    std::string name_;
    std::string path_;
    bool is_copy_ = false;
};

/// A file that takes the place of another when it is whole, and not before: whatever fails on the way leaves the other
/// as it was. A link is followed, and permissions stay. What can't be replaced, a pipe say, is written into.
class Draft {
public:
    /// Throws Failure if no file can be made beside the target.
    explicit Draft(const std::string& target);
    ~Draft();
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    /// Where to write.
    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] const std::string& Name() const { return name_; }

    /// Writes a text as the draft's whole content. Throws Failure if it can't be written whole.
    void Write(std::string_view text) const;
    /// Puts the draft in its place. Throws Failure if that can't be done.
    void Keep();

private:
    std::string name_;
    std::string target_;
    std::string path_;
    bool is_renamed_; // else copied
};

} // namespace Command

#endif
