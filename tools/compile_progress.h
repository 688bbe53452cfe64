// What the compiler of a folder reports while it runs: a line a file, a progress bar on a terminal, and the totals.

#ifndef TESSARIN_TOOLS_COMPILE_PROGRESS_H
#define TESSARIN_TOOLS_COMPILE_PROGRESS_H

#include "tools/terminal.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

namespace Command {

struct CompileTotals {
    std::size_t compiled = 0, unchanged = 0, failed = 0;
    std::uintmax_t bytes_in = 0, bytes_out = 0;
};

/// Any thread may call at any time; Totals may only be called when the other threads have ended.
class CompileProgress {
public:
    /// file_count  the files that will be reported as compiled, unchanged or failed; more may fail
    explicit CompileProgress(std::size_t file_count) : file_count_(file_count) {}

    void ReportCompiled(const std::string& name, std::uintmax_t bytes_in, std::uintmax_t bytes_out);
    void ReportUnchanged(const std::string& name);
    /// Prints an error to standard error and counts it.
    void ReportFailure(const std::string& message);
    /// Prints a warning to standard error.
    void ReportWarning(const std::string& message);

    /// Removes the bar.
    void Finish() const;
    [[nodiscard]] const CompileTotals& Totals() const { return totals_; }

private:
    void PrintLine(std::FILE* out, const std::string& line) const;
    void DrawBar(const std::string& name) const;

    const std::size_t file_count_;
    const bool has_bar_ = IsTerminal(stdout);
    std::mutex mutex_; // guards the totals and the output
    CompileTotals totals_;
};

} // namespace Command

#endif
