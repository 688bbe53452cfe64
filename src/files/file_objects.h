// Files as objects: CreateReadFile and CreateWriteFile return them.
//
// The library's own code makes them with Open, never with those exports, because a host may have its own functions of
// the same names. The classes aren't called Read and Write like their interfaces, because a class can't have a member
// function of its own name.

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
    /// As FileReader::Open. An existing file is truncated at once, but not if memory runs out.
    static FileWriter* Open(const char* path);

    std::uint32_t Release() override;
    std::uint32_t Write(const void* buffer, std::uint32_t size) override;

    /// Like Release, but returns whether everything that was written has reached the file.
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
