// The library's own file service. Configuration and tab files use it if the host doesn't pass one: File::Create in
// configure/file.cpp and TabFile::Create in services/tab_file.cpp choose.

#ifndef TESSARIN_FILES_FILE_IO_H
#define TESSARIN_FILES_FILE_IO_H

#include "tessarin/documents.h"

namespace Tessarin {

/// Has no state: the handles are streams of the runtime library. The owner creates it with nothrow new.
class FileIO final : public ::IFileIO {
public:
    void* Open(const char* path, std::int32_t mode) override;
    void Close(void* handle) override;
    std::int32_t GetSize(void* handle) override;
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override;
    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override;
    bool Exists(const char* path) override;

    /// Like Close, but returns whether everything that was written has reached the file: on a full disk, a small file
    /// may fail only here.
    [[nodiscard]] static bool Finish(void* handle);
};

} // namespace Tessarin

#endif
