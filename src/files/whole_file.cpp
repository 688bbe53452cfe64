// The same function measures and reads both kinds of opened file; for that, a file service's handle is wrapped in an
// object. A file of 2 GiB or more can't be measured, and so isn't read: StreamSize in stream.h.

#include "files/whole_file.h"

#include "files/file_objects.h"
#include "files/open_modes.h"

#include <cstring>

namespace Tessarin {
namespace {

/// An open handle of a service, with the operations of a file object.
struct OpenedHandle {
    ::IFileIO& service;
    void* handle;

    [[nodiscard]] std::int32_t GetSize() const { return service.GetSize(handle); }
    std::uint32_t Read(void* buffer, std::uint32_t buffer_size, std::uint32_t count) const {
        return service.Read(handle, buffer, buffer_size, count);
    }
};

template <class OpenedFile>
bool ReadAll(OpenedFile& file, std::uint32_t spare, WholeFile& whole) {
    const std::int32_t measured = file.GetSize();
    if (measured < 0) return false;
    const auto size = static_cast<std::uint32_t>(measured);
    if (size + spare == 0) return true;
    HeapBytes bytes(static_cast<char*>(std::malloc(std::size_t{size} + spare)));
    if (bytes == nullptr || file.Read(bytes.get(), size + spare, size) != size) return false;
    std::memset(bytes.get() + size, 0, spare);
    whole.bytes = std::move(bytes);
    whole.size = size;
    return true;
}

} // namespace

bool WholeFile::Read(const char* path, std::uint32_t spare) {
    FileReader* file = FileReader::Open(path);
    if (file == nullptr) return false;
    const bool read = ReadAll(*file, spare, *this);
    file->Release();
    return read;
}

bool WholeFile::Read(::IFileIO& service, const char* path, std::uint32_t spare) {
    service_ = &service;
    handle_ = service.Open(path, kOpenToRead);
    if (handle_ == nullptr) return false;
    OpenedHandle file{service, handle_};
    return ReadAll(file, spare, *this);
}

WholeFile::~WholeFile() {
    bytes.reset();
    if (handle_ != nullptr) service_->Close(handle_);
}

} // namespace Tessarin
