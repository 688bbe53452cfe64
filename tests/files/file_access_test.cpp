// Files as the library opens, measures, reads and writes them, and the calls that a host's own file service gets.

#include "tessarin/configure.h"
#include "tessarin/tab_files.h"

#include "files/file_io.h"
#include "files/whole_file.h"
#include "tests/support/failing_heap.h"
#include "tests/support/memory_files.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace {

namespace fs = std::filesystem;
using TestSupport::ReadWhole;
using TestSupport::TemporaryFolder;

/// Whether a file has one spelling of its name, and `/` separates folders.
bool IsPosix() { return fs::path::preferred_separator == '/'; }

/// 0 where the system doesn't list them.
std::ptrdiff_t OpenFiles() {
    if (!IsPosix()) return 0;
    std::error_code none;
    const fs::directory_iterator files("/proc/self/fd", none);
    return none ? 0 : std::distance(begin(files), end(files));
}

bool ReadsWhole(const std::string& path) { return Tessarin::WholeFile().Read(path.c_str(), 2); }

class FileAccess : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(OpenFiles(), open_before); }

    TemporaryFolder folder;
    std::ptrdiff_t open_before = OpenFiles();
    Tessarin::FileIO service;
};

/// A handle of the service, with the operations of a file object.
struct Handle {
    Tessarin::FileIO& service;
    void* handle;

    Handle(Tessarin::FileIO& of, const std::string& path, std::int32_t mode)
        : service(of), handle(service.Open(path.c_str(), mode)) {}

    [[nodiscard]] std::int32_t GetSize() const { return service.GetSize(handle); }
    std::uint32_t Read(void* buffer, std::uint32_t size, std::uint32_t count) const {
        return service.Read(handle, buffer, size, count);
    }
    std::uint32_t Write(const void* buffer, std::uint32_t size) const { return service.Write(handle, buffer, size); }
};

/// Reads a file of "ab" and a NUL.
void ExpectReadsAndRewinds(auto& file) {
    char buffer[] = "xxxx";
    EXPECT_EQ(file.Read(buffer, 3, 4), 0U);
    EXPECT_EQ(file.Read(nullptr, 4, 4), 0U);
    EXPECT_STREQ(buffer, "xxxx");
    EXPECT_EQ(file.Read(buffer, 2, 2), 2U);
    EXPECT_EQ(file.GetSize(), 3);
    EXPECT_EQ(file.Read(buffer, 5, 5), 3U);
    EXPECT_EQ(std::memcmp(buffer, "ab\0x", 4), 0);
    EXPECT_EQ(file.Read(buffer, 4, 4), 0U);
    EXPECT_EQ(file.GetSize(), 3);
    EXPECT_EQ(file.Read(buffer, 4, 0), 0U);
    EXPECT_EQ(file.Read(buffer, 1, 1), 1U);
}

TEST_F(FileAccess, ReadsAndRewindsAFile) {
    const std::string path = folder.File("a", std::string("ab\0", 3));
    Tessarin::IRead* file = CreateReadFile(path.c_str());
    ASSERT_NE(file, nullptr);
    ExpectReadsAndRewinds(*file);
    EXPECT_EQ(file->Release(), 1U);
    const Handle opened(service, path, 0);
    ExpectReadsAndRewinds(opened);
    service.Close(opened.handle);
}

/// Replaces what the file at `path`, which is open, holds.
void ExpectWrites(auto& file, const std::string& path) {
    EXPECT_EQ(ReadWhole(path), "");
    EXPECT_EQ(file.Write("a\r\n", 3), 3U);
    EXPECT_EQ(file.Write(nullptr, 3), 0U);
    EXPECT_EQ(file.Write("", 0), 0U);
    EXPECT_EQ(file.Write("\0b", 2), 2U);
}

TEST_F(FileAccess, WritesAFile) {
    const std::string path = folder.File("a", "longer than before"), written("a\r\n\0b", 5);
    Tessarin::IWrite* file = CreateWriteFile(path.c_str());
    ASSERT_NE(file, nullptr);
    ExpectWrites(*file, path);
    EXPECT_EQ(file->Release(), 1U);
    EXPECT_EQ(ReadWhole(path), written);
    const Handle opened(service, path, 1);
    ExpectWrites(opened, path);
    EXPECT_EQ(opened.GetSize(), 5); // and what the service has opened to write, it reads too
    char buffer[5];
    EXPECT_EQ(opened.Read(buffer, 5, 5), 5U);
    EXPECT_EQ(std::string(buffer, 5), written);
    service.Close(opened.handle);
}

