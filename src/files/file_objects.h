// Files as objects: what CreateReadFile and CreateWriteFile hand out.
//
// The library's own code makes them through Open and never through those exports, since a host may have functions of
// its own by their names. The classes aren't called Read and Write after their interfaces, since a class can't have an
// operation of its own name.

#ifndef TESSARIN_FILES_FILE_OBJECTS_H
#define TESSARIN_FILES_FILE_OBJECTS_H

#include "tessarin/documents.h"

#include <cstdio>

namespace Tessarin {

/// A file open for reading, from Open to Release.
class FileReader final : public IRead {
public:
    /// returns  the caller's object; null for a null path, a file that can't be opened, or when memory runs out
    static FileReader* Open(const char* path);

    std::uint32_t Release() override;
    std::int32_t GetSize() override;
    std::uint32_t Read(void* buffer, std::uint32_t buffer_size, std::uint32_t count) override;

private:
    template <class Object>
    friend Object* OpenFileObject(const char* path, const char* mode);

    FileReader() = default;
    ~FileReader() override = default;

    std::FILE* stream = nullptr;
};

/// A file open for writing, from Open to Release.
class FileWriter final : public IWrite {
public:
    /// As FileReader::Open. An existing file is truncated at once; when memory runs out it is left as it was.
    static FileWriter* Open(const char* path);

    std::uint32_t Release() override;
    std::uint32_t Write(const void* buffer, std::uint32_t size) override;

    /// Release for those who must know: whether all that was written has reached the file.
    bool Finish();

private:
    template <class Object>
    friend Object* OpenFileObject(const char* path, const char* mode);

    FileWriter() = default;
    ~FileWriter() override = default;

    std::FILE* stream = nullptr;
};

} // namespace Tessarin

#endif
