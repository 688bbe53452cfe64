// The file service over streams of the runtime library. A path is tried first as it is: so a file whose name really
// contains a `\` can be opened, and folders are searched only if the path itself doesn't lead to a file. Opening for
// writing isn't tried twice: a file that is to be created has no name yet that could match.

#include "files/file_io.h"

#include "files/open_modes.h"
#include "files/stream.h"
#include "platform/host_file.h"
#include "platform/host_path.h"
#include "strings/normal_forms.h"

#include <cstdlib>

namespace Tessarin {
namespace {

std::FILE* OpenToRead(const char* path, const char* mode) {
    std::FILE* stream = OpenFile(path, mode);
    if (stream != nullptr) return stream;
    char* host = HostPath(path);
    if (host == nullptr) return nullptr;
    stream = OpenFile(host, mode);
    std::free(host);
    return stream;
}

std::FILE* Stream(void* handle) { return static_cast<std::FILE*>(handle); }

} // namespace

void* FileIO::Open(const char* path, std::int32_t mode) {
    if (IsEmpty(path)) return nullptr;
    if (mode == kOpenToRead) return OpenToRead(path, "rb");
    if (mode == kOpenToWrite) return OpenFile(path, "wb+");
    return nullptr;
}

void FileIO::Close(void* handle) {
    if (handle != nullptr) static_cast<void>(std::fclose(Stream(handle)));
}

bool FileIO::Finish(void* handle) { return std::fclose(Stream(handle)) == 0; }

std::int32_t FileIO::GetSize(void* handle) { return StreamSize(Stream(handle)); }

std::uint32_t FileIO::Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) {
    return ReadStream(Stream(handle), buffer, buffer_size, count);
}

std::uint32_t FileIO::Write(void* handle, const void* buffer, std::uint32_t size) {
    return WriteStream(Stream(handle), buffer, size);
}

bool FileIO::Exists(const char* path) {
    if (IsEmpty(path)) return false;
    std::FILE* stream = OpenToRead(path, "r");
    if (stream == nullptr) return false;
    static_cast<void>(std::fclose(stream));
    return true;
}

} // namespace Tessarin
