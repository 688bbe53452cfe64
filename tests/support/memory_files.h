// A file service in memory, which counts what is open and can be made to fail.
//
// Its handles are the files themselves, and a file can't be opened twice at a time. So opening, reading and writing a
// file that already exists doesn't allocate, and a heap that fails under a test makes only the library fail.

#ifndef TESSARIN_TESTS_SUPPORT_MEMORY_FILES_H
#define TESSARIN_TESTS_SUPPORT_MEMORY_FILES_H

#include "tessarin/documents.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

namespace TestSupport {

class MemoryFiles : public IFileIO {
public:
    static constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

    /// The bytes of a file, which is created if it doesn't exist.
    std::string& operator[](const std::string& path) { return files_[path].bytes; }

    void* Open(const char* path, std::int32_t mode) override {
        const std::lock_guard lock(mutex_);
        ++opens;
        if (path == nullptr || *path == '\0' || refuses) return nullptr;
        auto found = files_.find(path);
        if (found == files_.end()) {
            if (mode != 1) return nullptr;
            found = files_.try_emplace(path).first;
        }
        File& file = found->second;
        if (file.is_open) throw std::logic_error("a file is open once at a time");
        file.is_open = true;
        file.at = 0;
        if (mode == 1) file.bytes.clear();
        ++handles;
        return &file;
    }

    void Close(void* handle) override {
        const std::lock_guard lock(mutex_);
        if (handle == nullptr) return;
        auto& file = *static_cast<File*>(handle);
        if (!file.is_open) throw std::logic_error("closed twice");
        file.is_open = false;
        --handles;
    }

    std::int32_t GetSize(void* handle) override {
        auto& file = *static_cast<File*>(handle);
        file.at = 0;
        return claimed_size.value_or(static_cast<std::int32_t>(file.bytes.size()));
    }

    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        auto& file = *static_cast<File*>(handle);
        if (buffer_size < count) return 0;
        const std::size_t size = std::min<std::size_t>(count, std::min(read_room, file.bytes.size() - file.at));
        std::memcpy(buffer, file.bytes.data() + file.at, size);
        file.at += size;
        return static_cast<std::uint32_t>(claimed_size ? count : size);
    }

    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override {
        auto& file = *static_cast<File*>(handle);
        const std::size_t taken = std::min<std::size_t>(size, write_room - std::min(write_room, file.bytes.size()));
        file.bytes.append(static_cast<const char*>(buffer), taken);
        return static_cast<std::uint32_t>(taken);
    }

    bool Exists(const char* path) override { return path != nullptr && files_.find(path) != files_.end(); }

    int opens = 0;        // number of calls of Open
    int handles = 0;      // number of open handles
    bool refuses = false; // Open returns null
    std::optional<std::int32_t> claimed_size =
        {};                              // what GetSize returns for every file; Read then claims to be complete
    std::size_t read_room = kUnlimited;  // the most bytes that a Read returns
    std::size_t write_room = kUnlimited; // the size at which every file is full

private:
    struct File {
        std::string bytes;
        std::size_t at = 0;
        bool is_open = false;
    };

    std::mutex mutex_;
    std::map<std::string, File, std::less<>> files_;
};

} // namespace TestSupport

#endif
