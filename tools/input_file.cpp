// An input is opened only once, even if it is copied: when a pipe is closed by its only reader, the writer gets an
// error, so the pipe can't be opened again.

#include "tools/input_file.h"

#include "tools/failure.h"
#include "tools/file_stream.h"

#include <filesystem>
#include <system_error>

namespace Command {

namespace fs = std::filesystem;

InputFile::InputFile(const std::string& name) : name_(IsDash(name) ? "standard input" : name), path_(name) {
    std::error_code error;
    if (!IsDash(name) && fs::is_directory(name, error)) throw Failure(name, "is a folder");
    const Stream from = IsDash(name) ? nullptr : OpenStream(name, "rb", name);
    if (from && fs::is_regular_file(name, error)) return;
    copy_.CreatePrivate(name_);
    path_ = copy_.Path();
    const Stream to = OpenStream(copy_.PathToOpen(), "wb", path_);
    CopyStream(from ? from.get() : stdin, name_, to.get(), path_);
}

std::uintmax_t InputFile::Size() const { return fs::file_size(path_); }

} // namespace Command
