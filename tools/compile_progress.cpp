// The bar is the last line on the terminal. It is erased before a whole line is printed, and drawn again with the next
// file.

#include "tools/compile_progress.h"

#include "tools/terminal_text.h"

namespace Command {

namespace {

constexpr const char* kEraseLine = "\r\033[K";

} // namespace

void CompileProgress::ReportCompiled(const std::string& name, std::uintmax_t bytes_in, std::uintmax_t bytes_out) {
    const std::lock_guard lock(mutex_);
    ++totals_.compiled;
    totals_.bytes_in += bytes_in;
    totals_.bytes_out += bytes_out;
    has_bar_ ? DrawBar(name) : PrintLine(stdout, "compiled " + name);
}

void CompileProgress::ReportUnchanged(const std::string& name) {
    const std::lock_guard lock(mutex_);
    ++totals_.unchanged;
    if (has_bar_) DrawBar(name);
}

void CompileProgress::ReportFailure(const std::string& message) {
    const std::lock_guard lock(mutex_);
    ++totals_.failed;
    PrintLine(stderr, "tessarin: " + message);
}

void CompileProgress::ReportWarning(const std::string& message) {
    const std::lock_guard lock(mutex_);
    PrintLine(stderr, "tessarin: " + message);
}

void CompileProgress::Finish() const {
    if (has_bar_) std::fputs(kEraseLine, stdout);
}

void CompileProgress::PrintLine(std::FILE* out, const std::string& line) const {
    if (has_bar_) std::fputs(kEraseLine, stdout);
    std::fflush(stdout);
    std::fprintf(out, "%s\n", Printable(line).c_str());
}

void CompileProgress::DrawBar(const std::string& name) const {
    constexpr std::size_t kWidth = 30;
    const std::size_t done = totals_.compiled + totals_.unchanged + totals_.failed;
    const std::size_t filled = done * kWidth / file_count_;
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
    // A line that wraps couldn't be erased. This one fits into 80 columns even with a million files.
    const std::string shown = name.size() <= 28 ? name : "..." + name.substr(name.size() - 25);
    std::printf("%s[%s] %zu/%zu %s", kEraseLine, bar.c_str(), done, file_count_, Printable(shown).c_str());
    std::fflush(stdout);
}

} // namespace Command
