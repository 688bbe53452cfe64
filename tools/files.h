/// The files that a command reads and writes. `-` is standard input or output.

#ifndef TESSARIN_TOOLS_FILES_H
#define TESSARIN_TOOLS_FILES_H

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace Command {

/// A file that is removed with the object, or when a signal ends the process.
class PassingFile {
public:
    PassingFile() = default;
    ~PassingFile();
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    /// Takes a file that has just been made.
    void Begin(std::string path);
    /// Lets go of it: it stays, or has another name now.
    void Keep();

private:
    std::string path_;
    std::atomic<char*>* place_ = nullptr; // where a signal finds the path
};

/// While it lives, the first signal that would end the process waits for its end: work on several threads can't have
/// its files removed under it, as it would make them again.
class SignalDelay {
public:
    SignalDelay();
    ~SignalDelay();
    SignalDelay(const SignalDelay&) = delete;
    SignalDelay& operator=(const SignalDelay&) = delete;

    /// Whether a signal waits, so that the work should end.
    static bool HasCome();
};

/// A file to read, where the library can: standard input, and whatever else has no size, a pipe say, is first copied
/// into a file that ends with the object.
class Input {
public:
    /// Throws Failure if the file can't be read.
    explicit Input(const std::string& name);
    ~Input() = default;
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
    PassingFile copy_;
};

/// A file that takes the place of another when it is whole, and not before: whatever fails on the way leaves the other
/// as it was. A link is followed, and permissions stay. What can't be replaced, a pipe say, is written into.
class Draft {
public:
    /// Throws Failure if no file can be made beside the target.
    explicit Draft(const std::string& target);
    ~Draft() = default;
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
    std::string target_; // where links lead; none for standard output
    std::string path_;
    PassingFile file_;
    bool is_renamed_ = false; // else copied
};

} // namespace Command

#endif
