// A file service in memory, so that the disk isn't measured; and how much memory a process takes.

#ifndef TESSARIN_BENCH_MEMORY_FILES_H
#define TESSARIN_BENCH_MEMORY_FILES_H

#include <tessarin/configure.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include <malloc.h>

namespace Bench {

/// A file that is written again keeps its capacity, so that a second save needs no new pages.
class MemoryFiles : public IFileIO {
public:
    void* Open(const char* path, std::int32_t mode) override {
        auto found = files.find(path);
        if (mode == 0 && found == files.end()) return nullptr;
        std::string& file = mode == 0 ? found->second : files[path];
        if (mode != 0) file.clear();
        return new Handle{&file, 0};
    }
    void Close(void* handle) override { delete static_cast<Handle*>(handle); }
    std::int32_t GetSize(void* handle) override {
        return static_cast<std::int32_t>(static_cast<Handle*>(handle)->file->size());
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        auto* open = static_cast<Handle*>(handle);
        std::size_t left = open->file->size() - open->at;
        std::size_t size = std::min({left, std::size_t{buffer_size}, std::size_t{count}});
        std::memcpy(buffer, open->file->data() + open->at, size);
        open->at += size;
        return static_cast<std::uint32_t>(size);
    }
    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override {
        static_cast<Handle*>(handle)->file->append(static_cast<const char*>(buffer), size);
        return size;
    }
    bool Exists(const char* path) override { return files.count(path) != 0; }

    std::map<std::string, std::string> files = {};

private:
    struct Handle {
        std::string* file;
        std::size_t at;
    };
};

struct Released {
    void operator()(Configure::IFile* file) const { file->Release(); }
};
using FilePointer = std::unique_ptr<Configure::IFile, Released>;

/// The most memory that the process has held since this object was made, in bytes, less what it held then. Only on
/// Linux.
class PeakMemory {
public:
    PeakMemory() {
        malloc_trim(0); // freed memory would be used again and not be counted
        std::ofstream("/proc/self/clear_refs") << 5;
        before_ = Status("VmRSS:");
    }
    [[nodiscard]] double Bytes() const { return Status("VmHWM:") - before_; }

private:
    static double Status(const std::string& field) {
        std::ifstream file("/proc/self/status");
        for (std::string word; file >> word;) {
            double kilobytes = 0;
            if (word == field && file >> kilobytes) return kilobytes * 1024;
        }
        return 0;
    }

    double before_ = 0;
};

} // namespace Bench

#endif
