// A file that replaces another only when it is complete. `-` is standard output.

#ifndef TESSARIN_TOOLS_ATOMIC_OUTPUT_FILE_H
#define TESSARIN_TOOLS_ATOMIC_OUTPUT_FILE_H

#include "tools/temporary_file.h"

#include <string>
#include <string_view>

namespace Command {

/// Collects the output in a draft that nobody else can open; Commit puts it in the target's place. Without a Commit the
/// target stays as it was, whatever fails. Links are followed, and permissions stay. What can't be replaced, a pipe for
/// example, is written into by Commit.
///
/// The target is locked as long as the object lives, so whoever changes a file makes its output before reading it.
class AtomicOutputFile {
public:
    /// Waits while another command has the target. Throws Failure if the target can't be opened, if no file can be
    /// created beside it, or if the other command takes too long.
    explicit AtomicOutputFile(const std::string& target);
    ~AtomicOutputFile() = default;
    AtomicOutputFile(const AtomicOutputFile&) = delete;
    AtomicOutputFile& operator=(const AtomicOutputFile&) = delete;

    /// Where to write until Commit.
    [[nodiscard]] std::string Path() const { return draft_.PathToOpen(); }
    /// The target as the user gave it, for messages.
    [[nodiscard]] const std::string& Name() const { return name_; }

    /// Writes a text as the whole content. Throws Failure if it can't be written completely.
    void Write(std::string_view text) const;
    /// Puts the content in the target's place. Throws Failure if that can't be done.
    void Commit();

private:
    std::string name_;
    Target target_;      // with an empty path for standard output
    TemporaryFile made_; // the empty file to which a link leads that led nowhere
    TemporaryFile draft_;
};

} // namespace Command

#endif
