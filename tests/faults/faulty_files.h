// A host's file service that fails at one of its calls, in one of the ways in which that call can fail.

#ifndef TESSARIN_TESTS_FAULTS_FAULTY_FILES_H
#define TESSARIN_TESTS_FAULTS_FAULTY_FILES_H

#include "tests/support/memory_files.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace TestSupport {

/// A file service with files in memory. One of its calls can be made to fail: Open in one way, GetSize in two, Read and
/// Write in three.
class FaultyFiles : public MemoryFiles {
public:
    /// Counts calls from now on, and fails at the one with that number if it has such a way; at none if it is negative.
    void FailAt(int call, int new_way) { calls = 0, at = call, way = new_way, struck = false; }

    void* Open(const char* path, std::int32_t mode) override {
        return Strikes(1) ? nullptr : MemoryFiles::Open(path, mode);
    }
    std::int32_t GetSize(void* handle) override {
        const std::int32_t size = MemoryFiles::GetSize(handle);
        return !Strikes(2) ? size : way == 0 ? -1 : size + 1;
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        EXPECT_LE(count, buffer_size);
        return Transfer(count,
                        [&](std::uint32_t size) { return MemoryFiles::Read(handle, buffer, buffer_size, size); });
    }
    std::uint32_t Write(void* handle, const void* buffer, std::uint32_t size) override {
        return Transfer(size, [&](std::uint32_t less) { return MemoryFiles::Write(handle, buffer, less); });
    }

    int calls = 0;
    bool struck = false; // the call has come, and failed

private:
    bool Strikes(int ways) {
        const bool strikes = calls++ == at && way < ways;
        struck = struck || strikes;
        return strikes;
    }

    /// Nothing is done, or a byte less, or a byte more is claimed.
    template <class Some>
    std::uint32_t Transfer(std::uint32_t count, Some some) {
        if (!Strikes(3)) return some(count);
        return way == 0 ? 0 : way == 1 ? some(count == 0 ? 0 : count - 1) : some(count) + 1;
    }

    int at = -1;
    int way = 0;
};

} // namespace TestSupport

#endif