TEST_F(FileAccess, OpensNothingElse) {
    const std::string kept = folder.File("a.txt", "kept"), inside = folder.Path("missing/a"), none;
    for (const char* path : {static_cast<const char*>(nullptr), none.c_str(), inside.c_str()}) {
        EXPECT_EQ(CreateReadFile(path), nullptr);
        EXPECT_EQ(CreateWriteFile(path), nullptr);
        for (const std::int32_t mode : {0, 1}) EXPECT_EQ(service.Open(path, mode), nullptr);
        EXPECT_FALSE(service.Exists(path));
        EXPECT_FALSE(Tessarin::WholeFile().Read(path, 2));
    }
    EXPECT_EQ(CreateWriteFile(folder.Path("").c_str()), nullptr);
    EXPECT_FALSE(ReadsWhole(folder.Path("")));
    for (const std::int32_t mode : {-1, 2, 3}) EXPECT_EQ(service.Open(kept.c_str(), mode), nullptr) << mode;
    {
        const TestSupport::FailingHeap heap(0);
        EXPECT_EQ(CreateWriteFile(kept.c_str()), nullptr);
    }
    EXPECT_EQ(ReadWhole(kept), "kept");
    EXPECT_TRUE(service.Exists(kept.c_str()));
    // The objects take a path as it is; only the service tries other spellings.
    if (IsPosix()) {
        EXPECT_EQ(CreateReadFile(folder.Path("\\A.TXT").c_str()), nullptr);
    }
    char buffer[4];
    EXPECT_EQ(service.GetSize(nullptr), 0);
    EXPECT_EQ(service.Read(nullptr, buffer, 4, 4), 0U);
    EXPECT_EQ(service.Write(nullptr, buffer, 4), 0U);
    service.Close(nullptr);
}

/// The size as the file object measures it; -2 if there is no such file.
std::int32_t SizeOf(const std::string& path) {
    Tessarin::IRead* file = CreateReadFile(path.c_str());
    const std::int32_t size = file == nullptr ? -2 : file->GetSize();
    if (file != nullptr) file->Release();
    return size;
}

TEST_F(FileAccess, MeasuresWhat31BitsHold) {
    const std::string path = folder.File("big", "");
    EXPECT_EQ(SizeOf(path), 0);
    constexpr std::uintmax_t kMost = std::numeric_limits<std::int32_t>::max();
    fs::resize_file(path, kMost);
    EXPECT_EQ(SizeOf(path), std::numeric_limits<std::int32_t>::max());
    for (const std::uintmax_t size : {kMost + 1, 2 * kMost + 2, 2 * kMost + 3}) {
        fs::resize_file(path, size);
        EXPECT_EQ(SizeOf(path), -1) << size;
        EXPECT_FALSE(ReadsWhole(path));
    }
}

TEST_F(FileAccess, NamesAreUtf8AndReadInPathForm) {
    const std::string name = "\xC3\x84 \xE2\x82\xAC.txt", path = folder.Path(name);
    Tessarin::IWrite* file = CreateWriteFile(path.c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Write("text", 4), 4U);
    file->Release();
    EXPECT_EQ(fs::file_size(reinterpret_cast<const char8_t*>(path.c_str())), 4U);
    EXPECT_EQ(SizeOf(path), 4);
    EXPECT_TRUE(service.Exists(path.c_str()));

    fs::create_directory(folder.Path("Data"));
    static_cast<void>(folder.File("Data/Items.Tab", "host"));
    EXPECT_TRUE(service.Exists(folder.Path("data\\items.tab").c_str()));
    EXPECT_FALSE(service.Exists(folder.Path("data\\items.txt").c_str()));
}

TEST_F(FileAccess, ReadsAWholeFileWithZerosBehindIt) {
    for (const std::string& text : {std::string(), std::string("a\0b", 3), std::string(200'000, '\xff')}) {
        const std::string path = folder.File("whole", text);
        for (const std::uint32_t spare : {0U, 1U, 2U}) {
            Tessarin::WholeFile whole;
            ASSERT_TRUE(whole.Read(path.c_str(), spare));
            ASSERT_EQ(whole.size, text.size());
            ASSERT_EQ(whole.bytes == nullptr, whole.size + spare == 0);
            EXPECT_EQ(std::string(whole.bytes.get(), whole.size + spare), text + std::string(spare, '\0'));
        }
    }
}

/// Records its calls.
struct RecordingFiles : TestSupport::MemoryFiles {
    void* Open(const char* path, std::int32_t mode) override {
        calls += "open " + std::to_string(mode);
        return MemoryFiles::Open(path, mode);
    }
    void Close(void* handle) override {
        calls += ", close";
        MemoryFiles::Close(handle);
    }
    std::int32_t GetSize(void* handle) override {
        calls += ", size";
        return MemoryFiles::GetSize(handle);
    }
    std::uint32_t Read(void* handle, void* buffer, std::uint32_t buffer_size, std::uint32_t count) override {
        calls += ", read " + std::to_string(buffer_size) + " " + std::to_string(count);
        return MemoryFiles::Read(handle, buffer, buffer_size, count);
    }

    std::string calls;
};

/// A host may check the arguments of its calls, or support only these calls.
TEST(HostsFileService, SeesTheseCallsOfALoad) {
    const struct {
        const char *text, *configuration, *tab_file;
    } cases[] = {{"a = 1\n", "open 0, size, read 7 6, close", "open 0, size, read 6 6, close"},
                 {"", "open 0, size, read 1 0, close", "open 0, size, close"},
                 {nullptr, "open 0", "open 0"}}; // no such file
    for (const auto& each : cases) {
        RecordingFiles files;
        if (each.text != nullptr) files["f"] = each.text;
        Configure::IFile* configuration = CreateRLFile(&files);
        static_cast<void>(configuration->Load("f", Configure::ACCESS_READ, Configure::FORMAT_TEXT));
        EXPECT_EQ(std::exchange(files.calls, {}), each.configuration);
        configuration->Release();
        ITabFile* tab_file = CreateTabFile(&files);
        static_cast<void>(tab_file->Open("f", 0));
        EXPECT_EQ(files.calls, each.tab_file);
        tab_file->Release();
    }
}

} // namespace
